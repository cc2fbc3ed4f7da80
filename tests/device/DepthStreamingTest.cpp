// Frames through the three topologies, and the changes between them.
#include <numeric>

#include "device/DepthPresetTable.h"
#include "tarn/tarn_formats.h"
#include "tests/device/DepthServer.h"
#include "tests/device/SceneComparison.h"

using namespace tarn_host;
using namespace tarn_test;

namespace
{

TEST(DepthStreamingTest, EachTopologyShowsTheSceneInEveryPixelAndAddsItsRecords)
{
    const struct
    {
        std::vector<std::pair<DWORD, VideoSize>> outputs; // in the order of their starts
        const char *pin;
    } rows[] = {
        {{{kDepth, {640, 480, 30}}}, "INVZ 640x480@30"},
        {{{kInfrared, {640, 480, 30}}}, "INZI 640x480@30"},
        {{{kInfrared, {360, 360, 60}}}, "INZI 640x480@60"}, // no face login: the centre of a larger frame
        {{{kDepth, {640, 480, 30}}, {kInfrared, {320, 240, 60}}}, "INZI 640x480@60"},
        {{{kInfrared, {320, 240, 60}}, {kDepth, {640, 480, 30}}}, "INZI 640x480@60"},
    };
    for (const auto &row : rows)
    {
        SCOPED_TRACE(testing::Message() << "row " << &row - rows);
        // Nodes work on views of the frame, behind which a page faults.
        DepthServer server(DepthServer::SteppedTarnDepth([](auto &camera) { camera.guardPages = true; }));
        for (const auto &[output, size] : row.outputs)
        {
            ASSERT_HR(S_OK, server.Run(output, size.width, size.height, size.framesPerSecond));
        }
        EXPECT_EQ(row.pin, server.Pin());
        server.Step(3);
        for (const auto &[output, size] : row.outputs)
        {
            const auto samples = server.WaitForSamples(output, 3);
            ASSERT_EQ(3u, samples.size());
            for (std::size_t i = 0; i < samples.size(); ++i)
            {
                EXPECT_EQ(i, RequestOf(samples[i]).number);
                EXPECT_TRUE(ShowsScene(output, samples[i], size.width, size.height));
            }
            EXPECT_EQ(std::size_t{size.width} * size.height * (output == kDepth ? 2 : 1), BytesOf(samples[2]).size());
            const SampleDetails details = SampleDetails::Of(*samples[2].Get());
            EXPECT_EQ(output == kDepth ? 1600u : 0u, details.minReliableDepth.value_or(0));
            EXPECT_EQ(output == kDepth ? 12000u : 0u, details.maxReliableDepth.value_or(0));
            EXPECT_EQ(1u, details.extrinsics.size());
            EXPECT_TRUE(details.confidence.empty());
        }
    }
}

TEST(DepthStreamingTest, FramesOfTheFormerFormatDoNotReachTheNewTopology)
{
    DepthServer server;
    ASSERT_HR(S_OK, server.Run(kInfrared, 640, 480, 30));
    const auto change = [&](DWORD output, DeviceStreamState state) {
        const auto type = server.FindType(output, {640, 480, 30});
        ASSERT_HR(S_OK, server.transform->SetOutputStreamState(output, type.Get(), state, 0));
    };
    // Until the events are answered the pin goes on as it was; its frames are as long as the ones to come.
    change(kInfrared, DeviceStreamState_Stop);
    ASSERT_HR(S_OK, server.SetProperty(KSPROPERTY_TARN_DMFT_CONTROL_CONFIDENCE_MAP, 1));
    change(kDepth, DeviceStreamState_Run);
    server.Step(2);
    server.Pump();
    EXPECT_EQ("INZC 640x480@30", server.Pin());

    const auto samples = server.StepAndCollect(kDepth, 1);

    ASSERT_EQ(1u, samples.size());
    EXPECT_EQ(2u, RequestOf(samples[0]).number);
    EXPECT_TRUE(ShowsScene(kDepth, samples[0], 640, 480));
}

TEST(DepthStreamingTest, FramesThatAreTooShortAreDroppedAndBadMetadataAreNot)
{
    for (const auto fault : {tarn_sim::MetadataFault::None, tarn_sim::MetadataFault::Absent,
                             tarn_sim::MetadataFault::Truncated, tarn_sim::MetadataFault::HugeItem})
    {
        DepthServer server;
        tarn_sim::FaultPlan plan;
        plan.metadata = fault;
        plan.shortEvery = 2;
        server.camera->Faults().SetPlan(plan);
        ASSERT_HR(S_OK, server.Run(kDepth, 640, 480, 30));
        server.Step(4); // the second and the fourth are short

        const auto samples = server.WaitForSamples(kDepth, 2);

        ASSERT_EQ(2u, samples.size());
        EXPECT_EQ(640u * 480u * 2u, BytesOf(samples[1]).size());
        EXPECT_EQ(nullptr, server.Collect(kDepth));
    }
}

TEST(DepthStreamingTest, FramesThatADriverPadsArriveUnshifted)
{
    constexpr std::size_t kPlane = 320 * 240 * 2; // bytes
    Bytes bytes(2 * kPlane + 101, 0xEE);
    for (std::size_t i = 0; i < 2 * kPlane; ++i)
    {
        bytes[i] = static_cast<BYTE>(i % 251);
    }
    const Bytes depthPlane(bytes.begin() + kPlane, bytes.begin() + 2 * kPlane);
    DepthServer server;
    const auto deliver = [&] {
        server.OnFrame(0, MakeSample(0, bytes).Get()); // without a record
        Bytes pixels = BytesOf(server.WaitForSamples(kDepth, 1).at(0));
        pixels.resize(kPlane); // with confidence the buffer keeps its length
        return pixels;
    };
    ASSERT_HR(S_OK, server.Run(kDepth, 320, 240, 30));
    ASSERT_HR(S_OK, server.Run(kInfrared, 320, 240, 30));
    EXPECT_EQ(depthPlane, deliver());
    ASSERT_HR(S_OK, server.Stop(kInfrared));
    ASSERT_HR(S_OK, server.SetConfidenceMap(true)); // depth alone now
    EXPECT_EQ(depthPlane, deliver());
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
        EXPECT_TRUE(ShowsScene(kDepth, server.StepAndCollect(kDepth, 1).at(0), 320, 240));
    }
}

