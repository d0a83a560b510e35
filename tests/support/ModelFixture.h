#pragma once

#include <gtest/gtest.h>
#include <velmora/velmora.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <utility>

namespace velmora::test {

using Keys = std::initializer_list<std::pair<const char*, std::string>>;

/// Adds a block with the keys.
IO_DataModelBlock* addBlock(IO_DataModel& data, const std::string& kind, const std::string& type,
                            const std::string& uuid, Keys keys);

/// Adds a rigid body with unsymmetric inertia and orientation; `overrides` replace or add keys.
IO_DataModelBlock* addRigidBody(IO_DataModel& data, const std::string& uuid, Keys overrides = {});

/// Builds models and holds what they need. Whatever reaches the console without being taken by `takeMessages`
/// fails the test.
class ModelFixture : public testing::Test {
  protected:
    ModelFixture();
    void TearDown() override;

    /// The model of `data`.
    MBS_Model& build();
    /// All messages since the last call.
    std::string takeMessages();

    IO_DataModel data{"test model"};
    IO_OutputManager output{"", "test"};
    std::unique_ptr<MBS_Model> model;

  private:
    std::string messages;
};

} // namespace velmora::test
