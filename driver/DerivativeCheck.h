#pragma once

#include <string>
#include <vector>

namespace velmora {
class IO_DataModel;
class MBS_Model;
} // namespace velmora

namespace velmora::driver {

/// What was found for one kind of derivative, or for one of its blocks that differs.
struct DerivativeRow {
    std::string block; ///< what is derived by what; rows and columns of a block that differs
    std::string entry; ///< the place with the largest error: row, column
    double analytic = 0.0, difference = 0.0;
    std::string verdict; ///< "ok", "DIFFERS", or "meant: " and the reason
};

/// Compares the derivatives that a model gives with central differences of the vectors that they derive from,
/// at the start and at two random states near it, with random rates, accelerations and multipliers, and Euler
/// parameters whose norm isn't 1. A row per kind of derivative, with its worst entry, and one per block that
/// differs.
///
/// Some derivatives are meant to differ, and their blocks are known by the blocks of the data model: gears
/// that start turned, motions driven by angles or by differences in the frame of a body, forces on one body,
/// which have blocks for measured bodies alone, and expressions whose measures aren't reached by a
/// derivative.
std::vector<DerivativeRow> checkDerivatives(MBS_Model& model, IO_DataModel& dataModel);

/// One comparison: an entry of a derivative, its central difference, the largest entry of its row, and the
/// size of the terms in the values that were differenced.
struct DerivativeEntry {
    double analytic = 0.0, difference = 0.0, largestOfRow = 0.0, sizeOfTerms = 0.0;
};

/// Error over what rounding and the width of the difference explain; above 1 the entry differs.
double getRelativeError(const DerivativeEntry& entry);

} // namespace velmora::driver