bool IsBlank(const ComPtr<IMFSample> &sample)
{
    const Bytes pixels = BytesOf(sample);
    return pixels == Bytes(pixels.size()) && SampleDetails::Of(*sample.Get()).confidence.empty();
}

TEST(DepthStreamingTest, NothingIsSeenWhilePrivacyIsOn)
{
    DepthServer server;
    ASSERT_HR(S_OK, server.SetConfidenceMap(true));
    server.camera->Controls().privacy = true;
    ASSERT_HR(S_OK, server.Run(kDepth, 640, 480, 30)); // depth with confidence
    EXPECT_TRUE(IsBlank(server.StepAndCollect(kDepth, 1).at(0)));
    ASSERT_HR(S_OK, server.Run(kInfrared, 640, 480, 30)); // both
    EXPECT_TRUE(IsBlank(server.StepAndCollect(kDepth, 1).at(0)));
    EXPECT_TRUE(IsBlank(server.WaitForSamples(kInfrared, 1).at(0)));
    ASSERT_HR(S_OK, server.Stop(kDepth));
    ASSERT_HR(S_OK, server.Run(kInfrared, 320, 240, 30)); // infrared alone
    EXPECT_TRUE(IsBlank(server.StepAndCollect(kInfrared, 1).at(0)));
    server.camera->Controls().privacy = false;
    EXPECT_TRUE(ShowsScene(kInfrared, server.StepAndCollect(kInfrared, 1).at(0), 320, 240));
}

TEST(DepthStreamingTest, PrivacyIsKnownToEachStartThoughNoFrameTells)
{
    for (const bool announced : {true, false})
    {
        DepthServer server(
            DepthServer::SteppedTarnDepth([&](auto &configuration) { configuration.privacyControl = announced; }));
        tarn_sim::FaultPlan silent;
        silent.metadata = tarn_sim::MetadataFault::Absent;
        server.camera->Faults().SetPlan(announced ? silent : tarn_sim::FaultPlan{});
        const auto isBlankFrom = [&](UINT32 width, UINT32 height) {
            EXPECT_HR(S_OK, server.Run(kDepth, width, height, 30));
            return IsBlank(server.StepAndCollect(kDepth, 1).at(0));
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
    DepthServer server(DepthServer::SteppedTarnDepth([](auto &camera) { camera.guardPages = true; }));
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

    std::vector<bool> lights;
    std::vector<int> brightness;
    for (const auto &sample : server.StepAndCollect(kInfrared, 4))
    {
        const Bytes pixels = BytesOf(sample);
        EXPECT_EQ(360u * 360u, pixels.size());
        brightness.push_back(std::accumulate(pixels.begin(), pixels.end(), 0));
        lights.push_back(SampleDetails::Of(*sample.Get()).isIlluminated.value_or(false));
    }
    EXPECT_EQ((std::vector<bool>{true, false, true, false}), lights);
    EXPECT_GT(brightness.at(0), 2 * brightness.at(1));

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
