#include "media/MediaTypeParser.h"

#include <algorithm>
#include <iterator>

#include "trace/Check.h"

namespace mft_utils
{

namespace
{

// Only what the type states already: it must not contradict the new number of bits.
HRESULT AdjustLayout(IMFMediaType *mediaType, UINT32 bitsPerPixel) noexcept
{
    MediaTypeData data;
    if (FAILED(MFGetAttributeSize(mediaType, MF_MT_FRAME_SIZE, &data.width, &data.height)))
    {
        return S_OK;
    }
    MFGetAttributeRatio(mediaType, MF_MT_FRAME_RATE, &data.numerator, &data.denominator);
    const std::uint64_t strideBytes = (std::uint64_t{data.width} * bitsPerPixel + 7) / 8;
    // A frame size that no frame can have leaves the values as they came.
    if (strideBytes > MAXLONG || (data.height != 0 && strideBytes > MAXDWORD / data.height))
    {
        return S_OK;
    }
    const std::uint64_t sampleBytes = strideBytes * data.height;
    UINT32 present = 0;
    if (SUCCEEDED(mediaType->GetUINT32(MF_MT_DEFAULT_STRIDE, &present)))
    {
        CHECK_HR(mediaType->SetUINT32(MF_MT_DEFAULT_STRIDE, static_cast<UINT32>(strideBytes)));
    }
    if (SUCCEEDED(mediaType->GetUINT32(MF_MT_SAMPLE_SIZE, &present)))
    {
        CHECK_HR(mediaType->SetUINT32(MF_MT_SAMPLE_SIZE, static_cast<UINT32>(sampleBytes)));
    }
    if (SUCCEEDED(mediaType->GetUINT32(MF_MT_AVG_BITRATE, &present)) && data.denominator != 0)
    {
        const std::uint64_t bitsPerSecond = sampleBytes * 8 * data.FPS();
        CHECK_HR(mediaType->SetUINT32(MF_MT_AVG_BITRATE,
                                      static_cast<UINT32>(std::min<std::uint64_t>(bitsPerSecond, MAXDWORD))));
    }
    return S_OK;
}

} // namespace

HRESULT MediaTypeParser::GetMediaTypeData(MediaTypeData &data, IMFMediaType *mediaType) noexcept
{
    data = {};
    CHECK_POINTER(mediaType);
    MediaTypeData found;
    CHECK_HR(MFGetAttributeSize(mediaType, MF_MT_FRAME_SIZE, &found.width, &found.height));
    CHECK_HR(MFGetAttributeRatio(mediaType, MF_MT_FRAME_RATE, &found.numerator, &found.denominator));
    data = found;
    return S_OK;
}

HRESULT MediaTypeParser::CreateMediaTypeListSubset(MediaTypeList &destination, const MediaTypeList &source,
                                                   const std::vector<GUID> &sourceSubtypes,
                                                   const GUID &destinationSubtype, UINT32 bitsPerPixel)
{
    MediaTypeList copies;
    for (const ComPtr<IMFMediaType> &mediaType : source)
    {
        GUID subtype{};
        if (mediaType == nullptr || FAILED(mediaType->GetGUID(MF_MT_SUBTYPE, &subtype)) ||
            std::find(sourceSubtypes.begin(), sourceSubtypes.end(), subtype) == sourceSubtypes.end())
        {
            continue;
        }
        ComPtr<IMFMediaType> copy;
        CHECK_HR(MFCreateMediaType(copy.GetAddressOf()));
        CHECK_HR(mediaType->CopyAllItems(copy.Get()));
        CHECK_HR(copy->SetGUID(MF_MT_SUBTYPE, destinationSubtype));
        if (bitsPerPixel != 0)
        {
            CHECK_HR(AdjustLayout(copy.Get(), bitsPerPixel));
        }
        copies.push_back(std::move(copy));
    }
    // Source and destination may be the same list, so nothing is appended before the end.
    destination.insert(destination.end(), std::make_move_iterator(copies.begin()),
                       std::make_move_iterator(copies.end()));
    return S_OK;
}

} // namespace mft_utils
