#include "core/InputStream.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "core/MediaEventGenerator.h"
#include "trace/Check.h"
#include "base/ThrowIfFailed.h"
#include "trace/GuidTranslator.h"
#include "media/MFAttributesParser.h"
#include "trace/StreamNames.h"

using mft_utils::ComException;
using mft_utils::ThrowIfFailed;

namespace mft_core
{

InputStream::InputStream(UINT32 streamId, MediaEventGenerator *generator, IMFTransform *sourceTransform,
                         const std::vector<GUID> &excludedSubtypes, const std::string &parentName)
    : Stream(streamId, generator, parentName + " Input Stream " + std::to_string(streamId))
{
    ThrowIfFailed<ComException>(InitMediaTypesList(sourceTransform, excludedSubtypes),
                                "Failed to init media types list");
    ThrowIfFailed<ComException>(InitFrameSourceTypes(), "Failed to init frame source types");
    ThrowIfFailed<ComException>(InitAttributes(sourceTransform), "Failed to init attributes");
}

HRESULT InputStream::InitMediaTypesList(IMFTransform *sourceTransform, const std::vector<GUID> &excludedSubtypes)
{
    for (DWORD index = 0;; ++index)
    {
        ComPtr<IMFMediaType> mt;
        const HRESULT result = sourceTransform->MFTGetOutputAvailableType(id, index, mt.GetAddressOf());
        if (result == MF_E_NO_MORE_TYPES)
        {
            return S_OK;
        }
        CHECK_HR_AS("sourceTransform->MFTGetOutputAvailableType(id, index, mt.GetAddressOf())", result);
        CHECK_POINTER(mt);
        GUID subType{};
        CHECK_HR(mt->GetGUID(MF_MT_SUBTYPE, &subType));
        const bool isExcluded = std::any_of(excludedSubtypes.begin(), excludedSubtypes.end(),
                                            [&](const GUID &excluded) { return IsEqualGUID(excluded, subType) != 0; });
        if (isExcluded)
        {
            TRACE_INFO("%s: subtype %s left out", GetName(), mft_utils::GuidTranslator::Name(subType).c_str());
            continue;
        }
        supportedMediaTypes.push_back(mt);
    }
}

HRESULT InputStream::InitAttributes(IMFTransform *sourceTransform)
{
    CHECK_HR(MFCreateAttributes(attributes.ReleaseAndGetAddressOf(), 8));
    ComPtr<IMFAttributes> pinAttributes;
    const HRESULT result = sourceTransform->GetOutputStreamAttributes(id, pinAttributes.GetAddressOf());
    if (FAILED(result) || !pinAttributes)
    {
        TRACE_INFO("%s: the pin has no attributes, hr 0x%08lX", GetName(), static_cast<unsigned long>(result));
        return S_OK;
    }
    CHECK_HR(mft_utils::MFAttributesParser::CopyStore(attributes.Get(), pinAttributes.Get(), true, {}));
    return S_OK;
}

HRESULT InputStream::Connect(std::shared_ptr<ITopologyNode> firstNode)
{
    CHECK_POINTER(firstNode);
    const std::scoped_lock guard(lock);
    nextNode.swap(firstNode); // the old chain ends outside the lock
    firstSampleSeen = false;
    return S_OK;
}

HRESULT InputStream::Disconnect()
{
    std::shared_ptr<ITopologyNode> former; // ends outside the lock
    const std::scoped_lock guard(lock);
    former.swap(nextNode);
    return S_OK;
}

HRESULT InputStream::ProcessSample(IMFSample *sample)
{
    CHECK_POINTER(sample);
    std::shared_ptr<ITopologyNode> node;
    bool isFirst = false;
    {
        const std::scoped_lock guard(lock);
        inputRateMonitor.AddSample(NowMicroseconds());
        node = nextNode;
        isFirst = !std::exchange(firstSampleSeen, true);
    }
    if (!node)
    {
        TRACE_VERBOSE("%s: sample dropped, nothing is connected", GetName());
        return S_OK;
    }
    if (isFirst)
    {
        TRACE_INFO("%s: first sample", GetName());
    }
    node->Process(sample);
    return S_OK;
}

HRESULT InputStream::Flush()
{
    std::shared_ptr<ITopologyNode> connected;
    {
        const std::scoped_lock guard(lock);
        connected = nextNode;
    }
    if (!connected)
    {
        return S_OK;
    }
    CHECK_HR_AS("nextNode->Propagate(PropagateOrder::CallLambdaAndPropagate, [&](ITopologyNode *node) {return "
                "node->Flush(); })",
                connected->Propagate(PropagateOrder::CallLambdaAndPropagate,
                                     [&](ITopologyNode *node) { return node->Flush(); }));
    return S_OK;
}

HRESULT InputStream::GetPreferredState(DeviceStreamState *theState, IMFMediaType **preferredMt) const
{
    CHECK_POINTER(theState);
    CHECK_POINTER(preferredMt);
    *preferredMt = nullptr;
    const std::scoped_lock guard(lock);
    *theState = preferredState;
    return preferredMediaType.CopyTo(preferredMt);
}

HRESULT InputStream::SetPreferredState(DeviceStreamState theState, IMFMediaType *mediaType)
{
    const std::scoped_lock guard(lock);
    if (mediaType != nullptr && !IsSupported(mediaType))
    {
        TRACE_ERROR("%s: preferred media type is not supported", GetName());
    }
    TRACE_INFO("%s: preferred state %s", GetName(), mft_utils::StreamStateName(theState));
    // Also when it cannot be announced: an earlier event that the pipeline has yet to answer leads it here.
    preferredState = theState;
    preferredMediaType = mediaType;
    ComPtr<IMFMediaEvent> event;
    CHECK_HR_AS("MFCreateMediaEvent(METransformInputStreamStateChanged, __uuidof(struct GUID_NULL), ((HRESULT)0L), 0, "
                "&event)",
                MFCreateMediaEvent(METransformInputStreamStateChanged, GUID{}, S_OK, nullptr, &event));
    CHECK_HR(event->SetUINT32(MF_EVENT_MFT_INPUT_STREAM_ID, GetID()));
    CHECK_POINTER(eventGenerator);
    CHECK_HR_AS("eventGenerator->QueueEvent(event.Get())", eventGenerator->Raise(event.Get()));
    return S_OK;
}

} // namespace mft_core
