// One transform with running outputs, and a frame of the camera that is given to it over and over.
#pragma once

#include "platform/DeviceTransform.h"

#include <string>
#include <vector>

#include "sim/SimulatedCamera.h"

namespace tarn_bench
{

// Ends the program where the platform or the module fails.
void Require(HRESULT result, const char *what);

struct Run
{
    std::string module = "tarn_dmft.dll";
    bool allocator = false;
    bool latency = false;
    int rounds = 5;
};

struct Scenario
{
    const char *name;
    UINT32 width = 0;
    UINT32 height = 0;
    bool depth = false;
    bool infrared = false;
    bool map = false;
    bool faceLogin = false;
};

class FrameSession : public tarn_sim::IFrameSink
{
  public:
    FrameSession(const Run &run, const Scenario &played);
    ~FrameSession() override;
    FrameSession(const FrameSession &) = delete;
    FrameSession &operator=(const FrameSession &) = delete;

    void OnFrame(DWORD streamId, IMFSample *sample) override;

    // One frame in and every output's sample out; the samples are held until those of the next frame have come.
    void Frame();

    const BYTE *FrameData(DWORD &length) const;

  private:
    template <class Payload>
    void SetProperty(const GUID &set, ULONG id, Payload payload);
    void Start();
    void StartOutput(DWORD output, UINT32 width, UINT32 height);
    void OfferAllocator(DWORD output);
    void FollowPin(IMFMediaEvent &event);
    ComPtr<IMFSample> NextInput();
    void WaitForOutput();

    const Scenario scenario;
    const bool hasAllocator;
    const ComPtr<IMFDeviceTransform> transform;
    ComPtr<tarn_sim::SimulatedCamera> camera;
    ComPtr<IMFMediaEventGenerator> events;
    DWORD workQueue = 0;
    ComPtr<IMFSample> frame;
    std::vector<ComPtr<IMFSample>> held;
    LONGLONG number = 0;
};

} // namespace tarn_bench
