#include "recorder/DeviceEventRecorder.h"

#include "ks/KsControlsProxy.h"
#include "recorder/CameraDescription.h"
#include "recorder/CameraEventRecorder.h"
#include "recorder/KsTrafficRecorder.h"

namespace mft_der
{

void DeviceEventRecorder::Begin(const std::wstring &folder, const std::string &objectName) noexcept
{
    mft_utils::Guarded([&] {
        if (auto share = RecordingShare::In(folder))
        {
            transform = std::make_shared<TransformRecording>(std::move(share), objectName);
            TRACE_INFO("%s: recorded", objectName.c_str());
        }
        return S_OK;
    });
}

void DeviceEventRecorder::Picture(const SampleIdentity &identity, IMFSample *sample) const noexcept
{
    if (IsEnabled())
    {
        SampleRecorder::WritePicture(*transform, identity, sample, CallUnderWay::OfThisThread());
    }
}

void DeviceEventRecorder::Camera(IMFTransform *filter) const noexcept
{
    RecordCamera(*transform, filter);
}

std::shared_ptr<mft_core::IKsControlsObserver> DeviceEventRecorder::ApplicationTraffic() const
{
    return std::make_shared<KsTrafficRecorder>(transform, KsAddressee::Transform);
}

ComPtr<IKsControl> DeviceEventRecorder::BeforeCamera(const ComPtr<IKsControl> &filterControl) const
{
    const auto proxy = user_space_frameworks::MakeCom<mft_core::KsControlsProxy>(filterControl);
    proxy->RegisterKsControlsObserver(std::make_shared<KsTrafficRecorder>(transform, KsAddressee::Camera));
    return proxy;
}

std::shared_ptr<mft_core::KsEventsObserver> DeviceEventRecorder::CameraEvents(const GUID &set, ULONG id) const
{
    return std::make_shared<CameraEventRecorder>(transform, set, id);
}

} // namespace mft_der
