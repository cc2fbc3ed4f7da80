// The registered depth transform: everything a camera delivers arrives, in order, with the values of the scene.
#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstring>
#include <thread>

#include "platform/CameraAttributes.h"

#include "sim/GeneratedScene.h"
#include "tarn/frame_metadata.h"
#include "tarn/sample_attributes.h"
#include "tarn/tarn_dmft.h"
#include "tests/conformance/RegisteredModule.h"
#include "tests/device/DepthFrameServer.h"
#include "base/ComObject.h"
#include "base/UniqueHandle.h"

using tarn_sim::CameraConfiguration;
using tarn_sim::GeneratedScene;
using tarn_sim::Pacing;
using tarn_sim::Plane;
using tarn_sim::SimulatedCamera;
using tarn_test::DepthFrameServer;
using tarn_test::kDepth;
using tarn_test::kInfrared;

namespace
{

constexpr UINT32 kWidth = 640;
constexpr UINT32 kHeight = 480;
constexpr std::size_t kPixels = std::size_t{kWidth} * kHeight;
constexpr std::uint64_t kFrames = 600;

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

std::vector<BYTE> BlobOf(IMFAttributes *store, const GUID &key)
{
    UINT32 size = 0;
    EXPECT_HR(S_OK, store->GetBlobSize(key, &size));
    std::vector<BYTE> blob(size);
    EXPECT_HR(S_OK, store->GetBlob(key, blob.data(), size, nullptr));
    return blob;
}

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
        auto configuration = CameraConfiguration::TarnDepth();
        configuration.pacing = pacing;
        configuration.frameLimit = frames;
        configuration.buffersPerPin = 160;
        configuration.guardPages = true; // an access past a frame's end ends the program
        return user_space_frameworks::MakeCom<SimulatedCamera>(configuration);
    }

    // Of a full frame of the camera: its number, all pixels, the frame's record and the stream's.
    std::uint64_t CheckSample(DepthFrameServer &server, DWORD output, const ComPtr<IMFSample> &sample,
                              const char *fourCc)
    {
        TARN_FRAME_METADATA record{};
        EXPECT_TRUE(tarn_test::HasBlob(sample, TARN_SAMPLE_FRAME_METADATA, record));
        EXPECT_EQ(TARN_FRAME_METADATA_MAGIC, record.magic);
        EXPECT_EQ(kWidth, record.width);
        EXPECT_EQ(kHeight, record.height);
        EXPECT_EQ(0, std::memcmp(&record.formatFourCc, fourCc, 4));
        EXPECT_EQ(tarn_test::TimeOf(sample), record.timestamp100ns);
        EXPECT_EQ(166666u, record.frameInterval100ns);

        const std::vector<BYTE> pixels = tarn_test::PixelsOf(sample);
        const std::vector<BYTE> expected = Picture(output, record.frameCounter);
        EXPECT_GE(pixels.size(), expected.size());
        EXPECT_EQ(0, std::memcmp(expected.data(), pixels.data(), expected.size())) << "frame " << record.frameCounter;

        ComPtr<IMFAttributes> stream;
        EXPECT_HR(S_OK, server.transform->GetOutputStreamAttributes(output, &stream));
        // One model: the stream's for this size, since nothing was cut or scaled.
        const std::vector<BYTE> models = BlobOf(stream.Get(), MFStreamExtension_PinholeCameraIntrinsics);
        MFPinholeCameraIntrinsics ofSample{};
        EXPECT_TRUE(tarn_test::HasBlob(sample, MFSampleExtension_PinholeCameraIntrinsics, ofSample));
        const auto *const model = reinterpret_cast<const BYTE *>(&ofSample.IntrinsicModels[0]);
        EXPECT_EQ(1u, ofSample.IntrinsicModelCount);
        EXPECT_EQ(kWidth, ofSample.IntrinsicModels[0].Width);
        EXPECT_NE(models.end(),
                  std::search(models.begin(), models.end(), model, model + sizeof(ofSample.IntrinsicModels)));
        EXPECT_EQ(BlobOf(stream.Get(), MFStreamExtension_CameraExtrinsics),
                  BlobOf(sample.Get(), MFSampleExtension_CameraExtrinsics));
        return record.frameCounter;
    }

    std::vector<BYTE> Picture(DWORD output, std::uint64_t number)
    {
        std::vector<BYTE> plane(kPixels * 2);
        scene.Render({number, kWidth, kHeight, true}, output == kDepth ? Plane::DepthEighthMm : Plane::Infrared,
                     plane.data());
        if (output == kDepth)
        {
            return plane;
        }
        std::vector<BYTE> picture(kPixels);
        for (std::size_t i = 0; i < kPixels; ++i)
        {
            picture[i] = eightBits.at(static_cast<std::size_t>(plane[2 * i] + plane[2 * i + 1] * 256));
        }
        return picture;
    }

    std::vector<BYTE> ConfidenceOf(std::uint64_t number)
    {
        std::vector<BYTE> plane(kPixels * 2); // the map's room; half of it is the camera's
        scene.Render({number, kWidth, kHeight, true}, Plane::Confidence, plane.data());
        std::transform(plane.begin(), plane.end(), plane.begin(),
                       [](BYTE raw) { return static_cast<BYTE>(std::clamp(raw - 15, 0, 127) / 8); });
        return plane;
    }

    GeneratedScene scene;
    std::array<BYTE, 1024> eightBits = [] {
        std::array<BYTE, 1024> table{};
        for (std::size_t tenBits = 0; tenBits < table.size(); ++tenBits)
        {
            table[tenBits] = static_cast<BYTE>(std::lround(static_cast<double>(tenBits * 64) * 255.0 / 65535));
        }
        return table;
    }();
};

