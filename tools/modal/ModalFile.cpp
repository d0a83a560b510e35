#include "tools/modal/ModalFile.h"

#include <fmt/format.h>

#include <cmath>
#include <fstream>

namespace velmora::tools {

namespace {

using Eigen::Index;
using Eigen::MatrixXd;

constexpr const char* head = "ADAMSMAT2 UNITS: KILOGRAM METER SECOND NEWTON\n"
                             "14 NAMES\n"
                             "SELNOD SELMOD INVAR1 INVAR2\n"
                             "INVAR3 INVAR4 INVAR5 INVAR6\n"
                             "INVAR7 INVAR8 INVAR9 GENSTIFF\n"
                             "T_MODE R_MODE\n";

std::string number(double x) {
    return fmt::format("{:24.16E}", x);
}

/// All elements, row after row; each row begins a line, and a line holds up to `perLine` numbers.
std::string block(const char* name, const MatrixXd& matrix, Index perLine = 3) {
    std::string text = fmt::format("{} FULL RORDER {} {} {} ( {}E24.16 )\n", name, matrix.rows(),
                                   matrix.cols(), matrix.size(), perLine);
    for (Index i = 0; i < matrix.rows(); ++i)
        for (Index j = 0; j < matrix.cols(); ++j) {
            text += number(matrix(i, j));
            if ((j + 1) % perLine == 0 || j + 1 == matrix.cols())
                text += '\n';
        }
    return text;
}

std::string nodeBlock(const ModalBody& body) {
    const std::size_t count = body.nodeLabels.size();
    std::string text = fmt::format("SELNOD FULL RORDER {} 5 {} ( I8 3E24.16 I8 )\n", count, 5 * count);
    for (std::size_t n = 0; n < count; ++n) {
        const auto position = body.nodePositions.col(static_cast<Index>(n));
        text += fmt::format("{:8}{}{}{}       6\n", body.nodeLabels[n], number(position(0)),
                            number(position(1)), number(position(2)));
    }
    return text;
}

/// Rigid modes count as the first six.
std::string modeBlock(const Eigen::VectorXd& frequencies) {
    std::string text =
        fmt::format("SELMOD FULL RORDER {} 2 {} ( I8 E24.16 )\n", frequencies.size(), 2 * frequencies.size());
    for (Index j = 0; j < frequencies.size(); ++j)
        text += fmt::format("{:8}{}\n", 7 + j, number(frequencies(j)));
    return text;
}

/// Three rows of the shapes from `first` on, node after node and within a node mode after mode.
MatrixXd shapesOfNodes(const ModalBody& body, Index first) {
    const auto nodes = static_cast<Index>(body.nodeLabels.size()), M = body.nodeShapes.cols();
    MatrixXd result(3, nodes * M);
    for (Index n = 0; n < nodes; ++n)
        result.middleCols(n * M, M) = body.nodeShapes.middleRows(6 * n + first, 3);
    return result;
}

} // namespace

std::string formatModalFile(const ModalBody& body) {
    const Invariants& of = body.invariants;
    const Eigen::VectorXd omega = 2.0 * M_PI * body.frequencies;
    return head + nodeBlock(body) + modeBlock(body.frequencies) +
           block("INVAR1", MatrixXd::Constant(1, 1, of.mass)) + block("INVAR2", of.centerOfMass.transpose()) +
           block("INVAR3", of.momentum) + block("INVAR4", of.moment) +
           block("INVAR5", of.rotation, of.rotation.cols()) + block("INVAR6", of.modalMass) +
           block("INVAR7", of.inertia) + block("INVAR8", of.linearInertia) +
           block("INVAR9", of.squareInertia) + block("GENSTIFF", omega.cwiseAbs2().asDiagonal()) +
           block("T_MODE", shapesOfNodes(body, 0)) + block("R_MODE", shapesOfNodes(body, 3));
}

std::string writeModalFile(const ModalBody& body, const std::string& path) {
    std::ofstream file(path, std::ios::binary);
    file << formatModalFile(body);
    file.close();
    return file ? "" : fmt::format("can't write <{}>", path);
}

} // namespace velmora::tools
