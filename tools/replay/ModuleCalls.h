// Makes the calls of a recorded session on a transform.
#pragma once

#include "platform/DeviceTransform.h"

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "tools/command/ExitCode.h"
#include "tools/replay/FramePixels.h"
#include "tools/replay/HeldWorkQueue.h"
#include "tools/replay/ValueWriter.h"

namespace tarn_replay
{

class EventArrival;

// What the module needs for a call is made from the recorded arguments; objects that are not told further are replaced:
// the camera's filter, the work queue, allocators, callbacks. Confined, but for GetEvent.
class ModuleCalls
{
  public:
    // `withHashes`: of the pictures that ProcessOutput gives.
    ModuleCalls(ComPtr<IMFDeviceTransform> deviceTransform, ComPtr<IUnknown> cameraFilter,
                const FramePixels &framePixels, bool withHashes);
    ~ModuleCalls();
    ModuleCalls(const ModuleCalls &) = delete;
    ModuleCalls &operator=(const ModuleCalls &) = delete;

    // The call's result; what it gave out is put into `given`. Throws HostError when the platform does not let it be
    // made, or the recording does not tell what it needs.
    HRESULT Make(const tarn_recording::Record &call, ValueWriter &given);

    // Null before the pipeline gave the transform a queue.
    HeldWorkQueue *WorkQueue() const noexcept
    {
        return workQueues.empty() ? nullptr : workQueues.back().get();
    }
    // Shuts the transform down, whatever state it is in.
    void End() noexcept;
    // Lets go of everything; the references that are left on the transform.
    ULONG Close();

  private:
    using Values = tarn_recording::ValueList;
    using Maker = HRESULT (ModuleCalls::*)(Values, ValueWriter &);
    static const std::map<std::uint16_t, Maker> &Makers();

    template <class Interface>
    ComPtr<Interface> Ask() const
    {
        ComPtr<Interface> face;
        tarn_host::ThrowIfFailed(transform.As(&face), "asking the transform for an interface");
        return face;
    }

    template <HRESULT (STDMETHODCALLTYPE IMFDeviceTransform::*method)(DWORD, DWORD, IMFMediaType **)>
    HRESULT AvailableType(Values in, ValueWriter &given);
    template <HRESULT (STDMETHODCALLTYPE IMFDeviceTransform::*method)(DWORD, IMFMediaType **)>
    HRESULT CurrentType(Values in, ValueWriter &given);
    template <HRESULT (STDMETHODCALLTYPE IMFDeviceTransform::*method)(DWORD, IMFAttributes **)>
    HRESULT StreamAttributes(Values in, ValueWriter &given);
    template <HRESULT (STDMETHODCALLTYPE IMFDeviceTransform::*method)(DWORD, DeviceStreamState *)>
    HRESULT State(Values in, ValueWriter &given);
    template <HRESULT (STDMETHODCALLTYPE IMFDeviceTransform::*method)(DWORD, IMFMediaType *, DeviceStreamState, DWORD)>
    HRESULT SetState(Values in, ValueWriter &given);
    template <HRESULT (STDMETHODCALLTYPE IMFDeviceTransform::*method)(DWORD, DWORD)>
    HRESULT Flush(Values in, ValueWriter &given);

    HRESULT InitializeTransform(Values in, ValueWriter &given);
    HRESULT GetStreamCount(Values in, ValueWriter &given);
    HRESULT GetStreamIds(Values in, ValueWriter &given);
    HRESULT GetPreferredState(Values in, ValueWriter &given);
    HRESULT ProcessEvent(Values in, ValueWriter &given);
    HRESULT ProcessInput(const tarn_recording::Record &call);
    HRESULT ProcessMessage(Values in, ValueWriter &given);
    HRESULT ProcessOutput(Values in, ValueWriter &given);
    HRESULT GetAttributes(Values in, ValueWriter &given);
    HRESULT Shutdown(Values in, ValueWriter &given);
    HRESULT GetShutdownStatus(Values in, ValueWriter &given);
    HRESULT RegisterThreads(Values in, ValueWriter &given);
    HRESULT UnregisterThreads(Values in, ValueWriter &given);
    HRESULT SetWorkQueue(Values in, ValueWriter &given);
    HRESULT GetEvent(Values in, ValueWriter &given);
    HRESULT BeginGetEvent(Values in, ValueWriter &given);
    HRESULT EndGetEvent(Values in, ValueWriter &given);
    HRESULT QueueEvent(Values in, ValueWriter &given);
    HRESULT SetDefaultAllocator(Values in, ValueWriter &given);
    HRESULT GetAllocatorUsage(Values in, ValueWriter &given);
    HRESULT KsCall(const tarn_recording::Record &call, ValueWriter &given);
    KSEVENTDATA &EventDataOf(std::uint64_t address);

    ComPtr<IMFDeviceTransform> transform;
    ComPtr<IUnknown> camera;
    const FramePixels &pixels;
    const bool hashesWanted;
    std::vector<std::unique_ptr<HeldWorkQueue>> workQueues; // the last one is in use
    const ComPtr<EventArrival> arrival;
    std::map<std::uint32_t, std::uint64_t> outputNumbers; // of the last sample, by stream
    std::map<std::uint64_t, KSEVENTDATA> eventData;       // of applications, by the address in the recording
    bool hasChangedState = false;                         // before, a frame is dropped at once
    bool consumesInput = true;                            // ProcessInput takes a reference over
};

} // namespace tarn_replay
