#include "tests/support/ModelFixture.h"

namespace velmora::test {

namespace {

class Recorder : public IO_ConsolePrinter {
  public:
    explicit Recorder(std::string& target) : text(&target) {}
    void print(const std::string& message) override { *text += message; }

  private:
    std::string* text;
};

} // namespace

IO_DataModelBlock* addBlock(IO_DataModel& data, const std::string& kind, const std::string& type,
                            const std::string& uuid, Keys keys) {
    IO_DataModelBlock* block = data.addBlock(kind, type, uuid, uuid, "");
    for (const auto& [key, value] : keys)
        block->addKeyValue(key, value);
    return block;
}

IO_DataModelBlock* addRigidBody(IO_DataModel& data, const std::string& uuid, Keys overrides) {
    IO_DataModelBlock* block =
        addBlock(data, "Body", "Rigid_EulerParameter_PAI", uuid,
                 {{"Mass", "2.5"},
                  {"Inertia", "1.1, 2.3, 2.9"},
                  {"LocationCenterMass", "0.1, -0.2, 0.3"},
                  {"OrientationPAI", "0.36, 0.48, -0.8, -0.8, 0.6, 0, 0.48, 0.64, 0.6"},
                  {"InitialVelocityVector", "0.5, 0.25, -0.125"},
                  {"InitialOmegaVector", "1.2, 0.9, 2.4"}});
    for (const auto& [key, value] : overrides) {
        if (!block->isKeyInBlock(key))
            block->addKeyValue(key, value);
        block->replaceValue(key, value);
    }
    return block;
}

ModelFixture::ModelFixture() {
    output.messageChannel->consolePrinter = std::make_unique<Recorder>(messages);
}

MBS_Model& ModelFixture::build() {
    model.reset(MBS_Model::makeModel(&data, &output));
    return *model;
}

std::string ModelFixture::takeMessages() {
    return std::exchange(messages, std::string());
}

void ModelFixture::TearDown() {
    EXPECT_EQ(messages, "") << "unexpected messages";
}

} // namespace velmora::test
