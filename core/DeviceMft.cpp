#include "core/DeviceMft.h"

#include <algorithm>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "base/Checked.h"
#include "ks/PassthroughKsHandlers.h"
#include "recorder/CameraEventRecorder.h"
#include "recorder/FilterAttributesDerObject.h"
#include "trace/Guard.h"
#include "base/WideString.h"

using namespace mft_der;
using std::make_shared;
using user_space_frameworks::MakeCom;

namespace mft_core
{

namespace
{
constexpr ULONG kMsXuKnownControl = 1;

// A camera without the unit works without it: calls to the unit then give E_NOINTERFACE.
void FindExtensionUnit(ExtensionUnitKsControl &unit, IMFTransform *sourceTransform, IKsControl *filterKsControl,
                       ULONG knownControl)
{
    if (const HRESULT found = unit.Init(sourceTransform, filterKsControl, knownControl); FAILED(found))
    {
        TRACE_INFO("%s: not found, hr 0x%08lX", unit.GetName(), static_cast<unsigned long>(found));
    }
}
} // namespace

DeviceMft::DeviceMft(const std::string &objectName, const GUID &extensionUnitSet, ULONG extensionUnitControl,
                     const wchar_t *recordingFolder)
    : Object(objectName), deviceXuSetId(extensionUnitSet), deviceXuKnownControl(extensionUnitControl)
{
    recorder.Begin(recordingFolder, objectName);
    if (recorder.IsEnabled())
    {
        RegisterKsControlsObserver(recorder.ApplicationTraffic());
    }
}

DeviceMft::~DeviceMft()
{
    // A work item may still hold the end of a chain; it must not reach this object's event queue any more.
    for (const auto &stream : inputStreams)
    {
        stream->DetachEventGenerator();
    }
    for (const auto &stream : outputStreams)
    {
        stream->DetachEventGenerator();
    }
}

IMFDeviceTransform &DeviceMft::DeviceFace() noexcept
{
    return *this;
}

HRESULT DeviceMft::Initialize(IMFAttributes *filterAttributes, const std::function<HRESULT()> &body,
                              std::source_location location) noexcept
{
    if (initializingThread == GetCurrentThreadId()) // the base's part of it
    {
        return mft_utils::EntryPoint(GetName(), body, location);
    }
    const auto given = [&](RecordBuilder &values) { FilterAttributesDerObject(filterAttributes).AddTo(values); };
    const auto all = [&]() -> HRESULT {
        DWORD nobody = 0;
        const bool isFirst = initializingThread.compare_exchange_strong(nobody, GetCurrentThreadId());
        const HRESULT result = mft_utils::Guarded(body, location);
        if (isFirst)
        {
            initializingThread = 0;
        }
        return result;
    };
    return Recorded(TARN_CALL_INITIALIZE_TRANSFORM, given, Values(), all, location);
}

HRESULT DeviceMft::InitializeTransform(IMFAttributes *pAttributes)
{
    return Initialize(pAttributes, [&]() -> HRESULT {
        IMFAttributes *const filterAttributes = pAttributes;
        if (filterAttributes != nullptr && initializationBegun.exchange(true))
        {
            TRACE_ERROR("%s: initialised already", GetName());
            return MF_E_ALREADY_INITIALIZED;
        }
        CHECK_HR(ExtractFilterInfo(filterAttributes));
        CHECK_HR(InitializeMembers());
        CHECK_HR(CreateAttributes());
        CHECK_HR(RegisterKsControlHandlres());
        CHECK_HR(CreateInputStreams());
        if (recorder.IsEnabled()) // after every other observer
        {
            const std::scoped_lock guard(stateChangeLock);
            autoUpdateEventListener.RegisterObserver(CameraEventRecorder::End());
        }
        OnTransformInitialized();
        return S_OK;
    });
}

HRESULT DeviceMft::ExtractFilterInfo(IMFAttributes *filterAttributes)
{
    if (filterAttributes == nullptr)
    {
        TRACE_ERROR("%s: no filter attributes", GetName());
        return E_INVALIDARG;
    }
    ComPtr<IUnknown> filterUnk;
    CHECK_HR_AS("filterAttributes->GetUnknown(MF_DEVICEMFT_CONNECTED_FILTER_KSCONTROL, __uuidof(**(&filterUnk)), "
                "IID_PPV_ARGS_Helper(&filterUnk))",
                filterAttributes->GetUnknown(MF_DEVICEMFT_CONNECTED_FILTER_KSCONTROL, IID_PPV_ARGS(&filterUnk)));
    CHECK_HR(filterUnk.As(&sourceTransform));
    ComPtr<IKsControl> ksControl;
    CHECK_HR(sourceTransform.As(&ksControl));
    filterKsControl = ksControl;
    CHECK_POINTER(filterKsControl);
    if (recorder.IsEnabled())
    {
        recorder.Camera(sourceTransform.Get());
        filterKsControl = recorder.BeforeCamera(filterKsControl);
    }
    return S_OK;
}

HRESULT DeviceMft::InitializeMembers()
{
    deviceXuKsControl = MakeCom<ExtensionUnitKsControl>(deviceXuSetId, GetNameCopy());
    CHECK_POINTER(deviceXuKsControl);
    if (!IsEqualGUID(deviceXuSetId, GUID{}))
    {
        FindExtensionUnit(*deviceXuKsControl.Get(), sourceTransform.Get(), filterKsControl.Get(), deviceXuKnownControl);
    }
    msXuKsControl = MakeCom<ExtensionUnitKsControl>(MS_CAMERA_CONTROL_XU, GetNameCopy() + " MSXU ");
    CHECK_POINTER(msXuKsControl);
    FindExtensionUnit(*msXuKsControl.Get(), sourceTransform.Get(), filterKsControl.Get(), kMsXuKnownControl);
    const std::scoped_lock guard(stateChangeLock);
    CHECK_HR_AS("autoUpdateEventListener->Init(filterKsControl)",
                autoUpdateEventListener.Init(filterKsControl.Get(), GetNameCopy()));
    if (recorder.IsEnabled()) // before every other observer
    {
        autoUpdateEventListener.RegisterObserver(
            recorder.CameraEvents(KSEVENTSETID_VIDCAPTOSTI, KSEVENT_VIDCAP_AUTO_UPDATE));
    }
    return S_OK;
}

HRESULT DeviceMft::UninitializeMembers()
{
    TRACE_INFO("%s: members are released with the object", GetName());
    return S_OK;
}

HRESULT DeviceMft::CreateAttributes()
{
    const std::wstring urlString = mft_utils::Widen(GetName());
    attributes.Reset();
    CHECK_HR(MFCreateAttributes(&attributes, 4));
    CHECK_HR(attributes->SetUINT32(MF_TRANSFORM_ASYNC, 1));
    CHECK_HR(attributes->SetUINT32(MFT_SUPPORT_DYNAMIC_FORMAT_CHANGE, 1));
    CHECK_HR(attributes->SetUINT32(MF_SA_D3D_AWARE, 0));
    CHECK_HR(attributes->SetString(MFT_ENUM_HARDWARE_URL_Attribute, urlString.c_str()));
    return S_OK;
}

HRESULT DeviceMft::GetAttributes(IMFAttributes **pAttributes)
{
    const auto taken = StoreAt(TARN_VALUE_ATTRIBUTES, pAttributes);
    return Recorded(TARN_CALL_GET_ATTRIBUTES, OutPointer(0, pAttributes), taken, [&]() -> HRESULT {
        CHECK_POINTER(pAttributes);
        *pAttributes = nullptr;
        if (!attributes)
        {
            return MF_E_NOT_INITIALIZED;
        }
        return attributes.CopyTo(pAttributes);
    });
}

HRESULT DeviceMft::RegisterKsControlHandlres()
{
    CHECK_HR(RegisterKsPropertyDefaultHandler(make_shared<PassthroughKsPropsHandler>(filterKsControl)));
    CHECK_HR(RegisterKsEventDefaultHandler(make_shared<PassthroughKsEventsHandler>(filterKsControl)));
    CHECK_HR(RegisterKsMethodDefaultHandler(make_shared<PassthroughKsMethodsHandler>(filterKsControl)));
    return S_OK;
}

HRESULT DeviceMft::OnTransformInitialized()
{
    TRACE_INFO("%s: %zu input streams", GetName(), inputStreams.size());
    return S_OK;
}

HRESULT DeviceMft::CreateInputStreams()
{
    std::vector<DWORD> inputStreamIds;
    CHECK_HR(GetFilterStreamIds(inputStreamIds));
    const std::vector<GUID> excludedSubtypes = GetExcludedSubtypes();
    for (const DWORD streamId : inputStreamIds)
    {
        inputStreams.Append(
            make_shared<InputStream>(streamId, this, sourceTransform.Get(), excludedSubtypes, GetNameCopy()));
    }
    return S_OK;
}

HRESULT DeviceMft::GetFilterStreamIds(std::vector<DWORD> &ids)
{
    ids.clear();
    DWORD filterInputStreamsCnt = 0;
    DWORD filterOutputStreamsCnt = 0;
    CHECK_HR(sourceTransform->MFTGetStreamCount(&filterInputStreamsCnt, &filterOutputStreamsCnt));
    std::vector<DWORD> inputIds(filterInputStreamsCnt);
    std::vector<DWORD> outputIds(filterOutputStreamsCnt);
    const HRESULT hr = sourceTransform->MFTGetStreamIDs(filterInputStreamsCnt, inputIds.data(), filterOutputStreamsCnt,
                                                        outputIds.data());
    if (hr == E_NOTIMPL)
    {
        TRACE_INFO("%s: the filter numbers its streams from 0", GetName());
        for (DWORD i = 0; i < filterOutputStreamsCnt; ++i)
        {
            outputIds[i] = i;
        }
    }
    else
    {
        CHECK_HR(hr);
    }
    ids = std::move(outputIds);
    return S_OK;
}

std::vector<GUID> DeviceMft::GetExcludedSubtypes()
{
    return {};
}

CameraBlob DeviceMft::CreateIntrinsics(const MediaTypeList &, UINT32)
{
    return {};
}

CameraBlob DeviceMft::CreateExtrinsics(UINT32)
{
    return {};
}

HRESULT DeviceMft::CreateOutputStream(const std::shared_ptr<InputStream> &inputStream)
{
    OutputStreamConfiguration configuration;
    CHECK_HR(InitOutputStreamConfiguration(configuration, inputStream));
    AppendOutputStream(make_shared<OutputStream>(static_cast<UINT32>(outputStreams.size()), this, configuration));
    return S_OK;
}

HRESULT DeviceMft::InitOutputStreamConfiguration(OutputStreamConfiguration &configuration,
                                                 const std::shared_ptr<InputStream> &inputStream)
{
    configuration.parentName = GetNameCopy();
    CHECK_HR(inputStream->GetSupportedMediaTypes(*configuration.mtList.get()));
    CHECK_HR(inputStream->GetAttributes(configuration.attributes.GetAddressOf()));
    configuration.intrinsics = CreateIntrinsics(*configuration.mtList, inputStream->GetID());
    configuration.extrinsics = CreateExtrinsics(inputStream->GetID());
    return S_OK;
}

void DeviceMft::AppendOutputStream(std::shared_ptr<OutputStream> stream)
{
    if (stream->GetID() != outputStreams.size())
    {
        throw std::logic_error("stream id mismatch");
    }
    outputStreams.Append(std::move(stream));
}

bool DeviceMft::Allocates(const OutputStream & /*outputStream*/) const
{
    return false;
}

HRESULT DeviceMft::FindOutlet(DWORD outputStreamId, Outlet &outlet) const
{
    if (IsShutdown())
    {
        return MF_E_SHUTDOWN;
    }
    if (outputStreamId < outputStreams.size())
    {
        const std::size_t input = std::min<std::size_t>(outputStreamId, inputStreams.size() - 1);
        outlet.stream = outputStreams[outputStreamId];
        outlet.allocates = Allocates(*outlet.stream);
        outlet.inputStreamId = mft_utils::At(inputStreams, input)->GetID();
    }
    return S_OK;
}

HRESULT DeviceMft::Shutdown()
{
    return Recorded(TARN_CALL_SHUTDOWN, Values(), Values(), [&]() -> HRESULT {
        const std::scoped_lock guard(stateChangeLock);
        recorder.ChangeBegins();
        CHECK_HR(UninitializeMembers());
        for (const auto &stream : outputStreams)
        {
            stream->SetState(DeviceStreamState_Stop); // frames that nobody fetched go back to the camera now
        }
        autoUpdateEventListener.End();
        CHECK_HR(MediaEventGenerator::Shutdown());
        return S_OK;
    });
}

HRESULT DeviceMft::GetShutdownStatus(MFSHUTDOWN_STATUS *pStatus)
{
    const auto taken = NumberAt(TARN_VALUE_STATUS, pStatus);
    return Recorded(TARN_CALL_GET_SHUTDOWN_STATUS, OutPointer(0, pStatus), taken, [&]() -> HRESULT {
        CHECK_POINTER_AS("status", pStatus, E_POINTER);
        *pStatus = IsShutdown() ? MFSHUTDOWN_COMPLETED : MFSHUTDOWN_INITIATED;
        return S_OK;
    });
}

} // namespace mft_core
