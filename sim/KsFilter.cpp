#include "sim/KsFilter.h"

#include <algorithm>
#include <cstring>

#include "sim/CameraIdentifiers.h"
#include "sim/KsReply.h"

namespace tarn_sim
{

namespace
{
const HRESULT kSetNotFound = HRESULT_FROM_WIN32(ERROR_SET_NOT_FOUND);
const HRESULT kNotFound = HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
const HRESULT kBufferTooSmall = HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER);

constexpr std::size_t kTrafficKept = 1024;
constexpr ULONG kReadable = KSPROPERTY_TYPE_GET | KSPROPERTY_TYPE_BASICSUPPORT;
constexpr ULONG kWritable = kReadable | KSPROPERTY_TYPE_SET;

// Copies identifier and node id; the caller's buffers may change under our hands.
template <class Identifier>
HRESULT ReadIdentifier(const Identifier *source, ULONG length, KSIDENTIFIER &identifier, std::optional<ULONG> &node)
{
    if (source == nullptr)
    {
        return E_POINTER;
    }
    if (length < sizeof(KSIDENTIFIER))
    {
        return kBufferTooSmall;
    }
    std::memcpy(&identifier, source, sizeof(identifier));
    if ((identifier.Flags & KSPROPERTY_TYPE_TOPOLOGY) != 0)
    {
        if (length < sizeof(KSP_NODE))
        {
            return kBufferTooSmall;
        }
        ULONG nodeId = 0;
        std::memcpy(&nodeId, reinterpret_cast<const BYTE *>(source) + sizeof(KSIDENTIFIER), sizeof(nodeId));
        node = nodeId;
    }
    return S_OK;
}
} // namespace

KsFilter::KsFilter(const CameraConfiguration &configuration, std::shared_ptr<CameraControls> cameraControls,
                   std::shared_ptr<FaultInjector> faultInjector)
    : nodes(configuration.nodes), extensionUnitNode(configuration.extensionUnitNode),
      extensionUnitSet(configuration.extensionUnitSet), calibrationTable(configuration.calibrationTable),
      privacyControl(configuration.privacyControl), controls(std::move(cameraControls)),
      faults(std::move(faultInjector)), firmware(configuration.deviceInfo, controls, faults)
{
}

HRESULT KsFilter::Property(const KSPROPERTY *property, ULONG length, void *data, ULONG dataLength, ULONG *bytesReturned)
{
    ULONG returned = 0;
    Request request{{}, std::nullopt, data, dataLength};
    HRESULT result = faults->OnKsCall();
    if (SUCCEEDED(result))
    {
        result = RunProperty(property, length, request, returned);
    }
    if (bytesReturned != nullptr)
    {
        *bytesReturned = returned;
    }
    Record(KsCall::Kind::Property, request, length, result);
    return result;
}

HRESULT KsFilter::RunProperty(const KSPROPERTY *property, ULONG length, Request &request, ULONG &returned)
{
    const HRESULT result = ReadIdentifier(property, length, request.identifier, request.node);
    if (FAILED(result))
    {
        return result;
    }
    if (request.node)
    {
        return ExtensionUnitProperty(request, returned);
    }
    if (privacyControl && IsEqualGUID(request.identifier.Set, PROPSETID_VIDCAP_CAMERACONTROL))
    {
        return PrivacyProperty(request, returned);
    }
    return kSetNotFound;
}

HRESULT KsFilter::ExtensionUnitProperty(const Request &request, ULONG &returned)
{
    if (*request.node >= nodes.size())
    {
        return E_INVALIDARG;
    }
    if (!extensionUnitNode || *request.node != *extensionUnitNode ||
        !IsEqualGUID(request.identifier.Set, extensionUnitSet))
    {
        return kSetNotFound;
    }
    if ((request.identifier.Flags & ~ULONG{KSPROPERTY_TYPE_TOPOLOGY}) == KSPROPERTY_TYPE_SETSUPPORT)
    {
        return S_OK; // asks for the set only, whatever the id
    }
    ByteControl control;
    if (controls->Find(request.identifier.Id, control))
    {
        return ByteProperty(request, control, returned);
    }
    if (request.identifier.Id == kControlCommand && IsEqualGUID(extensionUnitSet, KSPROPERTYSETID_TARN_DEPTH_CONTROL))
    {
        return CommandProperty(request, returned);
    }
    if (request.identifier.Id == kControlCalibration && !calibrationTable.empty())
    {
        return CalibrationProperty(request, returned);
    }
    return kNotFound;
}

