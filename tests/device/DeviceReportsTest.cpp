// What the camera reports about itself: the device-information record and firmware errors.
#include "device/TarnDeviceInfo.h"
#include "device/TarnFwErrorHandler.h"
#include "tarn/device_attributes.h"
#include "tarn/firmware_errors.h"
#include "tests/device/DepthCamera.h"
#include "tests/device/DepthServer.h"

using namespace mft_core;
using namespace tarn_test;
using tarn_sim::CameraConfiguration;

namespace
{

TEST(TarnDeviceInfoTest, TheRecordIsDecodedAndTraced)
{
    const TraceLines trace;
    const DepthCamera device;
    TarnDeviceInfo info(device.pipe, "Tarn Depth device info");

    ASSERT_HR(S_OK, info.Init());

    ASSERT_TRUE(info.Record());
    EXPECT_EQ(412, info.Record()->temperatureDeciC);
    // Texts that fill their field have no end of their own.
    EXPECT_TRUE(trace.Contains("Tarn simulated, serial number TRN0000000000042, firmware 3.10.2.17, "
                               "controller 1.4.0.7, hardware revision 5"));
    EXPECT_TRUE(trace.Contains("sensor SNS-0017, laser LSR-0023, module state 0, calibrated at 1700000000 "
                               "(version 3), 41.2 degrees Celsius"));
}

TEST(TarnDeviceInfoTest, ItIsFoundOnTheTransformAndOnBothOfItsOutputs)
{
    DepthServer server;
    ComPtr<IMFTransform> face;
    ASSERT_HR(S_OK, server.transform.As(&face));
    ComPtr<IMFAttributes> stores[3];
    ASSERT_HR(S_OK, face->GetAttributes(&stores[0]));
    ASSERT_HR(S_OK, server.transform->GetOutputStreamAttributes(kDepth, &stores[1]));
    ASSERT_HR(S_OK, server.transform->GetOutputStreamAttributes(kInfrared, &stores[2]));
    for (const auto &store : stores)
    {
        EXPECT_EQ(CameraConfiguration::TarnDepth().deviceInfo, BlobOf(store, TARN_DEVICE_INFO_RECORD));
        for (const auto &[key, expected] : {std::pair{&TARN_DEVICE_SERIAL_NUMBER, L"TRN0000000000042"}, // a full field
                                            std::pair{&TARN_DEVICE_FIRMWARE_VERSION, L"3.10.2.17"},
                                            std::pair{&TARN_DEVICE_PRODUCT_NAME, L"Tarn simulated"}})
        {
            wchar_t text[32] = L"";
            EXPECT_HR(S_OK, store->GetString(*key, text, 32, nullptr));
            EXPECT_STREQ(expected, text);
        }
    }
}

TEST(TarnDeviceInfoTest, AnAnswerThatDoesNotCheckLeavesNoRecord)
{
    for (const std::size_t spoilt : {0u, 2u, 60u, 173u}) // version, size, contents, checksum
    {
        auto configuration = CameraConfiguration::TarnDepth();
        configuration.deviceInfo.at(spoilt) ^= 0x10;
        const TraceLines trace;
        const DepthCamera device(configuration);
        TarnDeviceInfo info(device.pipe, "Info");

        EXPECT_HR(S_OK, info.Init());

        EXPECT_FALSE(info.Record());
        ComPtr<IMFAttributes> store;
        EXPECT_HR(S_OK, MFCreateAttributes(&store, 1));
        EXPECT_HR(S_OK, info.AddTo(store.Get()));
        UINT32 count = 1;
        EXPECT_HR(S_OK, store->GetCount(&count));
        EXPECT_EQ(0u, count);
        EXPECT_TRUE(trace.Contains("does not check"));
    }
}

TEST(TarnDeviceInfoTest, ACommandThatFailsIsReturned)
{
    auto configuration = CameraConfiguration::TarnDepth();
    configuration.deviceInfo.clear(); // refused
    const DepthCamera refusing(configuration);
    EXPECT_HR(E_FAIL, TarnDeviceInfo(refusing.pipe, "Info").Init());
    const DepthCamera failing;
    failing.FailKsCall(1);
    EXPECT_HR(E_ABORT, TarnDeviceInfo(failing.pipe, "Info").Init());
    EXPECT_HR(E_POINTER, TarnDeviceInfo(nullptr, "Info").Init());
}

TEST(TarnFwErrorHandlerTest, AnEventTracesNameAndCode)
{
    const DepthCamera device;
    TarnFwErrorHandler handler(device.unit.Get(), KSPROPERTYSETID_TARN_DEPTH_CONTROL, tarn_sim::kControlDepthError,
                               "Test");
    const auto tracedFor = [&](std::uint8_t code, const char *text) {
        const TraceLines trace;
        device.camera->Controls().SetErrorCode(code);
        handler.OnEvent();
        return trace.Contains(text);
    };
    EXPECT_TRUE(tracedFor(TARN_FIRMWARE_ERROR_LASER_TEMPERATURE, "firmware error: laser temperature (1)"));
    EXPECT_TRUE(tracedFor(TARN_FIRMWARE_ERROR_WATCHDOG, "firmware error: watchdog restart (8)"));
    EXPECT_TRUE(tracedFor(200, "firmware error: unknown (200)"));
    EXPECT_TRUE(tracedFor(TARN_FIRMWARE_ERROR_NONE, "no firmware error"));
    device.FailKsCall(1);
    EXPECT_TRUE(tracedFor(TARN_FIRMWARE_ERROR_SENSOR, "cannot be read"));
}

} // namespace
