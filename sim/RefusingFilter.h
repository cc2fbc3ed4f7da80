// What every COM method of the simulated camera has in common: it is counted, fails when the fault plan says so, and is
// refused unless the camera answers it.
#pragma once

#include "platform/KsTopologyInfo.h"
#include "platform/MediaFoundation.h"

#include <memory>

#include "base/ComObject.h"
#include "sim/CallCounters.h"
#include "sim/FaultInjector.h"

namespace tarn_sim
{

// A camera filter none of whose IMFTransform and IKsTopologyInfo methods is implemented (E_NOTIMPL). Thread-safe.
class RefusingFilter : public user_space_frameworks::ComObject<IMFTransform, IKsControl, IKsTopologyInfo>
{
  public:
    FaultInjector &Faults() const noexcept
    {
        return *faults;
    }
    std::uint64_t Calls(Method method) const noexcept
    {
        return counters.Calls(method);
    }

    // IMFTransform
    HRESULT STDMETHODCALLTYPE MFTGetStreamLimits(DWORD *inMin, DWORD *inMax, DWORD *outMin, DWORD *outMax) override;
    HRESULT STDMETHODCALLTYPE MFTGetInputStreamInfo(DWORD id, MFT_INPUT_STREAM_INFO *info) override;
    HRESULT STDMETHODCALLTYPE GetInputStreamAttributes(DWORD id, IMFAttributes **attributes) override;
    HRESULT STDMETHODCALLTYPE MFTDeleteInputStream(DWORD id) override;
    HRESULT STDMETHODCALLTYPE MFTAddInputStreams(DWORD streams, DWORD *ids) override;
    HRESULT STDMETHODCALLTYPE MFTGetInputAvailableType(DWORD id, DWORD index, IMFMediaType **type) override;
    HRESULT STDMETHODCALLTYPE MFTSetInputType(DWORD id, IMFMediaType *type, DWORD flags) override;
    HRESULT STDMETHODCALLTYPE MFTSetOutputType(DWORD id, IMFMediaType *type, DWORD flags) override;
    HRESULT STDMETHODCALLTYPE MFTGetInputCurrentType(DWORD id, IMFMediaType **type) override;
    HRESULT STDMETHODCALLTYPE MFTGetInputStatus(DWORD id, DWORD *flags) override;
    HRESULT STDMETHODCALLTYPE MFTGetOutputStatus(DWORD *flags) override;
    HRESULT STDMETHODCALLTYPE MFTSetOutputBounds(LONGLONG lower, LONGLONG upper) override;
    HRESULT STDMETHODCALLTYPE MFTProcessEvent(DWORD id, IMFMediaEvent *event) override;
    HRESULT STDMETHODCALLTYPE MFTProcessMessage(MFT_MESSAGE_TYPE message, ULONG_PTR parameter) override;
    HRESULT STDMETHODCALLTYPE MFTProcessInput(DWORD id, IMFSample *sample, DWORD flags) override;
    HRESULT STDMETHODCALLTYPE MFTProcessOutput(DWORD flags, DWORD count, MFT_OUTPUT_DATA_BUFFER *samples,
                                               DWORD *status) override;

    // IKsTopologyInfo
    HRESULT STDMETHODCALLTYPE get_NumCategories(DWORD *count) override;
    HRESULT STDMETHODCALLTYPE get_Category(DWORD index, GUID *category) override;
    HRESULT STDMETHODCALLTYPE get_NumConnections(DWORD *count) override;
    HRESULT STDMETHODCALLTYPE get_ConnectionInfo(DWORD index, KSTOPOLOGY_CONNECTION *connection) override;
    HRESULT STDMETHODCALLTYPE get_NodeName(DWORD node, WCHAR *name, DWORD size, DWORD *length) override;
    HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD node, REFIID iid, void **object) override;

  protected:
    // Counts the call; the failure that the plan has for it, or the answer.
    template <class Answer>
    HRESULT TransformCall(Method method, const Answer &answer)
    {
        counters.Count(method);
        const HRESULT fault = faults->OnTransformCall();
        return FAILED(fault) ? fault : answer();
    }
    template <class Answer>
    HRESULT TopologyCall(Method method, const Answer &answer)
    {
        counters.Count(method);
        const HRESULT fault = faults->OnTopologyCall();
        return FAILED(fault) ? fault : answer();
    }

    CallCounters counters;
    const std::shared_ptr<FaultInjector> faults = std::make_shared<FaultInjector>();

  private:
    HRESULT RefuseTransformCall();
    HRESULT RefuseTopologyCall();
};

} // namespace tarn_sim
