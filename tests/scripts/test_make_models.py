"""The models that scripts write hold together at the start and have the freedom that their mechanisms have.

Usage: test_make_models.py <path of the program velmora>
"""

import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

SCRIPTS = pathlib.Path(__file__).resolve().parents[2] / "scripts"
sys.path.insert(0, str(SCRIPTS))
from reference_models import MODELS, model_text  # noqa: E402

FREEDOM = {"top_nutation": 3, "top_precession": 3, "spatial_double_pendulum": 4, "planar_chain_10": 10,
           "spherical_2": 3, "universal_1": 2, "cylindrical_3": 2, "two_body_spring": 12, "two_body_damper": 12,
           "fixed_spring": 6, "pulling_spring": 6, "prescribed_rotor": 0, "prescribed_slider_crank": 0,
           "flexible_free_spin": 16, "flexible_free_spin_coupled": 16, "flexible_free_spin_quadratic": 16,
           "flexible_free_spin_linear": 16, "flexible_cantilever": 11,
           "flexible_cantilever_static": 11}  # others: 1


def write(script, *arguments):
    command = [sys.executable, str(SCRIPTS / script), *arguments]
    return subprocess.run(command, capture_output=True, text=True)


class MakeModels(unittest.TestCase):
    def check(self, name, text, freedom, redundant=0):
        with tempfile.TemporaryDirectory() as folder:
            model = pathlib.Path(folder) / "model.toml"
            model.write_text(text, encoding="utf-8")
            done = subprocess.run([PROGRAM, "check", str(model)], capture_output=True, text=True)
        self.assertEqual(done.returncode, 0, f"{name}: {done.stderr}")
        self.assertRegex(done.stdout, rf"Degrees of freedom +{freedom}\n", name)
        self.assertRegex(done.stdout, rf"Redundant equations +{redundant}\n", name)
        residual = re.search(r"residual of external constraints +(\S+)", done.stdout)
        self.assertLess(float(residual.group(1)) if residual else 0.0, 1e-14, name)

    def test_scripts_write_sound_models(self):
        self.check("four-bar", write("make_four_bar.py", "5").stdout, 1)
        self.check("four-bar with hinges", write("make_four_bar.py", "5", "--hinges").stdout, 1, 15)
        self.check("chain", write("make_chain.py", "7").stdout, 21)
        self.check("catenary", write("make_catenary.py", "8", "--upwards").stdout, 21)

    def test_models_with_references_have_their_freedom(self):
        for name in MODELS:
            self.check(name, model_text(name, 1e-3), FREEDOM.get(name, 1))

    def test_numbers_of_links_are_checked(self):
        for script in ("make_four_bar.py", "make_chain.py", "make_catenary.py"):
            for count in ("0", "two"):
                self.assertEqual(write(script, count).returncode, 2, f"{script} {count}")


if __name__ == "__main__":
    PROGRAM = sys.argv.pop()
    unittest.main()
