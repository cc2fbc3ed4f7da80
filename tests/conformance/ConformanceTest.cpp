// The registered module, activated by class id and driven as the frame server drives it: everything that a camera
// delivers arrives, in order, with the values of the scene.
#include "base/ComObject.h"
#include "base/UniqueHandle.h"
#include "tarn/tarn_formats.h"
#include "tests/device/SceneComparison.h"
#include "tests/module/LoadedDll.h"
#include "tests/support/TestFrameServer.h"

using namespace tarn_sim;
using namespace tarn_test;

namespace
{

class RegisteredModule : public testing::Test
{
  protected:
    void SetUp() override { ASSERT_HR(S_OK, dll.RegisterServer()); }
    void TearDown() override
    {
        EXPECT_TRUE(WaitUntil([&] { return dll.CanUnloadNow() == S_OK; })); // callbacks leave a moment later
        EXPECT_HR(S_OK, dll.UnregisterServer());
    }

    static ComPtr<IMFDeviceTransform> Activate(const CLSID &clsid)
    {
        ComPtr<IMFDeviceTransform> transform;
        EXPECT_HR(S_OK, CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&transform)));
        return transform;
    }

    LoadedDll dll;
};

class ConformanceTest : public RegisteredModule
{
  protected:
    static ComPtr<SimulatedCamera> FastCamera()
    {
        auto configuration = CameraConfiguration::GenericDepth16(64, 48, 30);
        configuration.pacing = Pacing::AsFastAsTaken;
        configuration.guardPages = true; // an access past a frame's end ends the program
        return user_space_frameworks::MakeCom<SimulatedCamera>(configuration);
    }
};

TEST_F(ConformanceTest, FramesArriveInOrderAlsoWhenAnotherTransformIsShutDown)
{
    TestFrameServer staying(Activate(kColorClass), FastCamera());
    LONGLONG previous = -1;
    const auto takeFrames = [&](int count) {
        for (int received = 0; received < count && !HasFailure(); ++received)
        {
            ComPtr<IMFSample> sample;
            ASSERT_TRUE(WaitUntil([&] { return (sample = staying.Collect(0)) != nullptr; }));
            ASSERT_LT(previous, TimeOf(sample));
            previous = TimeOf(sample);
        }
    };
    {
        TestFrameServer going(Activate(kColorClass), FastCamera());
        ASSERT_HR(S_OK, going.Start(0));
        ASSERT_HR(S_OK, staying.Start(0));
        EXPECT_HR(S_OK, going.camera->Pins().WaitForFrames(0, 5, std::chrono::seconds(10)));
        takeFrames(500);
    }
    takeFrames(500);
    ASSERT_HR(S_OK, staying.Stop(0));
    EXPECT_EQ(0u, staying.camera->Pins().Statistics(0).dropped);
}

TEST_F(ConformanceTest, PropertyCallsFromManyThreadsGoThroughWhileFramesFlow)
{
    TestFrameServer server(Activate(kColorClass), FastCamera());
    ComPtr<IMFRealTimeClientEx> realTime;
    ASSERT_HR(S_OK, server.transform.As(&realTime));
    DWORD taskIndex = 0;
    EXPECT_HR(S_OK, realTime->RegisterThreadsEx(&taskIndex, L"Capture", 0));
    EXPECT_HR(S_OK, realTime->UnregisterThreads());
    realTime.Reset();
    ASSERT_HR(S_OK, server.Start(0));
    ComPtr<IKsControl> control;
    ASSERT_HR(S_OK, server.transform.As(&control));
    {
        const Repeating consumer([&] { server.Collect(0); });
        OnThreads(8, [&](int) {
            for (int call = 0; call < 200; ++call)
            {
                KSPROPERTY property{
                    {{PROPSETID_VIDCAP_CAMERACONTROL, KSPROPERTY_CAMERACONTROL_PRIVACY, KSPROPERTY_TYPE_GET}}};
                KSPROPERTY_CAMERACONTROL_S value{};
                ULONG returned = 0;
                control->KsProperty(&property, sizeof(property), &value, sizeof(value), &returned);
                control->KsProperty(&property, sizeof(property), nullptr, 0, nullptr);
                EXPECT_HR(E_POINTER, control->KsProperty(nullptr, 0, nullptr, 0, nullptr));
            }
        });
    }
    EXPECT_LE(1600u, server.camera->Calls(Method::KsProperty));
}

