#pragma once

#include "tests/support/ModalFile.h"
#include "tests/support/ModelFixture.h"

#include <gtest/gtest.h>

#include <fstream>

namespace velmora::test {

/// Writes a modal file into the folder for temporary files; its path. Each test case has files of its own.
inline std::string writeModalFile(const std::string& content, const std::string& name = "body") {
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    std::string path = std::string(test->test_suite_name()) + "_" + test->name() + "_" + name + ".mtx";
    for (char& c : path)
        c = c == '/' ? '_' : c;
    path = testing::TempDir() + path;
    std::ofstream(path, std::ios::binary) << content;
    return path;
}

/// Adds a flexible body with unsymmetric orientation; `overrides` replace or add keys.
inline IO_DataModelBlock* addFlexibleBody(IO_DataModel& data, const std::string& uuid,
                                          const std::string& path, Keys overrides = {}) {
    IO_DataModelBlock* block =
        addBlock(data, "Body", "MBS_FlexBody_Full", uuid,
                 {{"Is_Itf_active", "yes"},
                  {"Is_QuadraticTermOF_Itt_active", "yes"},
                  {"Path2MtxFile", path},
                  {"LocationCenterMass", "0.3, 0.1, -0.4"},
                  {"OrientationPAI", "0.36, 0.48, -0.8, -0.8, 0.6, 0, 0.48, 0.64, 0.6"},
                  {"InitialVelocityVector", "0.5, -0.25, 0.125"},
                  {"InitialOmegaVector", "0.7, -1.1, 1.9"},
                  {"GlobalDampingFactor", "0.05, 0.02"}});
    for (const auto& [key, value] : overrides) {
        if (!block->isKeyInBlock(key))
            block->addKeyValue(key, value);
        block->replaceValue(key, value);
    }
    return block;
}

} // namespace velmora::test
