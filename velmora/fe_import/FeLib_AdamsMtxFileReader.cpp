#include "velmora/fe_import/FeLib_AdamsMtxFileReader.h"

#include "velmora/fe_import/FeLib_FeNodeList.h"
#include "velmora/fe_import/FeLib_MtxContent.h"
#include "velmora/fe_import/MtxBlockHeader.h"
#include "velmora/io/StringHelpers.h"
#include "velmora/matrix/MBM_DenseMatrix.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <new>

namespace velmora {

namespace {

enum Block : std::size_t { SelNod, SelMod, Invar1, Invar2, Invar5 = 6, Invar9 = 10, GenStiff, TMode, RMode };

constexpr unsigned labelWidth = 8;    // also of an index in a sparse block
constexpr unsigned valuesPerLine = 3; // at most, but in the fifth invariant
constexpr std::uint32_t mostNodes = std::numeric_limits<std::uint32_t>::max() / 6;

// A sparse block says the size of its matrix without filling it: elements that a file may ask for anyway, and
// those that each of its characters allows in addition.
constexpr std::uint64_t freeElements = 1 << 20;
constexpr std::uint64_t elementsPerCharacter = 256;

bool fieldTo(const std::string& line, std::size_t begin, std::size_t width, unsigned* value) {
    std::string field = line.substr(begin, width);
    trimString(field);
    return stringToUnsigned(field, value);
}

} // namespace

FeLib_AdamsMtxFileReader::FeLib_AdamsMtxFileReader(std::string name)
    : IO_FileIO(std::move(name)),
      blockNames{"SELNOD", "SELMOD", "INVAR1", "INVAR2", "INVAR3",   "INVAR4", "INVAR5",
                 "INVAR6", "INVAR7", "INVAR8", "INVAR9", "GENSTIFF", "T_MODE", "R_MODE"} {
    numOfBlockNames = static_cast<std::uint32_t>(blockNames.size());
    blockLabels.resize(numOfBlockNames);
    blockLines.resize(numOfBlockNames, 0);
}

FeLib_AdamsMtxFileReader::~FeLib_AdamsMtxFileReader() = default;

bool FeLib_AdamsMtxFileReader::readMtxFile(FeLib_MtxContent* target) {
    content = target;
    if (!openForReading())
        return false;
    std::fseek(file, 0, SEEK_END);
    getPosition(&fileLength);
    std::rewind(file);
    const bool isHeadValid = readHead();
    if (!isHeadValid)
        appendErrorString("FeLib_AdamsMtxFileReader: head of file not valid!");
    const bool isRead = isHeadValid && readBlocks();
    close();
    return isRead;
}

bool FeLib_AdamsMtxFileReader::readHead() {
    if (!nextLine())
        return false;
    readUnits();
    if (!nextLine())
        return false;
    std::vector<std::string> tokens;
    tokenizeString(currentLine, &tokens, " ");
    unsigned numOfNames = 0;
    if (tokens.empty() || !stringToUnsigned(tokens[0], &numOfNames) || numOfNames == 0)
        return false;
    const unsigned linesOfNames = numOfNames / 4 + (numOfNames % 4 != 0);
    lineNumber += linesOfNames;
    return skipLines(linesOfNames);
}

void FeLib_AdamsMtxFileReader::readUnits() {
    if (!currentLine.starts_with("ADAMSMAT2"))
        return;
    std::string line = currentLine;
    for (char& c : line)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    // The longer of two words that hold one another stands first.
    const auto unitOf = [&line](const char* quantity, std::initializer_list<const char*> words) {
        for (const char* word : words)
            if (line.find(word) != std::string::npos)
                return std::string(word);
        return std::string("Unit of ") + quantity + " not valid!";
    };
    content->units = {unitOf("mass", {"MEGAGRAM", "KILOGRAM"}), unitOf("length", {"MILLIMETER", "METER"}),
                      unitOf("time", {"SECOND"}), unitOf("force", {"NEWTON"})};
}

bool FeLib_AdamsMtxFileReader::readBlocks() {
    while (nextLine()) {
        std::vector<std::string> tokens;
        tokenizeString(currentLine, &tokens, " ");
        if (tokens.empty() || !currentLine.starts_with(tokens[0]))
            continue;
        const auto name = std::ranges::find(blockNames, tokens[0]);
        if (name == blockNames.end())
            continue;
        const auto block = static_cast<std::size_t>(name - blockNames.begin());
        blockLines[block] = lineNumber;
        bool isRead = false;
        try {
            isRead = readBlock(block, tokens);
        } catch (const std::bad_alloc&) { // a count of the file, larger than this machine takes
        }
        if (!isRead) {
            blockLabels[block].reset();
            appendErrorString(*name + ": error when reading block");
            return false;
        }
    }
    return true;
}

bool FeLib_AdamsMtxFileReader::readBlock(std::size_t block, const std::vector<std::string>& tokens) {
    MtxBlockHeader header;
    if (!header.parse(tokens, block == SelNod) || header.rows == 0 || header.cols == 0 ||
        (block == SelNod && header.kind != MtxBlockHeader::Kind::Labelled))
        return false;
    Matrix matrix;
    if (header.kind == MtxBlockHeader::Kind::Sparse) {
        matrix = readSparse(header);
    } else if (header.kind == MtxBlockHeader::Kind::Plain) {
        matrix = readPlain(header, block == Invar5);
    } else {
        blockLabels[block] = std::make_unique<Labels>();
        matrix = readLabelled(header, *blockLabels[block]);
    }
    return matrix && store(block, std::move(matrix));
}

// Records of row and column, both from 1, and value.
FeLib_AdamsMtxFileReader::Matrix FeLib_AdamsMtxFileReader::readSparse(const MtxBlockHeader& header) {
    const std::uint64_t elements = std::uint64_t{header.rows} * header.cols;
    const auto length = static_cast<std::uint64_t>(fileLength);
    if (elements > freeElements + elementsPerCharacter * length ||
        !isInFile(header.numOfValues, 2 * labelWidth + std::uint64_t{header.width}))
        return nullptr;
    auto matrix = std::make_unique<MBM_GeneralDenseMatrix>(header.rows, header.cols, 0.0);
    if (matrix->errorCode != 0)
        return nullptr;
    for (unsigned record = 0; record < header.numOfValues; ++record) {
        unsigned row = 0, col = 0;
        if (!nextLine() || !readReals(2 * labelWidth, 1, header.width) ||
            !fieldTo(currentLine, 0, labelWidth, &row) ||
            !fieldTo(currentLine, labelWidth, labelWidth, &col) || row == 0 || row > header.rows ||
            col == 0 || col > header.cols)
            return nullptr;
        matrix->setValue(row - 1, col - 1, reals[0]);
    }
    return matrix;
}

// A record is a row or a column. It takes as many lines as it needs, or one that holds it whole.
FeLib_AdamsMtxFileReader::Matrix FeLib_AdamsMtxFileReader::readPlain(const MtxBlockHeader& header,
                                                                     bool isLinePerRecord) {
    const unsigned numOfRecords = header.isColumnOrder ? header.cols : header.rows;
    const unsigned recordLength = header.isColumnOrder ? header.rows : header.cols;
    const unsigned lineLength = isLinePerRecord ? header.repeat : std::min(header.repeat, valuesPerLine);
    if ((isLinePerRecord && lineLength != recordLength) ||
        !isInFile(std::uint64_t{header.rows} * header.cols, header.width))
        return nullptr;
    auto matrix = std::make_unique<MBM_GeneralDenseMatrix>(header.rows, header.cols, 0.0);
    if (matrix->errorCode != 0)
        return nullptr;
    for (unsigned record = 0; record < numOfRecords; ++record)
        for (unsigned begin = 0; begin < recordLength;) {
            const unsigned count = std::min(lineLength, recordLength - begin);
            if (!nextLine() || !readReals(0, count, header.width))
                return nullptr;
            for (unsigned k = 0; k < count; ++k, ++begin)
                matrix->setValue(header.isColumnOrder ? begin : record, header.isColumnOrder ? record : begin,
                                 reals[k]);
        }
    return matrix;
}

// A label and at most three values a row.
FeLib_AdamsMtxFileReader::Matrix FeLib_AdamsMtxFileReader::readLabelled(const MtxBlockHeader& header,
                                                                        Labels& labels) {
    const unsigned numOfReals = std::min(header.cols - 1, valuesPerLine);
    if (numOfReals == 0 || !isInFile(header.rows, labelWidth + std::uint64_t{numOfReals} * header.width))
        return nullptr;
    auto matrix = std::make_unique<MBM_GeneralDenseMatrix>(header.rows, numOfReals, 0.0);
    if (matrix->errorCode != 0)
        return nullptr;
    labels.reserve(header.rows);
    for (unsigned row = 0; row < header.rows; ++row) {
        if (!nextLine() || !readReals(labelWidth, numOfReals, header.width) ||
            !fieldTo(currentLine, 0, labelWidth, &labels.emplace_back()))
            return nullptr;
        for (unsigned k = 0; k < numOfReals; ++k)
            matrix->setValue(row, k, reals[k]);
    }
    return matrix;
}

bool FeLib_AdamsMtxFileReader::store(std::size_t block, Matrix matrix) {
    if (block == SelNod)
        return addNodes(*matrix, *blockLabels[block]);
    if (block == Invar1)
        content->mass = matrix->getValue(0, 0);
    if (block == Invar2) {
        if (matrix->cols != 3)
            return true;
        for (unsigned c = 0; c < 3; ++c)
            content->centerOfMass[c] = matrix->getValue(0, c);
    }
    if (block >= Invar1 && block <= Invar9) {
        content->setInvariant(static_cast<unsigned>(block - Invar1 + 1), std::move(matrix));
    } else if (block == GenStiff) {
        content->setGenStiff(std::move(matrix));
    } else {
        (block == SelMod ? selMod : block == TMode ? tMode : rMode) = std::move(matrix);
        testModes();
    }
    return true;
}

bool FeLib_AdamsMtxFileReader::addNodes(const MBM_GeneralDenseMatrix& positions, const Labels& labels) {
    const std::size_t before = content->nodeList->nodes.size();
    if (positions.cols != 3 || positions.rows > mostNodes - before)
        return false;
    numOfNodes = positions.rows;
    for (unsigned i = 0; i < numOfNodes; ++i)
        content->nodeList->add(std::make_unique<FeLib_FeNode>(
            labels[i], positions.getValue(i, 0), positions.getValue(i, 1), positions.getValue(i, 2)));
    return true;
}

void FeLib_AdamsMtxFileReader::testModes() {
    const Labels* labels = blockLabels[SelMod].get();
    if (!selMod || !tMode || !rMode || !labels)
        return;
    const std::uint64_t columns = std::uint64_t{numOfNodes} * labels->size();
    const auto refuse = [this](const char* dimension, const char* block) {
        appendErrorString(std::string("AdamsMtxFileReader: size (") + dimension + ") of block " + block +
                          " inconsistent");
    };
    if (tMode->cols != columns)
        refuse("columns", "T_MODE");
    else if (rMode->cols != columns)
        refuse("columns", "R_MODE");
    else if (tMode->rows != 3)
        refuse("rows", "T_MODE");
    else if (rMode->rows != 3)
        refuse("rows", "R_MODE");
    else if (selMod->rows != labels->size())
        refuse("rows", "SELMOD");
    else
        content->buildModes(*selMod, *tMode, *rMode, *labels);
}

// A last line without a line feed is a line too.
bool FeLib_AdamsMtxFileReader::nextLine() {
    ++lineNumber;
    return readLine() || !currentLine.empty();
}

// What is left of the file has room for so many pieces of so many characters.
bool FeLib_AdamsMtxFileReader::isInFile(std::uint64_t count, std::uint64_t characters) {
    std::int64_t position = 0;
    getPosition(&position);
    return count <= static_cast<std::uint64_t>(fileLength - position) / characters;
}

// Fields of one width into `reals`. False if the line is too short for them or one isn't a number.
bool FeLib_AdamsMtxFileReader::readReals(std::size_t begin, unsigned count, unsigned width) {
    const std::size_t end = begin + std::size_t{count} * width;
    if (currentLine.size() < end)
        return false;
    reals.resize(count);
    for (unsigned k = 0; k < count; ++k) {
        std::string field = currentLine.substr(begin + std::size_t{k} * width, width);
        trimString(field);
        if (!stringToDouble(field, &reals[k]))
            return false;
    }
    return true;
}

} // namespace velmora
