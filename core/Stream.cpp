#include "core/Stream.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <utility>

#include "core/MediaEventGenerator.h"
#include "trace/Check.h"
#include "trace/GuidTranslator.h"
#include "trace/MediaTypeTranslator.h"
#include "trace/StreamNames.h"

using mft_utils::MediaTypeData;
using mft_utils::MediaTypeParser;
using mft_utils::MediaTypeTranslator;

namespace mft_core
{

namespace
{
// Every value of the key that `supported` holds must be equal in `requested`.
bool HoldsEqualValue(IMFMediaType *supported, IMFMediaType *requested, const GUID &key)
{
    PROPVARIANT value;
    PropVariantInit(&value);
    if (FAILED(supported->GetItem(key, &value)))
    {
        return false;
    }
    BOOL equal = FALSE;
    const HRESULT compared = requested->CompareItem(key, value, &equal);
    PropVariantClear(&value);
    return SUCCEEDED(compared) && equal != FALSE;
}

bool Matches(IMFMediaType *supported, IMFMediaType *requested)
{
    return HoldsEqualValue(supported, requested, MF_MT_FRAME_SIZE) &&
           HoldsEqualValue(supported, requested, MF_MT_FRAME_RATE) &&
           HoldsEqualValue(supported, requested, MF_MT_SUBTYPE);
}

// True when `candidate` is to replace `best`: smaller in one dimension, or the same size at a lower rate. One smaller
// dimension suffices: this is no comparison of areas.
bool IsCloser(const MediaTypeData &candidate, const MediaTypeData &best)
{
    if (candidate.width < best.width || candidate.height < best.height)
    {
        return true;
    }
    return candidate.width == best.width && candidate.height == best.height && best.denominator != 0 &&
           candidate.FPS() < best.FPS();
}

MFFrameSourceTypes FrameSourceOf(const GUID &subtype)
{
    static const std::array<GUID, 8> colorSubtypes{MFVideoFormat_YUY2,  MFVideoFormat_NV12,  MFVideoFormat_MJPG,
                                                   MFVideoFormat_UYVY,  MFVideoFormat_I420,  MFVideoFormat_RGB24,
                                                   MFVideoFormat_RGB32, MFVideoFormat_ARGB32};
    if (IsEqualGUID(subtype, MFVideoFormat_D16))
    {
        return MFFrameSourceTypes_Depth;
    }
    if (IsEqualGUID(subtype, MFVideoFormat_L8) || IsEqualGUID(subtype, MFVideoFormat_L16))
    {
        return MFFrameSourceTypes_Infrared;
    }
    const bool isColor = std::any_of(colorSubtypes.begin(), colorSubtypes.end(),
                                     [&](const GUID &color) { return IsEqualGUID(color, subtype) != 0; });
    return isColor ? MFFrameSourceTypes_Color : MFFrameSourceTypes_Custom;
}
} // namespace

Stream::Stream(UINT32 streamId, MediaEventGenerator *generator, std::string streamName)
    : ITopologyNode(nullptr, std::move(streamName)), id(streamId), eventGenerator(generator)
{
}

HRESULT Stream::SetState(DeviceStreamState theState)
{
    const std::scoped_lock guard(lock);
    TRACE_INFO("%s: %s -> %s", GetName(), mft_utils::StreamStateName(state), mft_utils::StreamStateName(theState));
    state = theState;
    return S_OK;
}

UINT32 Stream::GetID() const noexcept
{
    return id;
}

DeviceStreamState Stream::GetState() const
{
    const std::scoped_lock guard(lock);
    return state;
}

HRESULT Stream::GetMediaTypeAt(DWORD index, IMFMediaType **ppMediaType) const
{
    CHECK_POINTER(ppMediaType);
    *ppMediaType = nullptr;
    if (index >= supportedMediaTypes.size())
    {
        return MF_E_NO_MORE_TYPES; // how an enumeration ends
    }
    return supportedMediaTypes[index].CopyTo(ppMediaType);
}

HRESULT Stream::GetCurrentMediaType(IMFMediaType **ppMediaType) const
{
    CHECK_POINTER(ppMediaType);
    *ppMediaType = nullptr;
    const std::scoped_lock guard(lock);
    if (!currentMediaType)
    {
        return MF_E_TRANSFORM_TYPE_NOT_SET;
    }
    return currentMediaType.CopyTo(ppMediaType);
}

HRESULT Stream::GetAttributes(IMFAttributes **ppAttributes) const
{
    CHECK_POINTER_AS("theAttr", ppAttributes, E_POINTER);
    return attributes.CopyTo(ppAttributes);
}

HRESULT Stream::GetSupportedMediaTypes(MediaTypeList &list) const
{
    list = supportedMediaTypes;
    return S_OK;
}

HRESULT Stream::SetCurrentMediaType(IMFMediaType *mediaType)
{
    if (mft_utils::TraceEnabled(mft_utils::TraceLevel::Information))
    {
        TRACE_INFO("%s: current media type %s", GetName(), MediaTypeTranslator::Describe(mediaType).c_str());
    }
    const std::scoped_lock guard(lock);
    currentMediaType = mediaType;
    return S_OK;
}

bool Stream::IsSupported(IMFMediaType *mediaType) const
{
    return mediaType != nullptr &&
           std::any_of(supportedMediaTypes.begin(), supportedMediaTypes.end(),
                       [&](const ComPtr<IMFMediaType> &supported) { return Matches(supported.Get(), mediaType); });
}

HRESULT Stream::FindMatchingMediaType(IMFMediaType **ppFound, IMFMediaType *requested) const
{
    CHECK_POINTER(ppFound);
    CHECK_POINTER(requested);
    const auto found =
        std::find_if(supportedMediaTypes.begin(), supportedMediaTypes.end(),
                     [&](const ComPtr<IMFMediaType> &supported) { return Matches(supported.Get(), requested); });
    if (found == supportedMediaTypes.end())
    {
        if (mft_utils::TraceEnabled(mft_utils::TraceLevel::Error))
        {
            TRACE_ERROR("Failed to find matching media type: %s", MediaTypeTranslator::Describe(requested).c_str());
            TraceSupportedMediaTypes();
        }
        return E_FAIL;
    }
    if (mft_utils::TraceEnabled(mft_utils::TraceLevel::Information))
    {
        TRACE_INFO("Found matching media type: %s", MediaTypeTranslator::Describe(found->Get()).c_str());
    }
    return found->CopyTo(ppFound);
}

HRESULT Stream::FindClosestMediaType(IMFMediaType **ppFound, const GUID &subtype, UINT32 minFps, UINT32 minWidth,
                                     UINT32 minHeight) const
{
    CHECK_POINTER(ppFound);
    IMFMediaType *best = nullptr;
    MediaTypeData bestData;
    for (const auto &candidate : supportedMediaTypes)
    {
        GUID candidateSubtype{};
        MediaTypeData data;
        if (FAILED(candidate->GetGUID(MF_MT_SUBTYPE, &candidateSubtype)) || !IsEqualGUID(candidateSubtype, subtype) ||
            FAILED(MediaTypeParser::GetMediaTypeData(data, candidate.Get())))
        {
            continue;
        }
        if (data.FPS() < minFps || data.width < minWidth || data.height < minHeight)
        {
            continue;
        }
        if (best == nullptr || IsCloser(data, bestData))
        {
            best = candidate.Get();
            bestData = data;
        }
    }
    if (best == nullptr)
    {
        if (mft_utils::TraceEnabled(mft_utils::TraceLevel::Error))
        {
            TRACE_ERROR("%s: no media type %s of at least %ux%u at %u fps", GetName(),
                        mft_utils::GuidTranslator::Name(subtype).c_str(), minWidth, minHeight, minFps);
            TraceSupportedMediaTypes();
        }
        return E_FAIL;
    }
    best->AddRef();
    *ppFound = best;
    return S_OK;
}

void Stream::TraceSupportedMediaTypes() const
{
    TRACE_ERROR("Supported media types");
    for (const auto &type : supportedMediaTypes)
    {
        TRACE_ERROR("  %s", MediaTypeTranslator::Describe(type.Get()).c_str());
    }
}

HRESULT Stream::InitFrameSourceTypes()
{
    for (const auto &type : supportedMediaTypes)
    {
        GUID subType{};
        CHECK_HR(type->GetGUID(MF_MT_SUBTYPE, &subType));
        supportedFrameSourceTypes |= static_cast<UINT32>(FrameSourceOf(subType));
    }
    TRACE_INFO("%s: frame source %s (0x%X)", GetName(), mft_utils::FrameSourceName(supportedFrameSourceTypes),
               supportedFrameSourceTypes);
    return S_OK;
}

void Stream::DetachEventGenerator()
{
    const std::scoped_lock guard(lock);
    eventGenerator = nullptr;
}

LONGLONG Stream::NowMicroseconds()
{
    return MFGetSystemTime() / 10; // the clock counts 100 ns
}

} // namespace mft_core
