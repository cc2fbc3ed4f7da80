// The pipeline's allocators, both kinds, over the platform's own.
#include "platform/SampleAllocator.h"

#include "base/ComObject.h"
#include "device/TarnColorDeviceMft.h"
#include "tests/device/DepthServer.h"
#include "tests/device/SceneComparison.h"

using namespace tarn_test;

namespace
{

ComPtr<IMFVideoSampleAllocatorEx> PlatformAllocator()
{
    ComPtr<IMFVideoSampleAllocatorEx> allocator;
    EXPECT_HR(S_OK, MFCreateVideoSampleAllocatorEx(IID_PPV_ARGS(&allocator)));
    return allocator;
}

// The other kind, which this platform does not make; it can refuse every type.
class CaptureAllocator : public user_space_frameworks::ComObject<IMFVideoCaptureSampleAllocator>
{
  public:
    explicit CaptureAllocator(bool refusesTypes = false) : refuses(refusesTypes) {}

    HRESULT STDMETHODCALLTYPE SetDirectXManager(IUnknown *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE UninitializeSampleAllocator() override { return platform->UninitializeSampleAllocator(); }
    HRESULT STDMETHODCALLTYPE InitializeSampleAllocator(DWORD, IMFMediaType *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE AllocateSample(IMFSample **sample) override { return platform->AllocateSample(sample); }
    HRESULT STDMETHODCALLTYPE InitializeCaptureSampleAllocator(DWORD, DWORD, DWORD, DWORD minimum, IMFAttributes *,
                                                               IMFMediaType *type) override
    {
        return refuses ? MF_E_INVALIDMEDIATYPE : platform->InitializeSampleAllocatorEx(minimum, 50, nullptr, type);
    }

  private:
    const bool refuses;
    const ComPtr<IMFVideoSampleAllocatorEx> platform = PlatformAllocator();
};

bool IsAllocated(const ComPtr<IMFSample> &sample)
{
    ComPtr<IMFMediaBuffer> buffer;
    ComPtr<IMF2DBuffer> plane;
    EXPECT_HR(S_OK, sample->GetBufferByIndex(0, &buffer));
    return SUCCEEDED(buffer.As(&plane));
}

struct AllocatingServer : DepthServer
{
    ComPtr<IMFSampleAllocatorControl> Control()
    {
        ComPtr<IMFSampleAllocatorControl> control;
        EXPECT_HR(S_OK, transform.As(&control));
        return control;
    }
    HRESULT Offer(DWORD output, IUnknown *allocator) { return Control()->SetDefaultAllocator(output, allocator); }
    HRESULT Usage(DWORD output, MFSampleAllocatorUsage &usage)
    {
        return Control()->GetAllocatorUsage(output, nullptr, &usage);
    }
};

TEST(SampleAllocatorTest, SamplesOfBothKindsAreFilledRowByRow)
{
    AllocatingServer server;
    const auto captureKind = user_space_frameworks::MakeCom<CaptureAllocator>();
    ASSERT_HR(S_OK, server.Offer(kInfrared, captureKind.Get()));
    ASSERT_HR(S_OK, server.Offer(kDepth, PlatformAllocator().Get()));
    ASSERT_HR(S_OK, server.Run(kInfrared, 360, 360, 60)); // rows are padded
    for (const auto &sample : server.StepAndCollect(kInfrared, 30))
    {
        EXPECT_TRUE(IsAllocated(sample));
        EXPECT_TRUE(ShowsScene(kInfrared, sample, 360, 360));
    }
    ASSERT_HR(S_OK, server.Run(kDepth, 320, 240, 60)); // both
    server.Step(1);
    const auto depth = server.WaitForSamples(kDepth, 1).at(0);
    EXPECT_TRUE(IsAllocated(depth));
    EXPECT_TRUE(ShowsScene(kDepth, depth, 320, 240));
    EXPECT_TRUE(IsAllocated(server.WaitForSamples(kInfrared, 1).at(0)));

    ASSERT_HR(S_OK, server.Run(kInfrared, 640, 480, 60)); // another type
    server.Step(1);
    const auto changed = server.WaitForSamples(kInfrared, 1).at(0);
    EXPECT_TRUE(IsAllocated(changed));
    EXPECT_TRUE(ShowsScene(kInfrared, changed, 640, 480));
    server.camera->Controls().privacy = true;
    server.Step(1);
    const auto blank = BytesOf(server.WaitForSamples(kInfrared, 1).at(0));
    EXPECT_EQ(std::vector<BYTE>(std::size_t{640} * 480), blank);
}

TEST(SampleAllocatorTest, AFrameComesInOwnMemoryWhereTheAllocatorCannotServeIt)
{
    AllocatingServer server;
    ASSERT_HR(S_OK, server.Offer(kInfrared, user_space_frameworks::MakeCom<CaptureAllocator>(true).Get()));
    ASSERT_HR(S_OK, server.Run(kInfrared, 360, 360, 60));
    const auto refused = server.StepAndCollect(kInfrared, 1).at(0);
    EXPECT_FALSE(IsAllocated(refused));
    EXPECT_TRUE(ShowsScene(kInfrared, refused, 360, 360));

    ASSERT_HR(S_OK, server.Offer(kInfrared, PlatformAllocator().Get())); // while the output runs
    std::vector<ComPtr<IMFSample>> held;
    for (int i = 0; i < 55; ++i) // an application that lets go of nothing
    {
        held.push_back(server.StepAndCollect(kInfrared, 1).at(0));
    }
    EXPECT_TRUE(IsAllocated(held.front()));
    EXPECT_FALSE(IsAllocated(held.back()));
    EXPECT_TRUE(ShowsScene(kInfrared, held.front(), 360, 360));
    EXPECT_TRUE(ShowsScene(kInfrared, held.back(), 360, 360));
}

TEST(SampleAllocatorTest, StopShutdownAndAnotherAllocatorLetGoOfTheOldOne)
{
    const auto first = PlatformAllocator();
    const auto second = PlatformAllocator();
    const auto third = user_space_frameworks::MakeCom<CaptureAllocator>();
    ComPtr<IMFSample> kept;
    {
        AllocatingServer server;
        ASSERT_HR(S_OK, server.Offer(kInfrared, first.Get()));
        ASSERT_HR(S_OK, server.Offer(kInfrared, second.Get()));
        EXPECT_REFS(first, 1);
        EXPECT_HR(E_NOINTERFACE, server.Offer(kInfrared, server.events.Get()));
        EXPECT_HR(E_INVALIDARG, server.Offer(7, first.Get()));
        ASSERT_HR(S_OK, server.Run(kInfrared, 360, 360, 60));
        kept = server.StepAndCollect(kInfrared, 1).at(0);
        EXPECT_TRUE(IsAllocated(kept));
        ASSERT_HR(S_OK, server.Stop(kInfrared));
        ASSERT_HR(S_OK, server.Run(kInfrared, 360, 360, 60));
        EXPECT_FALSE(IsAllocated(server.StepAndCollect(kInfrared, 1).at(0)));
        ASSERT_HR(S_OK, server.Offer(kInfrared, third.Get()));
        EXPECT_TRUE(IsAllocated(server.StepAndCollect(kInfrared, 1).at(0)));
    }
    EXPECT_REFS(third, 1);
    EXPECT_TRUE(ShowsScene(kInfrared, kept, 360, 360));
    kept.Reset();
    EXPECT_TRUE(WaitUntil([&] { return ReferenceCount(second) == 1; }));
}

TEST(SampleAllocatorTest, EachOutputTellsWhoseSamplesComeOut)
{
    AllocatingServer depth;
    MFSampleAllocatorUsage usage = MFSampleAllocatorUsage_UsesCustomAllocator;
    EXPECT_HR(S_OK, depth.Usage(kDepth, usage));
    EXPECT_EQ(MFSampleAllocatorUsage_UsesProvidedAllocator, usage);
    EXPECT_HR(S_OK, depth.Usage(kInfrared, usage));
    EXPECT_EQ(MFSampleAllocatorUsage_UsesProvidedAllocator, usage);
    EXPECT_HR(MF_E_INVALIDSTREAMNUMBER, depth.Usage(2, usage));

    auto configuration = tarn_sim::CameraConfiguration::TarnColor();
    configuration.pins.front().streamId = 5;
    TestFrameServer color(user_space_frameworks::MakeCom<mft_core::TarnColorDeviceMft>(),
                          user_space_frameworks::MakeCom<tarn_sim::SimulatedCamera>(configuration));
    ComPtr<IMFSampleAllocatorControl> control;
    ASSERT_HR(S_OK, color.transform.As(&control));
    DWORD input = 0;
    EXPECT_HR(S_OK, control->GetAllocatorUsage(0, &input, &usage));
    EXPECT_EQ(MFSampleAllocatorUsage_DoesNotAllocate, usage);
    EXPECT_EQ(5u, input);
    EXPECT_HR(E_POINTER, control->GetAllocatorUsage(0, nullptr, &usage));
    ASSERT_HR(S_OK, color.ShutDown());
    EXPECT_HR(MF_E_SHUTDOWN, control->GetAllocatorUsage(0, &input, &usage));
    EXPECT_HR(MF_E_SHUTDOWN, control->SetDefaultAllocator(0, PlatformAllocator().Get()));
}

} // namespace
