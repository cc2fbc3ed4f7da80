// Copies attribute stores and moves them through streams.
#pragma once

#include "platform/MediaFoundation.h"

#include <initializer_list>

namespace mft_utils
{

// Holds no state. Thread-safe.
class MFAttributesParser
{
  public:
    // Copies every attribute except the excluded keys; one that the destination holds already is replaced only when
    // `overwrite` is set. Stops at the first failure and leaves what was copied so far. E_POINTER for a null store.
    static HRESULT CopyStore(IMFAttributes *destination, IMFAttributes *source, bool overwrite,
                             std::initializer_list<GUID> excludedKeys = {}) noexcept;

    // Writes the store, pointer values left out, at the stream's position. Not run under Wine, which lacks the
    // platform function.
    static HRESULT Serialize(IMFAttributes *source, IStream *stream) noexcept;

    // Replaces the destination's content by what Serialize wrote. Not run under Wine, which lacks the platform
    // function.
    static HRESULT Deserialize(IMFAttributes *destination, IStream *stream) noexcept;
};

} // namespace mft_utils