HRESULT KsFilter::ByteProperty(const Request &request, const ByteControl &control, ULONG &returned)
{
    const bool writable = control.access == Access::ReadWrite;
    const ULONG accessFlags = (writable ? kWritable : kReadable) | KSPROPERTY_TYPE_DEFAULTVALUES;
    const ByteRange range{control.minimum, control.maximum, control.step};
    switch (request.identifier.Flags & ~ULONG{KSPROPERTY_TYPE_TOPOLOGY})
    {
    case KSPROPERTY_TYPE_GET:
        return WriteReply(&control.value, sizeof(control.value), request.data, request.dataLength, returned);
    case KSPROPERTY_TYPE_BASICSUPPORT:
        return WriteBasicSupport(accessFlags, &range, request.data, request.dataLength, returned);
    case KSPROPERTY_TYPE_DEFAULTVALUES:
        return WriteDefaultValue(accessFlags, control.defaultValue, request.data, request.dataLength, returned);
    case KSPROPERTY_TYPE_SET:
        break;
    default:
        return kNotFound;
    }

    if (!writable)
    {
        return kNotFound;
    }
    if (request.dataLength < sizeof(control.value))
    {
        return kBufferTooSmall;
    }
    if (request.data == nullptr)
    {
        return E_POINTER;
    }
    const std::uint8_t value = *static_cast<const std::uint8_t *>(request.data);
    if (request.dataLength > sizeof(value) || value < control.minimum || value > control.maximum ||
        (value - control.minimum) % control.step != 0)
    {
        return E_INVALIDARG;
    }
    controls->Store(control.id, value);
    return S_OK;
}

HRESULT KsFilter::CommandProperty(const Request &request, ULONG &returned)
{
    switch (request.identifier.Flags & ~ULONG{KSPROPERTY_TYPE_TOPOLOGY})
    {
    case KSPROPERTY_TYPE_SET:
        if (request.dataLength != Firmware::kTransferBytes)
        {
            return request.dataLength < Firmware::kTransferBytes ? kBufferTooSmall : E_INVALIDARG;
        }
        if (request.data == nullptr)
        {
            return E_POINTER;
        }
        firmware.Write({static_cast<const std::uint8_t *>(request.data), request.dataLength});
        return S_OK;
    case KSPROPERTY_TYPE_GET: {
        if (request.dataLength == 0)
        {
            returned = Firmware::kTransferBytes;
            return HRESULT_FROM_WIN32(ERROR_MORE_DATA);
        }
        if (request.data == nullptr)
        {
            return E_POINTER;
        }
        const auto answer = firmware.Answer();
        returned = std::min(static_cast<ULONG>(answer.size()), request.dataLength);
        std::copy_n(answer.begin(), returned, static_cast<std::uint8_t *>(request.data));
        return S_OK;
    }
    case KSPROPERTY_TYPE_BASICSUPPORT:
        return WriteBasicSupport(kWritable, nullptr, request.data, request.dataLength, returned);
    default:
        return kNotFound;
    }
}

HRESULT KsFilter::CalibrationProperty(const Request &request, ULONG &returned) const
{
    switch (request.identifier.Flags & ~ULONG{KSPROPERTY_TYPE_TOPOLOGY})
    {
    case KSPROPERTY_TYPE_GET:
        return WriteReply(calibrationTable.data(), static_cast<ULONG>(calibrationTable.size()), request.data,
                          request.dataLength, returned);
    case KSPROPERTY_TYPE_BASICSUPPORT:
        return WriteBasicSupport(kReadable, nullptr, request.data, request.dataLength, returned);
    default:
        return kNotFound;
    }
}

HRESULT KsFilter::PrivacyProperty(const Request &request, ULONG &returned)
{
    if (request.identifier.Flags == KSPROPERTY_TYPE_SETSUPPORT)
    {
        return S_OK;
    }
    if (request.identifier.Id != KSPROPERTY_CAMERACONTROL_PRIVACY)
    {
        return kNotFound;
    }
    KSPROPERTY_CAMERACONTROL_S value{};
    switch (request.identifier.Flags)
    {
    case KSPROPERTY_TYPE_GET:
        value.Property = request.identifier;
        value.Value = controls->privacy ? 1 : 0;
        value.Flags = KSPROPERTY_CAMERACONTROL_FLAGS_MANUAL;
        value.Capabilities = KSPROPERTY_CAMERACONTROL_FLAGS_MANUAL;
        return WriteReply(&value, sizeof(value), request.data, request.dataLength, returned);
    case KSPROPERTY_TYPE_SET:
        if (request.dataLength < sizeof(value))
        {
            return kBufferTooSmall;
        }
        if (request.data == nullptr)
        {
            return E_POINTER;
        }
        std::memcpy(&value, request.data, sizeof(value));
        if (value.Value != 0 && value.Value != 1)
        {
            return E_INVALIDARG;
        }
        controls->privacy = value.Value == 1;
        return S_OK;
    case KSPROPERTY_TYPE_BASICSUPPORT:
        return WriteBasicSupport(kWritable, nullptr, request.data, request.dataLength, returned);
    default:
        return kNotFound;
    }
}

