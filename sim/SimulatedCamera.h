// The simulated camera filter: what a device transform is given in place of the driver, with controls for host and
// tests.
#pragma once

#include "platform/MediaFoundation.h"

#include <memory>
#include <vector>

#include "base/ComObject.h"
#include "sim/CameraConfiguration.h"
#include "sim/CameraControls.h"
#include "sim/CapturePump.h"
#include "sim/KsFilter.h"
#include "sim/RefusingFilter.h"

namespace tarn_sim
{

// Made with MakeCom<SimulatedCamera>(configuration). Its parts live as long as it does. Thread-safe. The last Release
// stops the capture thread.
class SimulatedCamera final : public RefusingFilter
{
  public:
    // Throws std::runtime_error or std::bad_alloc.
    explicit SimulatedCamera(CameraConfiguration cameraConfiguration);

    // Pins, their frames and the capture thread.
    CapturePump &Pins() const noexcept
    {
        return *pump;
    }
    // KS calls, events and firmware.
    KsFilter &Ks() const noexcept
    {
        return *ksFilter;
    }
    // What the camera's controls are set to.
    CameraControls &Controls() const noexcept
    {
        return *controls;
    }

    // IMFTransform, as far as a driver's filter answers it
    HRESULT STDMETHODCALLTYPE MFTGetStreamCount(DWORD *inputs, DWORD *outputs) override;
    HRESULT STDMETHODCALLTYPE MFTGetStreamIDs(DWORD inSize, DWORD *inIds, DWORD outSize, DWORD *outIds) override;
    HRESULT STDMETHODCALLTYPE MFTGetOutputStreamInfo(DWORD id, MFT_OUTPUT_STREAM_INFO *info) override;
    HRESULT STDMETHODCALLTYPE GetAttributes(IMFAttributes **store) override;
    HRESULT STDMETHODCALLTYPE GetOutputStreamAttributes(DWORD id, IMFAttributes **store) override;
    HRESULT STDMETHODCALLTYPE MFTGetOutputAvailableType(DWORD id, DWORD index, IMFMediaType **type) override;
    HRESULT STDMETHODCALLTYPE MFTGetOutputCurrentType(DWORD id, IMFMediaType **type) override;

    // IKsControl
    HRESULT STDMETHODCALLTYPE KsProperty(PKSPROPERTY property, ULONG length, void *data, ULONG dataLength,
                                         ULONG *bytesReturned) override;
    HRESULT STDMETHODCALLTYPE KsMethod(PKSMETHOD method, ULONG length, void *data, ULONG dataLength,
                                       ULONG *bytesReturned) override;
    HRESULT STDMETHODCALLTYPE KsEvent(PKSEVENT event, ULONG length, void *data, ULONG dataLength,
                                      ULONG *bytesReturned) override;

    // IKsTopologyInfo
    HRESULT STDMETHODCALLTYPE get_NumNodes(DWORD *count) override;
    HRESULT STDMETHODCALLTYPE get_NodeType(DWORD node, GUID *type) override;

  private:
    ~SimulatedCamera() override;

    // Calls answer(pin) for the pin with this id, which fills *result. E_POINTER where there is nothing to fill,
    // MF_E_INVALIDSTREAMNUMBER for an unknown pin; *result is then empty.
    template <class T, class Answer>
    HRESULT PinCall(Method method, DWORD id, T *result, const Answer &answer);

    const CameraConfiguration configuration;
    const std::shared_ptr<CameraControls> controls;
    const std::unique_ptr<KsFilter> ksFilter;
    const ComPtr<IMFAttributes> attributes;
    std::vector<ComPtr<IMFAttributes>> pinAttributes; // in the order of the pins
    std::shared_ptr<CapturePump> pump;
};

} // namespace tarn_sim
