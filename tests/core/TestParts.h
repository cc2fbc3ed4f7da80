// Small parts that the core tests put together.
#pragma once

#include "core/ITopologyNode.h"
#include "core/MediaEventGenerator.h"
#include "tests/support/Samples.h"

namespace tarn_test
{

// An event generator that stands alone; lives on the test's stack.
class TestEventGenerator : public mft_core::MediaEventGenerator
{
  public:
    TestEventGenerator() : Object("Test event generator") {}
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void **) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    void ShutDown() { MediaEventGenerator::Shutdown(); }

    // Takes the queued events away and counts those of the type.
    int Count(MediaEventType wanted)
    {
        int found = 0;
        ComPtr<IMFMediaEvent> event;
        while (GetEvent(MF_EVENT_FLAG_NO_WAIT, event.ReleaseAndGetAddressOf()) == S_OK)
        {
            MediaEventType type = MEUnknown;
            event->GetType(&type);
            found += type == wanted ? 1 : 0;
        }
        return found;
    }
};

// Ends a chain and remembers the times of the samples that reach it.
class RecordingNode : public mft_core::ITopologyNode
{
  public:
    explicit RecordingNode(std::shared_ptr<ITopologyNode> successor = nullptr, const char *nodeName = "Recording node")
        : ITopologyNode(std::move(successor), nodeName)
    {
    }
    HRESULT Flush() override
    {
        ++flushes;
        return flushResult;
    }
    HRESULT ProcessSample(IMFSample *sample) override
    {
        LONGLONG time = 0;
        sample->GetSampleTime(&time);
        const std::scoped_lock guard(lock);
        times.push_back(time);
        return S_OK;
    }
    std::vector<LONGLONG> Times()
    {
        const std::scoped_lock guard(lock);
        return times;
    }

    std::atomic<int> flushes{0};
    HRESULT flushResult = S_OK;

  private:
    std::mutex lock;
    std::vector<LONGLONG> times;
};

} // namespace tarn_test
