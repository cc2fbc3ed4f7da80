// What the depth transform offers before anything streams.
#include "device/TarnDepthDeviceMft.h"

#include <cstring>
#include <vector>

#include "device/DepthPresetTable.h"
#include "tarn/firmware_errors.h"
#include "tests/device/DepthCamera.h"
#include "tests/device/DepthServer.h"
#include "tests/trace/TraceLines.h"

using tarn_sim::CameraConfiguration;
using tarn_sim::SimulatedCamera;
using tarn_test::DepthServer;
using tarn_test::kDepth;
using tarn_test::kInfrared;
using tarn_test::TestFrameServer;
using user_space_frameworks::MakeCom;

namespace
{

struct Model
{
    UINT32 width;
    UINT32 height;
    bool operator==(const Model &) const = default;
};

std::vector<Model> IntrinsicsOf(const DepthServer &server, DWORD output)
{
    ComPtr<IMFAttributes> attributes;
    EXPECT_HR(S_OK, server.transform->GetOutputStreamAttributes(output, &attributes));
    UINT32 size = 0;
    if (FAILED(attributes->GetBlobSize(MFStreamExtension_PinholeCameraIntrinsics, &size)))
    {
        return {};
    }
    std::vector<UINT8> blob(size);
    EXPECT_HR(S_OK, attributes->GetBlob(MFStreamExtension_PinholeCameraIntrinsics, blob.data(), size, nullptr));
    UINT32 count = 0;
    std::memcpy(&count, blob.data(), sizeof(count));
    EXPECT_EQ(size, sizeof(count) + count * sizeof(MFPinholeCameraIntrinsic_IntrinsicModel));
    std::vector<Model> models(count);
    for (UINT32 i = 0; i < count; ++i)
    {
        std::memcpy(&models[i], blob.data() + sizeof(count) + i * sizeof(MFPinholeCameraIntrinsic_IntrinsicModel),
                    sizeof(Model));
    }
    return models;
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

TEST(TarnDepthDeviceMftTest, DepthComesFirstInEighthsOfAMillimetre)
{
    DepthServer server;
    ASSERT_HR(S_OK, server.initialized);
    EXPECT_EQ(15u, TypeCount(server, kDepth));
    const ComPtr<IMFMediaType> type = server.OutputType(kDepth);
    GUID subtype{};
    EXPECT_HR(S_OK, type->GetGUID(MF_MT_SUBTYPE, &subtype));
    EXPECT_TRUE(IsEqualGUID(MFVideoFormat_D16, subtype));
    UINT64 unit = 0;
    EXPECT_HR(S_OK, type->GetUINT64(MF_MT_DEPTH_VALUE_UNIT, &unit));
    EXPECT_EQ(125000u, unit);
    EXPECT_EQ((std::vector<Model>{{640, 480}, {1280, 720}, {320, 240}}), IntrinsicsOf(server, kDepth));
    ComPtr<IMFAttributes> attributes;
    EXPECT_HR(S_OK, server.transform->GetOutputStreamAttributes(kDepth, &attributes));
    UINT32 size = 0;
    EXPECT_HR(S_OK, attributes->GetBlobSize(MFStreamExtension_CameraExtrinsics, &size));
    EXPECT_EQ(sizeof(MFCameraExtrinsics), size);
}

TEST(TarnDepthDeviceMftTest, TheFaceLoginTypeIsTheFirstOfTheInfraredOutput)
{
    DepthServer server;
    ASSERT_HR(S_OK, server.initialized);
    EXPECT_EQ(6u, TypeCount(server, kInfrared));
    const ComPtr<IMFMediaType> type = server.OutputType(kInfrared);
    mft_utils::MediaTypeData data;
    EXPECT_HR(S_OK, mft_utils::MediaTypeParser::GetMediaTypeData(data, type.Get()));
    EXPECT_EQ(360u, data.width);
    EXPECT_EQ(360u, data.height);
    EXPECT_EQ(60u, data.FPS());
    UINT32 stride = 0;
    UINT32 sampleSize = 0;
    EXPECT_HR(S_OK, type->GetUINT32(MF_MT_DEFAULT_STRIDE, &stride));
    EXPECT_HR(S_OK, type->GetUINT32(MF_MT_SAMPLE_SIZE, &sampleSize));
    EXPECT_EQ(360u, stride);
    EXPECT_EQ(360u * 360u, sampleSize);
    EXPECT_HR(S_OK, server.SetFaceLogin(true));
}

TEST(TarnDepthDeviceMftTest, ACameraWithoutFaceLoginFormatOffersNeitherTypeNorMode)
{
    DepthServer server(DepthServer::WithoutSubtype(CUSTOM_GUID_KELP_FACE_LOGIN));
    ASSERT_HR(S_OK, server.initialized);
    EXPECT_EQ(5u, TypeCount(server, kInfrared));
    EXPECT_EQ(nullptr, server.FindType(kInfrared, 360, 360, 60));
    EXPECT_HR(ERROR_SET_NOT_FOUND, server.SetFaceLogin(true));
}

TEST(TarnDepthDeviceMftTest, ACameraWithoutCalibrationWorksWithoutRecords)
{
    auto configuration = DepthServer::SteppedTarnDepth();
    configuration.calibrationTable.clear();
    DepthServer server(configuration);
    ASSERT_HR(S_OK, server.initialized);
    EXPECT_TRUE(IntrinsicsOf(server, kDepth).empty());
    ASSERT_HR(S_OK, server.Run(kDepth, 640, 480, 30));
    EXPECT_EQ(1u, server.StepAndCollect(kDepth, 1).size());
}

TEST(TarnDepthDeviceMftTest, AFilterWithTwoPinsIsRefused)
{
    auto configuration = DepthServer::SteppedTarnDepth();
    configuration.pins.push_back(configuration.pins.front());
    configuration.pins.back().streamId = 1;
    const TestFrameServer server(MakeCom<mft_core::TarnDepthDeviceMft>(), MakeCom<SimulatedCamera>(configuration));
    EXPECT_HR(E_FAIL, server.initialized);
}

TEST(TarnDepthDeviceMftTest, PrivatePropertiesAreServedAndOthersReachTheCamera)
{
    DepthServer server;
    ASSERT_HR(S_OK, server.initialized);
    KSPROPERTY_TARN_API_VERSION version{9, 9};
    EXPECT_HR(S_OK, server.SendProperty(KSPROPERTYSETID_TARN_DMFT_CONTROL, KSPROPERTY_TARN_DMFT_CONTROL_API_VERSION,
                                        KSPROPERTY_TYPE_GET, &version, sizeof(version)));
    EXPECT_EQ(7u, version.second);
    EXPECT_EQ(0u, server.Preset());
    struct
    {
        KSPROPERTY_TARN_HW_COMMAND command;
        UINT32 answer[2];
    } echo{{tarn_sim::kOpcodeEcho, 8, 11, 22, 33, 44}, {}};
    EXPECT_HR(S_OK, server.SendProperty(KSPROPERTYSETID_TARN_DMFT_CONTROL, KSPROPERTY_TARN_DMFT_CONTROL_HW_COMMAND,
                                        KSPROPERTY_TYPE_GET, &echo, sizeof(echo)));
    EXPECT_EQ(22u, echo.answer[1]);
    BYTE laser = 7;
    EXPECT_HR(S_OK, server.SendProperty(KSPROPERTYSETID_TARN_DEPTH_CONTROL, tarn_sim::kControlLaserPower,
                                        KSPROPERTY_TYPE_SET, &laser, sizeof(laser)));
    EXPECT_EQ(7, server.camera->Controls().ValueOf(tarn_sim::kControlLaserPower));
}

TEST(TarnDepthDeviceMftTest, AFirmwareErrorIsTracedWhenTheCameraSignalsIt)
{
    const tarn_test::TraceText trace;
    DepthServer server;
    ASSERT_HR(S_OK, server.Run(kDepth, 640, 480, 30));
    server.camera->Controls().SetErrorCode(TARN_FIRMWARE_ERROR_LASER_CURRENT);
    EXPECT_EQ(1u, server.camera->Ks().SignalAutoUpdate());
    EXPECT_TRUE(tarn_test::WaitUntil([&] { return trace.Contains("firmware error: laser current (2)"); }));
}

TEST(TarnDepthDeviceMftTest, AHealthySessionTracesNoError)
{
    const tarn_test::TraceLines errors(mft_utils::TraceLevel::Error);
    {
        DepthServer server;
        EXPECT_EQ(nullptr, server.FindType(kInfrared, 1, 1, 1)); // looked at every type
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

TEST(TarnDepthDeviceMftTest, ATransformReleasedWithoutShutdownLeavesNothing)
{
    for (const DWORD output : {kDepth, kInfrared}) // infrared for face login
    {
        auto camera = MakeCom<SimulatedCamera>(DepthServer::SteppedTarnDepth());
        {
            const ComPtr<IMFDeviceTransform> transform = MakeCom<mft_core::TarnDepthDeviceMft>();
            ComPtr<IMFAttributes> filter;
            ASSERT_HR(S_OK, MFCreateAttributes(&filter, 1));
            ASSERT_HR(S_OK, filter->SetUnknown(MF_DEVICEMFT_CONNECTED_FILTER_KSCONTROL,
                                               static_cast<IMFTransform *>(camera.Get())));
            ASSERT_HR(S_OK, transform->InitializeTransform(filter.Get()));
            ASSERT_HR(S_OK, tarn_test::DepthFrameServer::SetFaceLogin(transform, true));
            ComPtr<IMFMediaType> type;
            ASSERT_HR(S_OK, transform->GetOutputAvailableType(output, 0, &type));
            ASSERT_HR(S_OK, transform->SetOutputStreamState(output, type.Get(), DeviceStreamState_Run, 0));
            EXPECT_EQ(1u, camera->Ks().EventListenerCount());
            EXPECT_EQ(output == kDepth, LaserPowerOf(TARN_DEPTH_PRESET_DEFAULT) ==
                                            camera->Controls().ValueOf(tarn_sim::kControlLaserPower));
        }
        EXPECT_TRUE(tarn_test::WaitUntil([&] { return tarn_test::ReferenceCount(camera) == 1; }));
        EXPECT_EQ(0u, camera->Ks().EventListenerCount());
        EXPECT_EQ(LaserPowerOf(TARN_DEPTH_PRESET_DEFAULT), camera->Controls().ValueOf(tarn_sim::kControlLaserPower));
    }
}

} // namespace
