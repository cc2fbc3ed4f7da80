// What the depth transform offers before anything streams.
#include "device/TarnDepthDeviceMft.h"

#include "device/DepthPresetTable.h"
#include "tarn/firmware_errors.h"
#include "tarn/tarn_formats.h"
#include "tests/device/DepthServer.h"
#include "tests/trace/TraceLines.h"

using namespace tarn_sim;
using namespace tarn_test;
using user_space_frameworks::MakeCom;

namespace
{

// Sizes of the camera models that a stream offers, as "640x480 ".
std::string ModelsOf(const DepthServer &server, DWORD output)
{
    ComPtr<IMFAttributes> attributes;
    EXPECT_HR(S_OK, server.transform->GetOutputStreamAttributes(output, &attributes));
    const Bytes blob = BlobOf(attributes, MFStreamExtension_PinholeCameraIntrinsics);
    std::string sizes;
    for (std::size_t at = 4; at < blob.size(); at += sizeof(MFPinholeCameraIntrinsic_IntrinsicModel))
    {
        UINT32 size[2] = {};
        std::memcpy(size, &blob.at(at), sizeof(size));
        sizes += std::to_string(size[0]) + 'x' + std::to_string(size[1]) + ' ';
    }
    return sizes;
}

int LaserPowerOf(std::uint32_t preset)
{
    return mft_core::FindDepthPreset(preset)->laserPower;
}

DWORD TypeCount(const DepthServer &server, DWORD output)
{
    DWORD count = 0;
    ComPtr<IMFMediaType> type;
    while (server.transform->GetOutputAvailableType(output, count, type.ReleaseAndGetAddressOf()) == S_OK)
    {
        ++count;
    }
    return count;
}

TEST(TarnDepthDeviceMftTest, DepthComesFirstInEighthsOfAMillimetreAndInfraredWithItsFaceLoginType)
{
    DepthServer server;
    ASSERT_HR(S_OK, server.initialized);
    EXPECT_EQ(15u, TypeCount(server, kDepth));
    const ComPtr<IMFMediaType> depth = server.OutputType(kDepth);
    EXPECT_EQ("D16 640x480@30", tarn_host::FrameFormat::Of(*depth.Get()).ToText());
    EXPECT_EQ(125000u, MFGetAttributeUINT64(depth.Get(), MF_MT_DEPTH_VALUE_UNIT, 0));
    EXPECT_EQ("640x480 1280x720 320x240 ", ModelsOf(server, kDepth));
    ComPtr<IMFAttributes> attributes;
    EXPECT_HR(S_OK, server.transform->GetOutputStreamAttributes(kDepth, &attributes));
    EXPECT_EQ(sizeof(MFCameraExtrinsics), BlobOf(attributes, MFStreamExtension_CameraExtrinsics).size());

    EXPECT_EQ(6u, TypeCount(server, kInfrared));
    const ComPtr<IMFMediaType> faceLogin = server.OutputType(kInfrared);
    EXPECT_EQ("L8 360x360@60", tarn_host::FrameFormat::Of(*faceLogin.Get()).ToText());
    EXPECT_EQ(360u, MFGetAttributeUINT32(faceLogin.Get(), MF_MT_DEFAULT_STRIDE, 0));
    EXPECT_EQ(360u * 360u, MFGetAttributeUINT32(faceLogin.Get(), MF_MT_SAMPLE_SIZE, 0));
    EXPECT_HR(S_OK, server.SetFaceLogin(true));

    KSPROPERTY_TARN_API_VERSION version{9, 9};
    EXPECT_HR(S_OK, server.SendProperty(KSPROPERTYSETID_TARN_DMFT_CONTROL, KSPROPERTY_TARN_DMFT_CONTROL_API_VERSION,
                                        KSPROPERTY_TYPE_GET, &version, sizeof(version)));
    EXPECT_EQ(7u, version.second);
    EXPECT_EQ(0u, server.Preset());
}

TEST(TarnDepthDeviceMftTest, ACameraWithoutFaceLoginFormatOffersNeitherTypeNorMode)
{
    DepthServer server(DepthServer::WithoutSubtype(CUSTOM_GUID_KELP_FACE_LOGIN));
    ASSERT_HR(S_OK, server.initialized);
    EXPECT_EQ(5u, TypeCount(server, kInfrared));
    EXPECT_EQ(nullptr, server.FindType(kInfrared, {360, 360, 60}));
    EXPECT_HR(ERROR_SET_NOT_FOUND, server.SetFaceLogin(true));
}

TEST(TarnDepthDeviceMftTest, ACameraWithoutCalibrationWorksWithoutRecords)
{
    DepthServer server(
        DepthServer::SteppedTarnDepth([](auto &configuration) { configuration.calibrationTable.clear(); }));
    EXPECT_EQ("", ModelsOf(server, kDepth));
    ASSERT_HR(S_OK, server.Run(kDepth, 640, 480, 30));
    const auto sample = server.StepAndCollect(kDepth, 1).at(0);
    EXPECT_TRUE(BlobOf(sample, MFSampleExtension_PinholeCameraIntrinsics).empty());
    EXPECT_TRUE(BlobOf(sample, MFSampleExtension_CameraExtrinsics).empty());
}

TEST(TarnDepthDeviceMftTest, AFilterWithTwoPinsIsRefused)
{
    const DepthServer server(DepthServer::SteppedTarnDepth([](auto &configuration) {
        configuration.pins.push_back(configuration.pins.front());
        configuration.pins.back().streamId = 1;
    }));
    EXPECT_HR(E_FAIL, server.initialized);
}

TEST(TarnDepthDeviceMftTest, AFirmwareErrorIsTracedWhenTheCameraSignalsIt)
{
    const TraceLines trace;
    DepthServer server;
    ASSERT_HR(S_OK, server.Run(kDepth, 640, 480, 30));
    server.camera->Controls().SetErrorCode(TARN_FIRMWARE_ERROR_LASER_CURRENT);
    EXPECT_EQ(1u, server.camera->Ks().SignalAutoUpdate());
    EXPECT_TRUE(WaitUntil([&] { return trace.Contains("firmware error: laser current (2)"); }));
}

TEST(TarnDepthDeviceMftTest, AHealthySessionTracesNoError)
{
    const TraceLines errors(mft_utils::TraceLevel::Error);
    {
        DepthServer server;
        EXPECT_EQ(nullptr, server.FindType(kInfrared, {1, 1, 1})); // looked at every type
        ASSERT_HR(S_OK, server.Run(kDepth, 640, 480, 30));
        ASSERT_HR(S_OK, server.Run(kInfrared, 640, 480, 30));
        server.StepAndCollect(kInfrared, 3);
        ASSERT_HR(S_OK, server.Stop(kInfrared));
        ASSERT_HR(S_OK, server.SetConfidenceMap(true));
        server.StepAndCollect(kDepth, 3);
        ASSERT_HR(S_OK, server.Stop(kDepth));
        ASSERT_HR(S_OK, server.SetFaceLogin(true));
        ASSERT_HR(S_OK, server.Run(kInfrared, 360, 360, 60));
        server.StepAndCollect(kInfrared, 3);
        ASSERT_HR(S_OK, server.Stop(kInfrared));
        EXPECT_HR(HRESULT_FROM_WIN32(ERROR_MORE_DATA), // how long is it?
                  server.SendProperty(KSPROPERTYSETID_TARN_DEPTH_CONTROL, 1, KSPROPERTY_TYPE_GET, nullptr, 0));
    }
    EXPECT_EQ(std::vector<std::string>{}, errors.Texts());
}

TEST(TarnDepthDeviceMftTest, ShutdownComesWhileTheCameraStillAnswersAnApplication)
{
    struct
    {
        KSPROPERTY_TARN_HW_COMMAND command;
        UINT32 answer[2];
    } echo{{kOpcodeEcho, 8, 11, 22, 33, 44}, {}};
    BYTE laser = 7;
    UINT32 preset = TARN_DEPTH_PRESET_CLOSE_UP; // takes many calls of the camera
    const std::function<HRESULT(DepthServer &)> calls[] = {
        [&](DepthServer &server) {
            return server.SendProperty(KSPROPERTYSETID_TARN_DEPTH_CONTROL, kControlLaserPower, KSPROPERTY_TYPE_SET,
                                       &laser, sizeof(laser));
        },
        [&](DepthServer &server) {
            return server.SendProperty(KSPROPERTYSETID_TARN_DMFT_CONTROL, KSPROPERTY_TARN_DMFT_CONTROL_HW_COMMAND,
                                       KSPROPERTY_TYPE_GET, &echo, sizeof(echo));
        },
        [&](DepthServer &server) { return server.SetProperty(KSPROPERTY_TARN_DMFT_CONTROL_DEPTH_PRESETS, preset); }};
    for (const auto &call : calls)
    {
        SCOPED_TRACE(testing::Message() << "call " << &call - calls);
        DepthServer server;
        ASSERT_HR(S_OK, server.Run(kDepth, 320, 240, 30));
        FaultPlan plan;
        plan.ksDelay = std::chrono::milliseconds(200);
        plan.ksDelayedCall = 1;
        server.camera->Faults().SetPlan(plan);
        const auto arrived = [&] { return server.camera->Calls(Method::KsProperty); };
        const std::uint64_t before = arrived();
        std::thread application([&] { EXPECT_HR(S_OK, call(server)); });
        EXPECT_TRUE(WaitUntil([&] { return arrived() > before; }));
        EXPECT_HR(S_OK, server.ShutDown());
        application.join();
        EXPECT_EQ(0u, server.camera->Ks().EventListenerCount());
        EXPECT_EQ(&call != &calls[0], server.camera->Controls().ValueOf(kControlLaserPower) != laser);
    }
    EXPECT_EQ(22u, echo.answer[1]);
}

TEST(TarnDepthDeviceMftTest, ATransformReleasedWithoutShutdownLeavesNothing)
{
    for (const DWORD output : {kDepth, kInfrared}) // infrared for face login
    {
        const auto camera = MakeCom<SimulatedCamera>(DepthServer::SteppedTarnDepth());
        {
            DepthServer server(camera);
            ASSERT_HR(S_OK, server.SetFaceLogin(true));
            ASSERT_HR(S_OK, server.Start(output));
            EXPECT_EQ(1u, camera->Ks().EventListenerCount());
            EXPECT_EQ(output == kDepth,
                      LaserPowerOf(TARN_DEPTH_PRESET_DEFAULT) == camera->Controls().ValueOf(kControlLaserPower));
            server.isShutDown = true; // as far as the server cares
        }
        EXPECT_TRUE(WaitUntil([&] { return ReferenceCount(camera) == 1; }));
        EXPECT_EQ(0u, camera->Ks().EventListenerCount());
        EXPECT_EQ(LaserPowerOf(TARN_DEPTH_PRESET_DEFAULT), camera->Controls().ValueOf(kControlLaserPower));
    }
}

} // namespace
