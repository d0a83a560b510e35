#pragma once

namespace velmora::test {

/// Number of allocations by operator new in this thread since its start.
unsigned long allocationCount();

} // namespace velmora::test
