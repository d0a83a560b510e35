#pragma once

namespace velmora::driver {

/// Calls of operator new in the whole program so far.
unsigned long getNumOfAllocations();

} // namespace velmora::driver
