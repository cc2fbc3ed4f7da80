// The simulated camera filter: what a device transform is given in place of the driver, with controls for host and
// tests.
#pragma once

#include "platform/DeviceTransform.h"
#include "platform/KsTopologyInfo.h"
#include "platform/MediaFoundation.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

#include "sim/CallCounters.h"
#include "sim/CameraConfiguration.h"
#include "sim/FaultPlan.h"
#include "sim/FirmwareState.h"
#include "sim/FrameSink.h"
#include "sim/KsCall.h"
#include "base/ComObject.h"

namespace tarn_sim
{

class CameraControls;
class CapturePump;
class FaultInjector;
class KsFilter;

// Made with MakeCom<SimulatedCamera>(configuration). Thread-safe. The last Release stops the capture thread.
class SimulatedCamera final : public user_space_frameworks::ComObject<IMFTransform, IKsControl, IKsTopologyInfo>
{
  public:
    // Throws std::runtime_error or std::bad_alloc.
    explicit SimulatedCamera(CameraConfiguration cameraConfiguration);

    // What the pipeline does on the driver after the transform's SetInputStreamState. Run needs a type of the pin
    // (MF_E_INVALIDTYPE otherwise), or null for the pin's current one. Run with another type restarts the pin.
    // When it returns from Stop, Pause or a restart no frame of the earlier state is on its way (it waits for a sink
    // call in progress, except on the capture thread itself). MF_E_INVALIDSTREAMNUMBER for an unknown pin.
    HRESULT SetPinState(DWORD streamId, DeviceStreamState state, IMFMediaType *type);
    DeviceStreamState GetPinState(DWORD streamId) const;

    // The sink is borrowed until another one (or null) is set; that call waits like SetPinState.
    void SetFrameSink(IFrameSink *sink);

    // Pacing::Stepped: delivers so many frames and waits for it. HRESULT_FROM_WIN32(WAIT_TIMEOUT) when it takes longer,
    // E_UNEXPECTED when the pin does not run or paces itself.
    HRESULT Step(DWORD streamId, std::uint32_t frames, std::chrono::milliseconds limit = std::chrono::seconds(10));
    // Waits until the pin has delivered so many frames since it was made; HRESULT_FROM_WIN32(WAIT_TIMEOUT) otherwise.
    HRESULT WaitForFrames(DWORD streamId, std::uint64_t total, std::chrono::milliseconds limit);
    // Waits until nobody holds a frame of any pin; HRESULT_FROM_WIN32(WAIT_TIMEOUT) otherwise.
    HRESULT WaitForReturnOfFrames(std::chrono::milliseconds limit);
    // Stops every pin and joins the capture thread (from that thread: lets it end by itself). Pins can run again.
    void StopAll();

    PinStatistics Statistics(DWORD streamId) const;

    // Signals the auto-update event to every listener; returns their number.
    std::uint32_t SignalAutoUpdate();
    std::uint32_t EventListenerCount() const;
    void SetPrivacy(bool on);
    bool Privacy() const;
    void SetConfidenceSuppressed(bool suppressed); // flag in the frames' metadata
    void SetErrorCode(std::uint8_t code);          // what the extension unit's error control answers
    // Current value of a one-byte extension-unit control; 0 for an unknown one.
    std::uint8_t ControlValue(ULONG controlId) const;
    FirmwareState FirmwareNow() const;

    void SetFaultPlan(const FaultPlan &plan); // the numbers of calls start at 1 again
    std::uint64_t Calls(Method method) const;
    std::vector<KsCall> KsTraffic() const; // the last 1024 calls, oldest first
    void ClearKsTraffic();

