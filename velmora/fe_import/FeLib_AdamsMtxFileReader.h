#pragma once

#include "velmora/io/IO_FileIO.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace velmora {

class FeLib_MtxContent;
class MBM_GeneralDenseMatrix;
struct MtxBlockHeader;

/// Reads a modal file: one reader, one file, one content. Blocks may stand in any order, but for the list of
/// nodes, which comes before the last of SELMOD, T_MODE and R_MODE. Lines outside the blocks are passed over.
///
/// Sizes and indices of the file are tested against its length and the matrix before they are used, so that
/// memory stays within a fixed multiple of the file's length.
class VELMORA_EXPORT FeLib_AdamsMtxFileReader : public IO_FileIO {
  public:
    explicit FeLib_AdamsMtxFileReader(std::string name);
    ~FeLib_AdamsMtxFileReader() override;
    std::string getClassName() const override { return "FeLib_AdamsMtxFileReader"; }

    /// Fills the content. False, with a text in `errorString`, for a file that can't be opened, a head that
    /// ends early or counts no names ("FeLib_AdamsMtxFileReader: head of file not valid!"), and at the first
    /// block that can't be read (its name and ": error when reading block"). Modes whose blocks don't fit one
    /// another leave a text too, but no modes, and the reading goes on.
    bool readMtxFile(FeLib_MtxContent* target);

    std::uint32_t numOfNodes = 0; ///< entries of block SELNOD
    std::uint32_t numOfBlockNames;
    std::vector<std::string> blockNames;
    /// Per block name the label column of a labelled block, else null.
    std::vector<std::unique_ptr<std::vector<std::uint32_t>>> blockLabels;
    std::vector<unsigned> blockLines; ///< per block name the line of its header, from 1; 0 if there is none
    unsigned lineNumber = 0;          ///< of the last line read, from 1
    std::unique_ptr<MBM_GeneralDenseMatrix> selMod; ///< modes x 1 or more; frequencies in Hz first
    std::unique_ptr<MBM_GeneralDenseMatrix> tMode;  ///< 3 x (nodes times modes)
    std::unique_ptr<MBM_GeneralDenseMatrix> rMode;  ///< 3 x (nodes times modes)
    FeLib_MtxContent* content = nullptr;            ///< not owned

  private:
    using Labels = std::vector<std::uint32_t>;
    using Matrix = std::unique_ptr<MBM_GeneralDenseMatrix>;

    bool readHead();
    void readUnits();
    bool readBlocks();
    bool readBlock(std::size_t block, const std::vector<std::string>& tokens);
    // Each is null if the lines don't give the matrix.
    Matrix readSparse(const MtxBlockHeader& header);
    Matrix readPlain(const MtxBlockHeader& header, bool isLinePerRecord);
    Matrix readLabelled(const MtxBlockHeader& header, Labels& labels);

    bool store(std::size_t block, Matrix matrix);
    bool addNodes(const MBM_GeneralDenseMatrix& positions, const Labels& labels);
    void testModes();

    bool nextLine();
    bool isInFile(std::uint64_t count, std::uint64_t characters);
    bool readReals(std::size_t begin, unsigned count, unsigned width);

    std::int64_t fileLength = 0;
    std::vector<double> reals; // of one line
};

} // namespace velmora
