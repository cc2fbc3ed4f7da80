// Frames through the three topologies, and the changes between them.
#include "platform/CameraAttributes.h"

#include "tests/core/TestParts.h"
#include "tests/device/DepthCamera.h"
#include "tests/device/DepthServer.h"
#include "tests/device/SceneComparison.h"

using tarn_sim::FrameRequest;
using tarn_sim::GeneratedScene;
using tarn_test::DepthServer;
using tarn_test::HasBlob;
using tarn_test::kDepth;
using tarn_test::kInfrared;
using tarn_test::PixelsOf;
using tarn_test::RequestOf;
using tarn_test::WrongDepths;
using tarn_test::WrongInfrared;

namespace
{

constexpr UINT32 kStopped = DeviceStreamState_Stop;

TEST(DepthStreamingTest, DepthAloneHasTheSceneInEveryPixelAndAllRecords)
{
    DepthServer server;
    ASSERT_HR(S_OK, server.Run(kDepth, 640, 480, 30));
    EXPECT_EQ("INVZ 640x480@30", server.Pin());

    const auto samples = server.StepAndCollect(kDepth, 3);

    ASSERT_EQ(3u, samples.size());
    for (std::size_t i = 0; i < samples.size(); ++i)
    {
        EXPECT_EQ(i, RequestOf(samples[i]).number);
        EXPECT_EQ(0u, WrongDepths(samples[i], 640, 480));
        UINT32 reliable = 0;
        EXPECT_HR(S_OK, samples[i]->GetUINT32(MFSampleExtension_Depth_MinReliableDepth, &reliable));
        EXPECT_EQ(1600u, reliable);
        EXPECT_HR(S_OK, samples[i]->GetUINT32(MFSampleExtension_Depth_MaxReliableDepth, &reliable));
        EXPECT_EQ(12000u, reliable);
        MFCameraExtrinsics extrinsics{};
        EXPECT_TRUE(HasBlob(samples[i], MFSampleExtension_CameraExtrinsics, extrinsics));
        UINT32 size = 0;
        EXPECT_NE(S_OK, samples[i]->GetBlobSize(ORRIN_SAMPLE_TARN_CONFIDENCE_MAP, &size));
    }
}

TEST(DepthStreamingTest, InfraredAloneIsTheFirstPlaneOfTheClosestFrame)
{
    DepthServer server;
    ASSERT_HR(S_OK, server.Run(kInfrared, 640, 480, 30));
    EXPECT_EQ("INZI 640x480@30", server.Pin());
    const auto samples = server.StepAndCollect(kInfrared, 2);
    ASSERT_EQ(2u, samples.size());
    EXPECT_EQ(0u, WrongInfrared(samples[1], 640, 480));

    ASSERT_HR(S_OK, server.Run(kInfrared, 360, 360, 60)); // no face login: the centre of a larger frame
    EXPECT_EQ("INZI 640x480@60", server.Pin());
    const auto cropped = server.StepAndCollect(kInfrared, 1);
    ASSERT_EQ(1u, cropped.size());
    EXPECT_EQ(0u, WrongInfrared(cropped[0], 360, 360));
}

TEST(DepthStreamingTest, BothOutputsShareThePinWhicheverStartsFirst)
{
    for (const bool depthFirst : {true, false})
    {
        DepthServer server;
        ASSERT_HR(S_OK, depthFirst ? server.Run(kDepth, 640, 480, 30) : server.Run(kInfrared, 320, 240, 60));
        ASSERT_HR(S_OK, depthFirst ? server.Run(kInfrared, 320, 240, 60) : server.Run(kDepth, 640, 480, 30));
        EXPECT_EQ("INZI 640x480@60", server.Pin());

        ASSERT_HR(S_OK, server.camera->Pins().Step(0, 3));
        const auto depth = server.WaitForSamples(kDepth, 3);
        const auto infrared = server.WaitForSamples(kInfrared, 3);

        ASSERT_EQ(3u, depth.size());
        ASSERT_EQ(3u, infrared.size());
        EXPECT_EQ(640u * 480u * 2u, PixelsOf(depth[2]).size());
        EXPECT_EQ(0u, WrongDepths(depth[2], 640, 480));
        EXPECT_EQ(0u, WrongInfrared(infrared[2], 320, 240));
        UINT32 ignored = 0;
        EXPECT_EQ(S_OK, depth[2]->GetUINT32(MFSampleExtension_Depth_MinReliableDepth, &ignored));
        EXPECT_NE(S_OK, infrared[2]->GetUINT32(MFSampleExtension_Depth_MinReliableDepth, &ignored));
    }
}

TEST(DepthStreamingTest, OrdinaryFramesAreNoErrorsInTheTrace)
{
    DepthServer server;
    const tarn_test::TraceText errors(mft_utils::TraceLevel::Error);
    ASSERT_HR(S_OK, server.Run(kDepth, 640, 480, 30));
    server.StepAndCollect(kDepth, 2);
    ASSERT_HR(S_OK, server.Run(kInfrared, 640, 480, 30));
    server.StepAndCollect(kInfrared, 2);
    EXPECT_FALSE(errors.Contains("TopologyNode::")) << errors.Text();
}

TEST(DepthStreamingTest, FramesOfTheFormerFormatDoNotReachTheNewTopology)
{
    DepthServer server;
    ASSERT_HR(S_OK, server.Run(kInfrared, 640, 480, 30));
    const auto change = [&](DWORD output, const ComPtr<IMFMediaType> &type, DeviceStreamState state) {
        ASSERT_HR(S_OK, server.transform->SetOutputStreamState(output, type.Get(), state, 0));
    };
    // Until the events are answered the pin goes on as it was; its frames are as long as the ones to come.
    UINT32 enabled = 1;
    change(kInfrared, server.FindType(kInfrared, 640, 480, 30), DeviceStreamState_Stop);
    ASSERT_HR(S_OK, server.SendProperty(KSPROPERTYSETID_TARN_DMFT_CONTROL, KSPROPERTY_TARN_DMFT_CONTROL_CONFIDENCE_MAP,
                                        KSPROPERTY_TYPE_SET, &enabled, sizeof(enabled)));
    change(kDepth, server.FindType(kDepth, 640, 480, 30), DeviceStreamState_Run);
    ASSERT_HR(S_OK, server.camera->Pins().Step(0, 2));
    server.Pump();
    EXPECT_EQ("INZC 640x480@30", server.Pin());

    const auto samples = server.StepAndCollect(kDepth, 1);

    ASSERT_EQ(1u, samples.size());
    EXPECT_EQ(2u, RequestOf(samples[0]).number);
    EXPECT_EQ(0u, WrongDepths(samples[0], 640, 480));
}

TEST(DepthStreamingTest, FramesThatAreTooShortAreDroppedAndBadMetadataAreNot)
{
    for (const auto fault :
         {tarn_sim::MetadataFault::None, tarn_sim::MetadataFault::Absent, tarn_sim::MetadataFault::NoItems,
          tarn_sim::MetadataFault::Truncated, tarn_sim::MetadataFault::ZeroSizedItem, tarn_sim::MetadataFault::HugeItem,
          tarn_sim::MetadataFault::ShortPayload})
    {
        DepthServer server;
        tarn_sim::FaultPlan plan;
        plan.metadata = fault;
        plan.shortEvery = 2;
        server.camera->Faults().SetPlan(plan);
        ASSERT_HR(S_OK, server.Run(kDepth, 640, 480, 30));
        ASSERT_HR(S_OK, server.camera->Pins().Step(0, 4)); // the second and the fourth are short

        const auto samples = server.WaitForSamples(kDepth, 2);

        ASSERT_EQ(2u, samples.size());
        EXPECT_EQ(640u * 480u * 2u, PixelsOf(samples[1]).size());
        EXPECT_EQ(nullptr, server.Collect(kDepth));
    }
}

TEST(DepthStreamingTest, FramesThatADriverPadsArriveUnshifted)
{
    constexpr std::size_t kPlane = 320 * 240 * 2; // bytes
    constexpr std::size_t kPadding = 101;
    std::vector<BYTE> bytes(2 * kPlane + kPadding, 0xEE);
    for (std::size_t i = 0; i < 2 * kPlane; ++i)
    {
        bytes[i] = static_cast<BYTE>(i % 251);
    }
    const std::vector<BYTE> depthPlane(bytes.begin() + kPlane, bytes.begin() + 2 * kPlane);
    DepthServer server;
    const auto deliver = [&] {
        const ComPtr<IMFSample> sample = tarn_test::MakeSample(0); // without a record
        ComPtr<IMFMediaBuffer> buffer;
        BYTE *data = nullptr;
        EXPECT_HR(S_OK, MFCreateMemoryBuffer(static_cast<DWORD>(bytes.size()), &buffer));
        EXPECT_HR(S_OK, buffer->Lock(&data, nullptr, nullptr));
        std::copy(bytes.begin(), bytes.end(), data);
        EXPECT_HR(S_OK, buffer->Unlock());
        EXPECT_HR(S_OK, buffer->SetCurrentLength(static_cast<DWORD>(bytes.size())));
        EXPECT_HR(S_OK, sample->AddBuffer(buffer.Get()));
        server.OnFrame(0, sample.Get());
        const auto samples = server.WaitForSamples(kDepth, 1);
        return samples.empty() ? std::vector<BYTE>{} : PixelsOf(samples[0]);
    };
    ASSERT_HR(S_OK, server.Run(kDepth, 320, 240, 30));
    ASSERT_HR(S_OK, server.Run(kInfrared, 320, 240, 30));
    EXPECT_EQ(depthPlane, deliver());

    ASSERT_HR(S_OK, server.Stop(kInfrared));
    ASSERT_HR(S_OK, server.SetConfidenceMap(true)); // depth alone now
    std::vector<BYTE> pixels = deliver();
    pixels.resize(kPlane); // the buffer keeps its length
    EXPECT_EQ(depthPlane, pixels);
}

TEST(DepthStreamingTest, AStartThatNoTopologyCanServeChangesNothing)
{
    auto configuration = DepthServer::SteppedTarnDepth();
    configuration.pins.front().types.push_back(
        tarn_sim::MakeVideoType(CUSTOM_GUID_KELP_Z, 1920, 1080, 30)); // depth alone at this size
    DepthServer server(configuration);
    ASSERT_HR(S_OK, server.Run(kInfrared, 640, 480, 30));

    EXPECT_HR(E_FAIL, server.Run(kDepth, 1920, 1080, 30));
    ComPtr<IMFMediaType> foreign = tarn_sim::MakeVideoType(MFVideoFormat_D16, 641, 480, 30);
    EXPECT_HR(MF_E_INVALIDMEDIATYPE,
              server.transform->SetOutputStreamState(kDepth, foreign.Get(), DeviceStreamState_Run, 0));
    server.Pump();

    EXPECT_EQ(kStopped, server.OutputState(kDepth));
    EXPECT_EQ("INZI 640x480@30", server.Pin());
    EXPECT_EQ(2u, server.StepAndCollect(kInfrared, 2).size());
    ASSERT_HR(S_OK, server.Stop(kInfrared));
    ASSERT_HR(S_OK, server.Run(kDepth, 1920, 1080, 30));
    EXPECT_EQ("INVZ 1920x1080@30", server.Pin());
}

TEST(DepthStreamingTest, TheConfidenceMapIsSwitchedWhileDepthRuns)
{
    DepthServer server;
    ASSERT_HR(S_OK, server.Run(kDepth, 640, 480, 30));
    ASSERT_HR(S_OK, server.SetConfidenceMap(true));
    EXPECT_EQ("INZC 640x480@30", server.Pin());

    const auto samples = server.StepAndCollect(kDepth, 2);

    ASSERT_EQ(2u, samples.size());
    EXPECT_EQ(0u, WrongDepths(samples[1], 640, 480));
    const FrameRequest request = RequestOf(samples[1]);
    std::vector<UINT8> map(640 * 480 * 2);
    ASSERT_HR(S_OK, samples[1]->GetBlob(ORRIN_SAMPLE_TARN_CONFIDENCE_MAP, map.data(), static_cast<UINT32>(map.size()),
                                        nullptr));
    for (UINT32 i = 0; i < 640 * 480; ++i)
    {
        const int raw = GeneratedScene::Confidence(request, i % 640, i / 640);
        ASSERT_EQ(std::min(std::max(raw - 15, 0), 127) / 8, map[i]) << i;
    }

    ASSERT_HR(S_OK, server.SetConfidenceMap(false));
    EXPECT_EQ("INVZ 640x480@30", server.Pin());
    const auto without = server.StepAndCollect(kDepth, 1);
    ASSERT_EQ(1u, without.size());
    UINT32 size = 0;
    EXPECT_NE(S_OK, without[0]->GetBlobSize(ORRIN_SAMPLE_TARN_CONFIDENCE_MAP, &size));
    EXPECT_EQ(0u, WrongDepths(without[0], 640, 480));
}

TEST(DepthStreamingTest, TheConfidenceMapComesToDepthThatInfraredHasLeft)
{
    // The stop leaves depth the topology of both, which takes INZI frames only: with the pin switched to INZC under it
    // depth would run and give nothing.
    DepthServer server;
    ASSERT_HR(S_OK, server.Run(kDepth, 320, 240, 30));
    ASSERT_HR(S_OK, server.Run(kInfrared, 640, 480, 30));
    ASSERT_HR(S_OK, server.Stop(kInfrared));
    for (const bool enabled : {true, false})
    {
        ASSERT_HR(S_OK, server.SetConfidenceMap(enabled));
        EXPECT_EQ(enabled ? "INZC 320x240@30" : "INVZ 320x240@30", server.Pin());
        const auto samples = server.StepAndCollect(kDepth, 1);
        ASSERT_EQ(1u, samples.size());
        EXPECT_EQ(0u, WrongDepths(samples[0], 320, 240));
        UINT32 size = 0;
        EXPECT_EQ(enabled, samples[0]->GetBlobSize(ORRIN_SAMPLE_TARN_CONFIDENCE_MAP, &size) == S_OK);
    }
}

TEST(DepthStreamingTest, AConfidenceMapThatThePinCannotServeChangesNothing)
{
    for (const bool wasEnabled : {false, true})
    {
        DepthServer server(DepthServer::WithoutSubtype(CUSTOM_GUID_KELP_ZC));
        ASSERT_HR(S_OK, server.SetConfidenceMap(wasEnabled)); // nothing runs that could refuse it
        ASSERT_HR(S_OK, server.Run(kInfrared, 640, 480, 30));
        ASSERT_HR(S_OK, server.Run(kDepth, 320, 240, 30));
        ASSERT_HR(S_OK, server.Stop(kInfrared));
        EXPECT_EQ(wasEnabled, server.HasConfidenceMap()); // though the topology of both gives none

        EXPECT_HR(wasEnabled ? S_OK : E_FAIL, server.SetConfidenceMap(!wasEnabled)); // off is always served
        EXPECT_EQ(wasEnabled ? "INVZ 320x240@30" : "INZI 640x480@30", server.Pin());
        EXPECT_FALSE(server.HasConfidenceMap());
        EXPECT_EQ(0u, WrongDepths(server.StepAndCollect(kDepth, 1).at(0), 320, 240));
    }
}

TEST(DepthStreamingTest, NothingIsSeenWhilePrivacyIsOn)
{
    DepthServer server;
    ASSERT_HR(S_OK, server.SetConfidenceMap(true));
    const auto isBlank = [](const ComPtr<IMFSample> &sample) {
        const std::vector<BYTE> pixels = PixelsOf(sample);
        UINT32 size = 0;
        return pixels == std::vector<BYTE>(pixels.size()) &&
               FAILED(sample->GetBlobSize(ORRIN_SAMPLE_TARN_CONFIDENCE_MAP, &size));
    };
    server.camera->Controls().privacy = true;
    ASSERT_HR(S_OK, server.Run(kDepth, 640, 480, 30)); // depth with confidence
    EXPECT_TRUE(isBlank(server.StepAndCollect(kDepth, 1).at(0)));
    ASSERT_HR(S_OK, server.Run(kInfrared, 640, 480, 30)); // both
    ASSERT_HR(S_OK, server.camera->Pins().Step(0, 1));
    EXPECT_TRUE(isBlank(server.WaitForSamples(kDepth, 1).at(0)));
    EXPECT_TRUE(isBlank(server.WaitForSamples(kInfrared, 1).at(0)));
    ASSERT_HR(S_OK, server.Stop(kDepth));
    ASSERT_HR(S_OK, server.Run(kInfrared, 320, 240, 30)); // infrared alone
    EXPECT_TRUE(isBlank(server.StepAndCollect(kInfrared, 1).at(0)));
    server.camera->Controls().privacy = false;
    EXPECT_EQ(0u, WrongInfrared(server.StepAndCollect(kInfrared, 1).at(0), 320, 240));
}

TEST(DepthStreamingTest, PrivacyIsKnownToEachStartThoughNoFrameTells)
{
    for (const bool announced : {true, false})
    {
        auto configuration = DepthServer::SteppedTarnDepth();
        configuration.privacyControl = announced;
        DepthServer server(configuration);
        tarn_sim::FaultPlan silent;
        silent.metadata = tarn_sim::MetadataFault::Absent;
        server.camera->Faults().SetPlan(announced ? silent : tarn_sim::FaultPlan{});
        const auto isBlankFrom = [&](UINT32 width, UINT32 height) {
            EXPECT_HR(S_OK, server.Run(kDepth, width, height, 30));
            const std::vector<BYTE> pixels = PixelsOf(server.StepAndCollect(kDepth, 1).at(0));
            return pixels == std::vector<BYTE>(pixels.size());
        };
        server.camera->Controls().privacy = true;
        EXPECT_TRUE(isBlankFrom(640, 480)) << "the camera or the frame told";
        server.camera->Faults().SetPlan(silent);
        EXPECT_TRUE(isBlankFrom(320, 240)) << "what is known outlives the topology";
        server.camera->Controls().privacy = false;
        EXPECT_EQ(!announced, isBlankFrom(640, 480));
    }
}

TEST(DepthStreamingTest, FaceLoginHasItsPresetWhileItRunsAndAlternatesItsLight)
{
    DepthServer server;
    ASSERT_HR(S_OK, server.SetFaceLogin(true));
    ASSERT_HR(S_OK, server.Run(kInfrared, 360, 360, 60));
    EXPECT_EQ("PAIR 640x480@60", server.Pin());
    const auto isInForce = [&](UINT32 preset) {
        return mft_core::FindDepthPreset(preset)->laserPower ==
               server.camera->Controls().ValueOf(tarn_sim::kControlLaserPower);
    };
    EXPECT_TRUE(isInForce(TARN_DEPTH_PRESET_FACE_LOGIN));
    EXPECT_EQ(0u, server.Preset());
    EXPECT_HR(E_FAIL, server.SetFaceLogin(false));

    const auto samples = server.StepAndCollect(kInfrared, 4);

    ASSERT_EQ(4u, samples.size());
    std::vector<UINT64> lights;
    std::vector<std::uint64_t> brightness;
    for (const auto &sample : samples)
    {
        const std::vector<BYTE> pixels = PixelsOf(sample);
        EXPECT_EQ(360u * 360u, pixels.size());
        std::uint64_t sum = 0;
        for (const BYTE pixel : pixels)
        {
            sum += pixel;
        }
        brightness.push_back(sum);
        ComPtr<IMFAttributes> metadata;
        ASSERT_HR(S_OK, sample->GetUnknown(MFSampleExtension_CaptureMetadata, IID_PPV_ARGS(&metadata)));
        UINT64 illumination = 9;
        EXPECT_HR(S_OK, metadata->GetUINT64(MF_CAPTURE_METADATA_FRAME_ILLUMINATION, &illumination));
        lights.push_back(illumination);
    }
    EXPECT_EQ((std::vector<UINT64>{1, 0, 1, 0}), lights);
    EXPECT_GT(brightness[0], 2 * brightness[1]);

    // What an application wants meanwhile comes afterwards, where the camera refuses it at first with the next start.
    EXPECT_HR(S_OK, server.SetProperty(KSPROPERTY_TARN_DMFT_CONTROL_DEPTH_PRESETS, TARN_DEPTH_PRESET_LOW_POWER));
    EXPECT_EQ(static_cast<UINT32>(TARN_DEPTH_PRESET_LOW_POWER), server.Preset());
    EXPECT_TRUE(isInForce(TARN_DEPTH_PRESET_FACE_LOGIN));
    tarn_sim::FaultPlan plan;
    plan.ksCall = {1, E_ABORT, true};
    server.camera->Faults().SetPlan(plan);
    EXPECT_HR(E_ABORT, server.Stop(kInfrared));
    EXPECT_EQ("stopped", server.Pin());
    server.camera->Faults().SetPlan({});
    EXPECT_TRUE(isInForce(TARN_DEPTH_PRESET_FACE_LOGIN));
    EXPECT_HR(S_OK, server.SetFaceLogin(false));
    ASSERT_HR(S_OK, server.Run(kInfrared, 360, 360, 60));
    EXPECT_TRUE(isInForce(TARN_DEPTH_PRESET_LOW_POWER));
}

} // namespace
