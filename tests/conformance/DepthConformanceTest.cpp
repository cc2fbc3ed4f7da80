// The registered depth transform: everything a camera delivers arrives, in order, with the values of the scene.
#include <algorithm>
#include <atomic>
#include <thread>

#include "tarn/tarn_formats.h"
#include "tests/conformance/RegisteredModule.h"
#include "tests/device/SceneComparison.h"
#include "base/ComObject.h"
#include "base/UniqueHandle.h"

using tarn_sim::Pacing;
using tarn_sim::SimulatedCamera;
using tarn_test::BlobOf;
using tarn_test::Bytes;
using tarn_test::DepthFrameServer;
using tarn_test::HasConfidenceOfScene;
using tarn_test::kDepth;
using tarn_test::kDepthClass;
using tarn_test::kInfrared;
using tarn_test::ShowsScene;

namespace
{

constexpr UINT32 kWidth = 640;
constexpr UINT32 kHeight = 480;

// Keeps the camera from running far ahead of who looks at the pictures.
class PatientServer : public DepthFrameServer
{
  public:
    using DepthFrameServer::DepthFrameServer;
    ~PatientServer() override
    {
        isOver = true;
    }
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
    tarn_test::WaitUntil([&] {
        sample = server.Collect(output);
        return sample != nullptr;
    });
    return sample;
}

class DepthConformanceTest : public tarn_test::RegisteredModule
{
  protected:
    static ComPtr<SimulatedCamera> Camera(Pacing pacing, std::uint64_t frames)
    {
        auto configuration = tarn_sim::CameraConfiguration::TarnDepth();
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
        EXPECT_NE(models.end(), std::search(models.begin(), models.end(), model,
                                            model + sizeof(MFPinholeCameraIntrinsic_IntrinsicModel)));
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
    EXPECT_TRUE(std::is_sorted(samples.begin(), samples.end(), [](const auto &left, const auto &right) {
        return tarn_test::TimeOf(left) < tarn_test::TimeOf(right);
    }));
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
    HRESULT STDMETHODCALLTYPE GetParameters(DWORD *, DWORD *) noexcept override
    {
        return E_NOTIMPL;
    }

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
        ASSERT_HR(S_OK, server.camera->Pins().Step(0, 1));
    }
    EXPECT_HR(S_FALSE, dll.CanUnloadNow()); // the frame's callback is in its code
    SetEvent(holding->letGo.Get());
    EXPECT_TRUE(tarn_test::WaitUntil([&] { return dll.CanUnloadNow() == S_OK; }));
    EXPECT_HR(S_OK, MFUnlockWorkQueue(queue));
}

} // namespace