constexpr UINT32 kWidth = 640;
constexpr UINT32 kHeight = 480;

// Keeps the camera from running far ahead of who looks at the pictures.
class PatientServer : public DepthFrameServer
{
  public:
    using DepthFrameServer::DepthFrameServer;
    ~PatientServer() override { isOver = true; }
    void OnFrame(DWORD streamId, IMFSample *sample) override
    {
        while (!isOver && delivered >= seen + 16)
        {
            std::this_thread::yield();
        }
        DepthFrameServer::OnFrame(streamId, sample);
        ++delivered;
    }

    std::atomic<std::uint64_t> seen{0};
    std::atomic<std::uint64_t> delivered{0};

  private:
    std::atomic<bool> isOver{false};
};

ComPtr<IMFSample> WaitForSample(DepthFrameServer &server, DWORD output)
{
    ComPtr<IMFSample> sample;
    WaitUntil([&] {
        sample = server.Collect(output);
        return sample != nullptr;
    });
    return sample;
}

class DepthConformanceTest : public RegisteredModule
{
  protected:
    static ComPtr<SimulatedCamera> Camera(Pacing pacing, std::uint64_t frames)
    {
        auto configuration = CameraConfiguration::TarnDepth();
        configuration.pacing = pacing;
        configuration.frameLimit = frames;
        configuration.buffersPerPin = 160;
        configuration.guardPages = true; // an access past a frame's end ends the program
        return user_space_frameworks::MakeCom<SimulatedCamera>(configuration);
    }

    // Of a full frame of the camera at 60 frames a second: its number, all pixels, the frame's record and the stream's.
    static std::uint64_t CheckSample(DepthFrameServer &server, DWORD output, const ComPtr<IMFSample> &sample,
                                     const GUID &subtype)
    {
        const auto details = tarn_host::SampleDetails::Of(*sample.Get());
        const TARN_FRAME_METADATA record = details.record.value_or(TARN_FRAME_METADATA{});
        EXPECT_EQ(TARN_FRAME_METADATA_MAGIC, record.magic);
        EXPECT_EQ(kWidth, record.width);
        EXPECT_EQ(kHeight, record.height);
        EXPECT_EQ(subtype.Data1, record.formatFourCc);
        EXPECT_EQ(details.time100ns, record.timestamp100ns);
        EXPECT_EQ(166666u, record.frameInterval100ns);
        EXPECT_TRUE(ShowsScene(output, sample, kWidth, kHeight)) << "frame " << record.frameCounter;

        ComPtr<IMFAttributes> stream;
        EXPECT_HR(S_OK, server.transform->GetOutputStreamAttributes(output, &stream));
        // One model: the stream's for this size, since nothing was cut or scaled.
        const Bytes models = BlobOf(stream, MFStreamExtension_PinholeCameraIntrinsics);
        EXPECT_EQ(1u, details.intrinsics.size());
        const auto *const model = reinterpret_cast<const BYTE *>(details.intrinsics.data());
        EXPECT_TRUE(model != nullptr &&
                    std::search(models.begin(), models.end(), model,
                                model + sizeof(MFPinholeCameraIntrinsic_IntrinsicModel)) != models.end());
        EXPECT_EQ(BlobOf(stream, MFStreamExtension_CameraExtrinsics),
                  BlobOf(sample, MFSampleExtension_CameraExtrinsics));
        return record.frameCounter;
    }
};

