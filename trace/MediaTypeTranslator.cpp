#include "trace/MediaTypeTranslator.h"

#include <atomic>

#include "trace/GuidTranslator.h"

namespace mft_utils
{

namespace
{

constinit std::atomic<bool> created{false};

std::string PairToString(UINT32 high, UINT32 low, char separator)
{
    return std::to_string(high) + separator + std::to_string(low);
}

} // namespace

HRESULT MediaTypeTranslator::Create() noexcept
{
    return created.exchange(true) ? S_FALSE : S_OK;
}

void MediaTypeTranslator::Destroy() noexcept
{
    created = false;
}

std::string MediaTypeTranslator::Describe(IMFMediaType *mediaType)
{
    if (mediaType == nullptr)
    {
        return "null";
    }
    std::string text = "no subtype";
    GUID subtype{};
    if (SUCCEEDED(mediaType->GetGUID(MF_MT_SUBTYPE, &subtype)))
    {
        text = created ? GuidTranslator::Name(subtype) : GuidTranslator::ToString(subtype);
    }
    UINT32 first = 0;
    UINT32 second = 0;
    if (SUCCEEDED(MFGetAttributeSize(mediaType, MF_MT_FRAME_SIZE, &first, &second)))
    {
        text.append(" ").append(PairToString(first, second, 'x'));
    }
    if (SUCCEEDED(MFGetAttributeRatio(mediaType, MF_MT_FRAME_RATE, &first, &second)))
    {
        text.append(" @ ").append(PairToString(first, second, '/')).append(" fps");
    }
    return text;
}

} // namespace mft_utils
