"""Every rule of scripts/check_includes.py finds its fault in a small tree, and a sound tree passes."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "scripts" / "check_includes.py"
SOUND = {
    "velmora/velmora.h": '#pragma once\n#include "velmora/io/A.h"\n',
    "velmora/io/A.h": '#pragma once\n#include "velmora/platform/P.h"\ninline P a() { return {}; }\n',
    "velmora/io/A.cpp": '#include "velmora/io/A.h"\n#include "velmora/io/B.h"\n',
    "velmora/io/B.h": "#pragma once\n",
    "velmora/platform/P.h": "#pragma once\nstruct P {};\n",
    "driver/D.h": "#pragma once\n#include <velmora/velmora.h>\n",
    "tests/io/test_b.cpp": '#include "velmora/io/B.h"\n',
}
FAULTS = [
    ({"velmora/platform/P.cpp": '#include "velmora/io/B.h"\n'}, "platform may not include io"),
    ({"velmora/gears/G.cpp": '#include "velmora/io/B.h"\n'}, "folder gears has no row"),
    ({"velmora/io/A.cpp": '#include "driver/E.h"\n', "driver/E.h": "#pragma once\n"}, "includes driver/E.h from outside"),
    ({"velmora/io/A.cpp": '#include "B.h"\n'}, "B.h is no path from the root"),
    ({"velmora/io/A.cpp": "#include <velmora/io/B.h>\n"}, "is the form for programs outside"),
    ({"velmora/io/B.cpp": '#include "velmora/io/A.h"\n'}, "velmora/io/A -> velmora/io/B -> velmora/io/A"),
    ({"driver/D.cpp": "#include <velmora/io/B.h>\n"}, "<velmora/io/B.h> is not public"),
    ({"driver/D.cpp": '#include "velmora/io/A.h"\n'}, "to be included as <velmora/io/A.h>"),
    ({"velmora/io/B.h": "#pragma once\ninline P b() { return {}; }\n"}, "velmora/io/B.h doesn't compile alone"),
]


def check(changes):
    with tempfile.TemporaryDirectory() as folder:
        for name, text in {**SOUND, **changes}.items():
            path = pathlib.Path(folder, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text)
        return subprocess.run([sys.executable, SCRIPT, "--root", folder], capture_output=True, text=True,
                              check=False)


class CheckIncludes(unittest.TestCase):
    def test_sound_tree_passes(self):
        run = check({})
        self.assertEqual((run.returncode, run.stderr), (0, ""))

    def test_each_fault_is_found_alone(self):
        for changes, message in FAULTS:
            with self.subTest(message):
                run = check(changes)
                self.assertEqual(run.returncode, 1)
                self.assertIn(message, run.stderr)
                self.assertIn(" 1 errors", run.stdout)


if __name__ == "__main__":
    unittest.main()
