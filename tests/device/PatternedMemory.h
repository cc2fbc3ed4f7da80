// Memory behind MFCreateAlignedMemoryBuffer whose free blocks a test can fill. The program is linked with --wrap for
// it.
#pragma once

#include "platform/MediaFoundation.h"

namespace tarn_test
{

// While it lives, new buffers are ours and begin filled with `value`. One at a time; only what is left of a transform
// may outlive it.
class PatternedMemory
{
  public:
    explicit PatternedMemory(BYTE value);
    ~PatternedMemory();
    PatternedMemory(const PatternedMemory &) = delete;
    PatternedMemory &operator=(const PatternedMemory &) = delete;

    // Fills every buffer of which only one reference is left, and returns how many these were. Call it while no frame
    // is under way.
    std::size_t FillFree() const;
    // How many buffers hold another byte than this one.
    static std::size_t CountWithout(BYTE value);
};

} // namespace tarn_test