TEST_F(DepthConformanceTest, EveryFrameReachesBothOutputsInOrderAsItWasRendered)
{
    constexpr std::uint64_t kFrames = 600;
    PatientServer server(Activate(kDepthClass), Camera(Pacing::AsFastAsTaken, kFrames));
    ASSERT_HR(S_OK, server.initialized);
    for (const DWORD output : {kDepth, kInfrared}) // the pin starts when both have
    {
        const auto type = server.FindType(output, {kWidth, kHeight, 60});
        ASSERT_HR(S_OK, server.transform->SetOutputStreamState(output, type.Get(), DeviceStreamState_Run, 0));
    }
    server.Pump();
    ASSERT_EQ("INZI 640x480@60", server.Pin());
    for (std::uint64_t number = 0; number < kFrames && !HasFailure(); ++number)
    {
        for (const DWORD output : {kDepth, kInfrared})
        {
            const auto sample = WaitForSample(server, output);
            ASSERT_NE(nullptr, sample.Get()) << "frame " << number << " on output " << output;
            ASSERT_EQ(number, CheckSample(server, output, sample, CUSTOM_GUID_KELP_ZI));
        }
        ++server.seen;
    }
    EXPECT_EQ(nullptr, server.Collect(kDepth));
    EXPECT_EQ(nullptr, server.Collect(kInfrared));
}

TEST_F(DepthConformanceTest, InRealTimeNothingIsLostThatTheCameraDelivers)
{
    DepthFrameServer server(Activate(kDepthClass), Camera(Pacing::RealTime, 0));
    ASSERT_HR(S_OK, server.SetConfidenceMap(true));
    ASSERT_HR(S_OK, server.Run(kDepth, kWidth, kHeight, 60));
    ASSERT_EQ("INZC 640x480@60", server.Pin());
    std::vector<ComPtr<IMFSample>> samples = server.WaitForSamples(kDepth, 120); // two seconds
    ASSERT_HR(S_OK, server.camera->Pins().SetPinState(0, DeviceStreamState_Stop, nullptr));
    const std::uint64_t delivered = server.camera->Pins().Statistics(0).delivered;
    while (samples.size() < delivered)
    {
        samples.push_back(WaitForSample(server, kDepth));
        ASSERT_NE(nullptr, samples.back()) << samples.size() << " of " << delivered;
    }
    EXPECT_EQ(nullptr, server.Collect(kDepth));

    for (std::size_t i = 0; i < samples.size(); i += 8)
    {
        CheckSample(server, kDepth, samples[i], CUSTOM_GUID_KELP_ZC);
        EXPECT_TRUE(HasConfidenceOfScene(samples[i])) << "sample " << i;
    }
    EXPECT_TRUE(std::is_sorted(samples.begin(), samples.end(),
                               [](const auto &left, const auto &right) { return TimeOf(left) < TimeOf(right); }));
}

// Occupies a thread of a work queue until it is let go.
class HeldWorkItem : public user_space_frameworks::ComObject<IMFAsyncCallback>
{
  public:
    HRESULT STDMETHODCALLTYPE Invoke(IMFAsyncResult *) noexcept override
    {
        WaitForSingleObject(letGo.Get(), INFINITE);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetParameters(DWORD *, DWORD *) noexcept override { return E_NOTIMPL; }

    user_space_frameworks::UniqueHandle letGo{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
};

TEST_F(DepthConformanceTest, AQueuedFrameHoldsTheModuleAfterItsTransform)
{
    DWORD queue = 0;
    ASSERT_HR(S_OK, MFAllocateWorkQueueEx(MF_STANDARD_WORKQUEUE, &queue)); // one item at a time
    const auto holding = user_space_frameworks::MakeCom<HeldWorkItem>();
    ASSERT_HR(S_OK, MFPutWorkItem2(queue, 0, holding.Get(), nullptr));
    {
        DepthFrameServer server(Activate(kDepthClass), Camera(Pacing::Stepped, 0));
        ComPtr<IMFRealTimeClientEx> client;
        ASSERT_HR(S_OK, server.transform.As(&client));
        ASSERT_HR(S_OK, client->SetWorkQueueEx(queue, 0));
        client.Reset();
        ASSERT_HR(S_OK, server.Start(kDepth));
        server.Step(1);
    }
    EXPECT_HR(S_FALSE, dll.CanUnloadNow()); // the frame's callback is in its code
    SetEvent(holding->letGo.Get());
    EXPECT_TRUE(WaitUntil([&] { return dll.CanUnloadNow() == S_OK; }));
    EXPECT_HR(S_OK, MFUnlockWorkQueue(queue));
}

} // namespace
