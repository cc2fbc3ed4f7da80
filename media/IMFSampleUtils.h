// Copy of a sample without its buffers.
#pragma once

#include "platform/MediaFoundation.h"

namespace mft_utils
{

// Holds no state. Thread-safe.
class IMFSampleUtils
{
  public:
    // Creates a sample with all attributes, the duration and the time of the source; a time or duration that the
    // source lacks stays unset. Buffers are not copied: the caller adds them. On failure `*destination` is null.
    static HRESULT Copy(IMFSample **destination, IMFSample *source) noexcept;

    // Makes a used sample what Copy would make but for its buffers, which stay. Fails where the source lacks time or
    // duration: the former ones cannot be taken off.
    static HRESULT Replace(IMFSample *destination, IMFSample *source) noexcept;
};

} // namespace mft_utils
