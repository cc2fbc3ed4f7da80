// Reads video media types and derives lists of them.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstdint>
#include <vector>

namespace mft_utils
{

using MediaTypeList = std::vector<ComPtr<IMFMediaType>>;

// Frame size and rate of a media type.
struct MediaTypeData
{
    UINT32 width = 0;
    UINT32 height = 0;
    UINT32 numerator = 0;
    UINT32 denominator = 0;

    // Whole frames per second, rounded down; 0 when the denominator is 0.
    UINT32 FPS() const noexcept
    {
        return denominator == 0 ? 0 : numerator / denominator;
    }
};

// Holds no state. Thread-safe.
class MediaTypeParser
{
  public:
    // Fails when the type is null (E_POINTER) or lacks frame size or rate; `data` is then all zero.
    static HRESULT GetMediaTypeData(MediaTypeData &data, IMFMediaType *mediaType) noexcept;

    // Appends, for each source type of one of the subtypes, a copy with the destination subtype. Stride, sample size
    // and bit rate, where the source type states them, are brought in line with `bitsPerPixel` (0 leaves them).
    // A type without a subtype is passed over. On failure the destination is as before. May throw std::bad_alloc.
    static HRESULT CreateMediaTypeListSubset(MediaTypeList &destination, const MediaTypeList &source,
                                             const std::vector<GUID> &sourceSubtypes, const GUID &destinationSubtype,
                                             UINT32 bitsPerPixel);
};

} // namespace mft_utils