TEST_F(DepthConformanceTest, EveryFrameReachesBothOutputsInOrderAsItWasRendered)
{
    PatientServer server(Activate(tarn_test::kDepthClass), Camera(Pacing::AsFastAsTaken, kFrames));
    ASSERT_HR(S_OK, server.initialized);
    for (const DWORD output : {kDepth, kInfrared}) // the pin starts when both have
    {
        const auto type = server.FindType(output, kWidth, kHeight, 60);
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
            ASSERT_EQ(number, CheckSample(server, output, sample, "INZI"));
        }
        ++server.seen;
    }
    EXPECT_EQ(nullptr, server.Collect(kDepth));
    EXPECT_EQ(nullptr, server.Collect(kInfrared));
}

TEST_F(DepthConformanceTest, InRealTimeNothingIsLostThatTheCameraDelivers)
{
    constexpr std::size_t kEnough = 120; // two seconds
    DepthFrameServer server(Activate(tarn_test::kDepthClass), Camera(Pacing::RealTime, 0));
    ASSERT_HR(S_OK, server.SetConfidenceMap(true));
    ASSERT_HR(S_OK, server.Run(kDepth, kWidth, kHeight, 60));
    ASSERT_EQ("INZC 640x480@60", server.Pin());
    std::vector<ComPtr<IMFSample>> samples = server.WaitForSamples(kDepth, kEnough);
    ASSERT_HR(S_OK, server.camera->Pins().SetPinState(0, DeviceStreamState_Stop, nullptr));
    const std::uint64_t delivered = server.camera->Pins().Statistics(0).delivered;
    while (samples.size() < delivered)
    {
        const auto sample = WaitForSample(server, kDepth);
        ASSERT_NE(nullptr, sample.Get()) << samples.size() << " of " << delivered;
        samples.push_back(sample);
    }
    EXPECT_EQ(nullptr, server.Collect(kDepth));

    std::uint64_t next = 0;
    for (std::size_t i = 0; i < samples.size(); i += 8)
    {
        const std::uint64_t number = CheckSample(server, kDepth, samples[i], "INZC");
        ASSERT_LE(next, number);
        next = number + 1;
        const std::vector<BYTE> map = BlobOf(samples[i].Get(), ORRIN_SAMPLE_TARN_CONFIDENCE_MAP);
        const std::vector<BYTE> expected = ConfidenceOf(number);
        ASSERT_LE(kPixels, map.size());
        ASSERT_EQ(0, std::memcmp(expected.data(), map.data(), kPixels)) << "frame " << number;
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
        tarn_test::TestFrameServer server(Activate(tarn_test::kDepthClass), Camera(Pacing::Stepped, 0));
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
