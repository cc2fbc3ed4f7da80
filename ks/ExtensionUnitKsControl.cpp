#include "ks/ExtensionUnitKsControl.h"

#include "platform/KsTopologyInfo.h"

#include <array>
#include <cstddef>
#include <string>
#include <utility>

#include "ks/KsRequest.h"
#include "trace/Guard.h"
#include "trace/GuidTranslator.h"

namespace mft_core
{

namespace
{

// Replies to range and default requests: description, members header, then one byte per value.
constexpr std::size_t kFirstValueOffset = sizeof(KSPROPERTY_DESCRIPTION) + sizeof(KSPROPERTY_MEMBERSHEADER);
constexpr std::size_t kRangeReplySize = kFirstValueOffset + 3;
constexpr std::size_t kDefaultReplySize = kFirstValueOffset + 2;
static_assert(kRangeReplySize == 59 && kDefaultReplySize == 58);

} // namespace

ExtensionUnitKsControl::ExtensionUnitKsControl(const GUID &set, std::string objectName)
    : Object(std::move(objectName)), setGuid(set)
{
}

HRESULT ExtensionUnitKsControl::Init(IMFTransform *sourceTransform, IKsControl *ksControl, ULONG knownSupportedId)
{
    CHECK_POINTER(sourceTransform);
    CHECK_POINTER(ksControl);
    const HRESULT found = FindDeviceSpecificNode(sourceTransform, ksControl, knownSupportedId);
    if (found == E_NOINTERFACE) // not every camera has it
    {
        TRACE_INFO("FindDeviceSpecificNode(sourceTransform, ksControl, knownSupportedId) failed, hr 0x%08lX",
                   static_cast<unsigned long>(found));
        return found;
    }
    CHECK_HR_AS("FindDeviceSpecificNode(sourceTransform, ksControl, knownSupportedId)", found);
    filterKsControl = ksControl;
    return S_OK;
}

HRESULT ExtensionUnitKsControl::FindDeviceSpecificNode(IMFTransform *sourceTransform, IKsControl *ksControl,
                                                       ULONG knownSupportedId)
{
    ComPtr<IKsTopologyInfo> topologyInfo;
    CHECK_HR_AS("sourceTransform.As(&topologyInfo)", sourceTransform->QueryInterface(IID_PPV_ARGS(&topologyInfo)));
    DWORD numNodes = 0;
    CHECK_HR(topologyInfo->get_NumNodes(&numNodes));

    for (DWORD index = 0; index < numNodes; ++index)
    {
        GUID nodeType{};
        if (FAILED(topologyInfo->get_NodeType(index, &nodeType)))
        {
            continue;
        }
        if (mft_utils::TraceEnabled(mft_utils::TraceLevel::Information))
        {
            TRACE_INFO("%s: node %lu is %s", GetName(), index, mft_utils::GuidTranslator::Name(nodeType).c_str());
        }
        if (!IsEqualGUID(nodeType, KSNODETYPE_DEV_SPECIFIC))
        {
            continue;
        }
        KSP_NODE request{};
        request.Property.Set = setGuid;
        request.Property.Id = knownSupportedId;
        request.Property.Flags = KSPROPERTY_TYPE_SETSUPPORT | KSPROPERTY_TYPE_TOPOLOGY;
        request.NodeId = index;
        ULONG bytesReturned = 0;
        if (ksControl->KsProperty(&request.Property, sizeof(request), nullptr, 0, &bytesReturned) == S_OK)
        {
            nodeId = index;
            TRACE_INFO("%s: the extension unit is node %lu", GetName(), index);
            return S_OK;
        }
    }
    TRACE_INFO("%s: none of %lu nodes supports the extension unit's set", GetName(), numNodes);
    return E_NOINTERFACE;
}

HRESULT ExtensionUnitKsControl::Forward(Call method, const KsCallArguments &call)
{
    CHECK_POINTER_AS("filterKsControl", filterKsControl, E_NOINTERFACE);
    KSP_NODE nodeRequest{};
    KSIDENTIFIER *sent = nullptr;
    if (call.request != nullptr)
    {
        nodeRequest.Property = ReadBlock<KSIDENTIFIER>(call.request);
        nodeRequest.Property.Flags |= KSPROPERTY_TYPE_TOPOLOGY;
        nodeRequest.NodeId = nodeId;
        sent = &nodeRequest.Property;
    }
    const ULONG sentLength = sent != nullptr ? static_cast<ULONG>(sizeof(nodeRequest)) : 0;
    const HRESULT result =
        (filterKsControl.Get()->*method)(sent, sentLength, call.data, call.dataLength, call.bytesReturned);
    if (FAILED(result) && !IsLengthAnswer(result, call.dataLength))
    {
        TRACE_ERROR("%s: hr 0x%08lX, data length %lu, bytes returned %s", GetName(), static_cast<unsigned long>(result),
                    call.dataLength,
                    call.bytesReturned != nullptr ? std::to_string(*call.bytesReturned).c_str() : "null");
    }
    return result;
}

HRESULT ExtensionUnitKsControl::KsProperty(PKSPROPERTY Property, ULONG PropertyLength, LPVOID PropertyData,
                                           ULONG DataLength, ULONG *BytesReturned) noexcept
{
    return mft_utils::Guarded([&]() -> HRESULT {
        CHECK_POINTER(Property);
        return Forward(&IKsControl::KsProperty, {Property, PropertyLength, PropertyData, DataLength, BytesReturned});
    });
}

HRESULT ExtensionUnitKsControl::KsMethod(PKSMETHOD Method, ULONG MethodLength, LPVOID MethodData, ULONG DataLength,
                                         ULONG *BytesReturned) noexcept
{
    return mft_utils::Guarded([&]() -> HRESULT {
        CHECK_POINTER(Method);
        return Forward(&IKsControl::KsMethod, {Method, MethodLength, MethodData, DataLength, BytesReturned});
    });
}

HRESULT ExtensionUnitKsControl::KsEvent(PKSEVENT Event, ULONG EventLength, LPVOID EventData, ULONG DataLength,
                                        ULONG *BytesReturned) noexcept
{
    return mft_utils::Guarded([&] {
        return Forward(&IKsControl::KsEvent, {Event, EventLength, EventData, DataLength, BytesReturned});
    });
}

HRESULT ExtensionUnitKsControl::SendKsProperty(ULONG id, LPVOID data, ULONG dataLength, ULONG flags,
                                               ULONG *bytesReturned)
{
    KSPROPERTY property{};
    property.Set = setGuid;
    property.Id = id;
    property.Flags = flags;
    return KsProperty(&property, sizeof(property), data, dataLength, bytesReturned);
}

HRESULT ExtensionUnitKsControl::QueryKsPropertyInfo(ULONG id, BYTE *minimum, BYTE *maximum, BYTE *step,
                                                    BYTE *defaultValue)
{
    CHECK_POINTER(minimum);
    CHECK_POINTER(maximum);
    CHECK_POINTER(step);
    CHECK_POINTER(defaultValue);
    *minimum = *maximum = *step = *defaultValue = 0;

    constexpr const char *kRequestText =
        "KsProperty(&property, sizeof(KSPROPERTY), propertyRange.data(), requestedSize, &bytesReturned)";
    ULONG bytesReturned = 0;
    std::array<BYTE, kRangeReplySize> range{}; // a short reply leaves zeros
    CHECK_HR_AS(kRequestText,
                SendKsProperty(id, range.data(), kRangeReplySize, KSPROPERTY_TYPE_BASICSUPPORT, &bytesReturned));
    std::array<BYTE, kDefaultReplySize> defaults{};
    CHECK_HR_AS(kRequestText,
                SendKsProperty(id, defaults.data(), kDefaultReplySize, KSPROPERTY_TYPE_DEFAULTVALUES, &bytesReturned));

    *minimum = range[kFirstValueOffset];
    *maximum = range[kFirstValueOffset + 1];
    *step = range[kFirstValueOffset + 2];
    *defaultValue = defaults[kFirstValueOffset];
    return S_OK;
}

} // namespace mft_core