HRESULT KsFilter::Method(const KSMETHOD *method, ULONG length, void *data, ULONG dataLength, ULONG *bytesReturned)
{
    Request request{{}, std::nullopt, data, dataLength};
    HRESULT result = faults->OnKsCall();
    if (SUCCEEDED(result))
    {
        result = ReadIdentifier(method, length, request.identifier, request.node);
    }
    if (SUCCEEDED(result))
    {
        result = kSetNotFound; // the camera has no methods
    }
    if (bytesReturned != nullptr)
    {
        *bytesReturned = 0;
    }
    Record(KsCall::Kind::Method, request, length, result);
    return result;
}

HRESULT KsFilter::Event(const KSEVENT *event, ULONG length, void *data, ULONG dataLength, ULONG *bytesReturned)
{
    Request request{{}, std::nullopt, data, dataLength};
    HRESULT result = faults->OnKsCall();
    if (SUCCEEDED(result) && event != nullptr)
    {
        result = ReadIdentifier(event, length, request.identifier, request.node);
    }
    if (SUCCEEDED(result))
    {
        result = RunEvent(event, length, request);
    }
    if (bytesReturned != nullptr)
    {
        *bytesReturned = 0;
    }
    Record(KsCall::Kind::Event, request, length, result);
    return result;
}

HRESULT KsFilter::RunEvent(const KSEVENT *event, ULONG length, const Request &request)
{
    if (event == nullptr) // disables what the data block enabled
    {
        if (length != 0 || request.dataLength < sizeof(KSEVENTDATA))
        {
            return E_INVALIDARG;
        }
        return request.data == nullptr ? E_POINTER : events.Disable(request.data);
    }
    if (request.node || !IsEqualGUID(request.identifier.Set, KSEVENTSETID_VIDCAPTOSTI))
    {
        return kSetNotFound;
    }
    if (request.identifier.Flags == KSEVENT_TYPE_SETSUPPORT)
    {
        return S_OK;
    }
    if (request.identifier.Id != KSEVENT_VIDCAP_AUTO_UPDATE)
    {
        return kNotFound;
    }
    switch (request.identifier.Flags)
    {
    case KSEVENT_TYPE_BASICSUPPORT:
        return S_OK;
    case KSEVENT_TYPE_ENABLE:
    case KSEVENT_TYPE_ENABLE | KSEVENT_TYPE_ONESHOT:
        if (request.dataLength < sizeof(KSEVENTDATA))
        {
            return kBufferTooSmall;
        }
        if (request.data == nullptr)
        {
            return E_POINTER;
        }
        return events.Enable(static_cast<const KSEVENTDATA *>(request.data),
                             (request.identifier.Flags & KSEVENT_TYPE_ONESHOT) != 0);
    default:
        return E_INVALIDARG;
    }
}

void KsFilter::Record(KsCall::Kind kind, const Request &request, ULONG length, HRESULT result)
{
    KsCall call;
    call.kind = kind;
    call.identifier = request.identifier;
    call.identifierLength = length;
    call.dataLength = request.dataLength;
    call.result = result;
    const bool isSet = kind == KsCall::Kind::Property &&
                       (request.identifier.Flags & ~ULONG{KSPROPERTY_TYPE_TOPOLOGY}) == KSPROPERTY_TYPE_SET;
    if (isSet && SUCCEEDED(result) && request.data != nullptr)
    {
        const auto *const bytes = static_cast<const std::uint8_t *>(request.data);
        call.data.assign(bytes, bytes + std::min(request.dataLength, Firmware::kTransferBytes));
    }
    const std::scoped_lock guard(trafficLock);
    traffic.push_back(std::move(call));
    if (traffic.size() > kTrafficKept)
    {
        traffic.pop_front();
    }
}

std::uint32_t KsFilter::SignalAutoUpdate()
{
    return events.SignalAll();
}

std::uint32_t KsFilter::EventListenerCount() const
{
    return events.Count();
}

FirmwareState KsFilter::FirmwareNow() const
{
    return firmware.State();
}

std::vector<KsCall> KsFilter::Traffic() const
{
    const std::scoped_lock guard(trafficLock);
    return {traffic.begin(), traffic.end()};
}

void KsFilter::ClearTraffic()
{
    const std::scoped_lock guard(trafficLock);
    traffic.clear();
}

} // namespace tarn_sim
