// Reads arbitrary bytes as the modal file of a flexible body. With VELMORA_SEED naming a folder that exists
// the program writes files to begin with there, and does nothing else.

#include "tests/support/ModalFile.h"
#include "velmora/bodies/MBS_FlexBody_Full_Parameter.h"
#include "velmora/fe_import/FeLib_FeModes.h"
#include "velmora/fe_import/FeLib_FeNodeList.h"
#include "velmora/fe_import/FeLib_MtxContent.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/matrix/MBM_DenseMatrix.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

using namespace velmora;

namespace {

void demand(bool holds) {
    if (!holds)
        std::abort();
}

void write(const std::string& name, const std::string& text) {
    std::ofstream(name, std::ios::binary) << text;
}

// Several programs may run side by side.
const std::string& fileName() {
    static const std::string name = (std::filesystem::temp_directory_path() /
                                     ("fuzz_modal_file_" + std::to_string(std::random_device()())))
                                        .string();
    static const int atExit = std::atexit([] { std::filesystem::remove(name); });
    static_cast<void>(atExit);
    return name;
}

void addKeys(IO_DataModelBlock& block) {
    for (const auto& [key, value] : {std::pair("Is_Itf_active", "yes"),
                                     {"Is_QuadraticTermOF_Itt_active", "yes"},
                                     {"LocationCenterMass", "0, 0, 0"},
                                     {"OrientationPAI", "1, 0, 0, 0, 1, 0, 0, 0, 1"},
                                     {"InitialVelocityVector", "0, 0, 0"},
                                     {"InitialOmegaVector", "0, 0, 0"},
                                     {"GlobalDampingFactor", "0.02, 0.01"}})
        block.addKeyValue(key, value);
    block.addKeyValue("Path2MtxFile", fileName());
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    const char* folder = std::getenv("VELMORA_SEED");
    if (!folder)
        return 0;
    const test::PointBody one{{5}, 1}, three;
    write(std::string(folder) + "/one_point.mtx", one.file());
    write(std::string(folder) + "/three_points.mtx", three.file());
    for (const auto& [name, block] : three.blocks())
        write(std::string(folder) + "/" + name + ".mtx", three.file({{name, ""}}));
    std::exit(0);
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    write(fileName(), {data, data + size});
    IO_DataModelBlock block("Body", "f", "f", "");
    addKeys(block);
    const MBS_FlexBody_Full_Parameter parameter(&block);
    if (parameter.isErrorOccured())
        return 0;
    // What a body and its joints take must be there in full.
    const unsigned M = parameter.numOfModes;
    demand(M > 0 && parameter.Mred.size() == M && parameter.Kred.size() == M && parameter.Dred.size() == M);
    demand(parameter.Wrf.size() == M && parameter.Wtf && parameter.WffPairSum);
    const FeLib_MtxContent& content = *parameter.mtxContent;
    for (const FeLib_FeNode* node : content.nodeList->nodes) {
        MBM_GeneralDenseMatrix shapes(1, 1);
        content.modes->addNodeShapes(node->label, shapes);
        demand(shapes.rows == 6 && shapes.cols == M);
    }
    return 0;
}