    // IMFTransform, as far as a driver's filter answers it; the other methods are E_NOTIMPL.
    HRESULT STDMETHODCALLTYPE MFTGetStreamLimits(DWORD *inMin, DWORD *inMax, DWORD *outMin, DWORD *outMax) override;
    HRESULT STDMETHODCALLTYPE MFTGetStreamCount(DWORD *inputs, DWORD *outputs) override;
    HRESULT STDMETHODCALLTYPE MFTGetStreamIDs(DWORD inSize, DWORD *inIds, DWORD outSize, DWORD *outIds) override;
    HRESULT STDMETHODCALLTYPE MFTGetInputStreamInfo(DWORD id, MFT_INPUT_STREAM_INFO *info) override;
    HRESULT STDMETHODCALLTYPE MFTGetOutputStreamInfo(DWORD id, MFT_OUTPUT_STREAM_INFO *info) override;
    HRESULT STDMETHODCALLTYPE GetAttributes(IMFAttributes **attributes) override;
    HRESULT STDMETHODCALLTYPE GetInputStreamAttributes(DWORD id, IMFAttributes **attributes) override;
    HRESULT STDMETHODCALLTYPE GetOutputStreamAttributes(DWORD id, IMFAttributes **attributes) override;
    HRESULT STDMETHODCALLTYPE MFTDeleteInputStream(DWORD id) override;
    HRESULT STDMETHODCALLTYPE MFTAddInputStreams(DWORD streams, DWORD *ids) override;
    HRESULT STDMETHODCALLTYPE MFTGetInputAvailableType(DWORD id, DWORD index, IMFMediaType **type) override;
    HRESULT STDMETHODCALLTYPE MFTGetOutputAvailableType(DWORD id, DWORD index, IMFMediaType **type) override;
    HRESULT STDMETHODCALLTYPE MFTSetInputType(DWORD id, IMFMediaType *type, DWORD flags) override;
    HRESULT STDMETHODCALLTYPE MFTSetOutputType(DWORD id, IMFMediaType *type, DWORD flags) override;
    HRESULT STDMETHODCALLTYPE MFTGetInputCurrentType(DWORD id, IMFMediaType **type) override;
    HRESULT STDMETHODCALLTYPE MFTGetOutputCurrentType(DWORD id, IMFMediaType **type) override;
    HRESULT STDMETHODCALLTYPE MFTGetInputStatus(DWORD id, DWORD *flags) override;
    HRESULT STDMETHODCALLTYPE MFTGetOutputStatus(DWORD *flags) override;
    HRESULT STDMETHODCALLTYPE MFTSetOutputBounds(LONGLONG lower, LONGLONG upper) override;
    HRESULT STDMETHODCALLTYPE MFTProcessEvent(DWORD id, IMFMediaEvent *event) override;
    HRESULT STDMETHODCALLTYPE MFTProcessMessage(MFT_MESSAGE_TYPE message, ULONG_PTR parameter) override;
    HRESULT STDMETHODCALLTYPE MFTProcessInput(DWORD id, IMFSample *sample, DWORD flags) override;
    HRESULT STDMETHODCALLTYPE MFTProcessOutput(DWORD flags, DWORD count, MFT_OUTPUT_DATA_BUFFER *samples,
                                               DWORD *status) override;

    // IKsControl
    HRESULT STDMETHODCALLTYPE KsProperty(PKSPROPERTY property, ULONG length, void *data, ULONG dataLength,
                                         ULONG *bytesReturned) override;
    HRESULT STDMETHODCALLTYPE KsMethod(PKSMETHOD method, ULONG length, void *data, ULONG dataLength,
                                       ULONG *bytesReturned) override;
    HRESULT STDMETHODCALLTYPE KsEvent(PKSEVENT event, ULONG length, void *data, ULONG dataLength,
                                      ULONG *bytesReturned) override;

    // IKsTopologyInfo
    HRESULT STDMETHODCALLTYPE get_NumCategories(DWORD *count) override;
    HRESULT STDMETHODCALLTYPE get_Category(DWORD index, GUID *category) override;
    HRESULT STDMETHODCALLTYPE get_NumConnections(DWORD *count) override;
    HRESULT STDMETHODCALLTYPE get_ConnectionInfo(DWORD index, KSTOPOLOGY_CONNECTION *connection) override;
    HRESULT STDMETHODCALLTYPE get_NodeName(DWORD node, WCHAR *name, DWORD size, DWORD *length) override;
    HRESULT STDMETHODCALLTYPE get_NumNodes(DWORD *count) override;
    HRESULT STDMETHODCALLTYPE get_NodeType(DWORD node, GUID *type) override;
    HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD node, REFIID iid, void **object) override;

  private:
    ~SimulatedCamera() override;
    HRESULT CountTransformCall(Method method);
    HRESULT CountTopologyCall(Method method);
    HRESULT OtherTransformCall();
    HRESULT OtherTopologyCall();
    const PinConfiguration *FindPin(DWORD streamId) const;

    const CameraConfiguration configuration;
    CallCounters counters;
    std::shared_ptr<FaultInjector> faults;
    std::shared_ptr<CameraControls> controls;
    std::unique_ptr<KsFilter> ksFilter;
    ComPtr<IMFAttributes> attributes;
    std::vector<ComPtr<IMFAttributes>> pinAttributes; // in the order of the pins
    std::shared_ptr<CapturePump> pump;
};

} // namespace tarn_sim
