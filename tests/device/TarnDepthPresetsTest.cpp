#include "device/TarnDepthPresets.h"

#include "tests/device/DepthCamera.h"

using namespace mft_core;
using namespace tarn_test;
using Types = TarnDepthPresets::PresetTypes;

namespace
{

// Everything of a preset that the camera remembers.
struct CameraState
{
    explicit CameraState(const DepthCamera &device)
    {
        const auto firmware = device.camera->Ks().FirmwareNow();
        autoRange = firmware.autoRange;
        parameters = {firmware.autoRangeParam1, firmware.autoRangeParam2};
        hdrConfiguration = firmware.hdrOn ? firmware.hdrConfiguration : std::vector<std::uint8_t>{};
        for (const ULONG id :
             {tarn_sim::kControlLaserPower, tarn_sim::kControlAccuracy, tarn_sim::kControlMotionVersusRange,
              tarn_sim::kControlFilterOption, tarn_sim::kControlConfidenceThreshold})
        {
            controls.push_back(device.camera->Controls().ValueOf(id));
        }
    }
    bool operator==(const CameraState &) const = default;

    std::vector<int> controls;
    std::vector<std::uint8_t> autoRange;
    std::vector<std::uint32_t> parameters;
    std::vector<std::uint8_t> hdrConfiguration; // empty: off
};

class TarnDepthPresetsTest : public testing::Test
{
  protected:
    DepthCamera device;
    std::shared_ptr<TarnDepthPresets> presets = std::make_shared<TarnDepthPresets>(device.unit.Get(), device.pipe);
};

TEST_F(TarnDepthPresetsTest, EveryPresetIsTakenWholeByTheCamera)
{
    ASSERT_HR(S_OK, presets->Init());
    for (const DepthPreset &preset : DepthPresetTable())
    {
        ASSERT_HR(S_OK, presets->ApplyPreset(static_cast<Types>(preset.type))) << preset.name;

        const CameraState state(device);
        EXPECT_EQ(static_cast<Types>(preset.type), presets->GetCurrentPreset());
        EXPECT_EQ((std::vector<int>{preset.laserPower, preset.accuracy, preset.motionVersusRange, preset.filterOption,
                                    preset.confidenceThreshold}),
                  state.controls);
        EXPECT_EQ(preset.autoRange.noBlock ? 0u : 12u, state.autoRange.size());
        EXPECT_NE(preset.hdr.on, state.hdrConfiguration.empty());
    }
    EXPECT_EQ(0u, device.camera->Ks().FirmwareNow().refused);
}

TEST_F(TarnDepthPresetsTest, FirmwareBlocksAreLaidOutAsDocumented)
{
    ASSERT_HR(S_OK, presets->ApplyPreset(Types::HIGH_CONTRAST));

    const tarn_sim::FirmwareState state = device.camera->Ks().FirmwareNow();
    EXPECT_EQ((std::vector<std::uint8_t>{10, 0, 60, 0, 30, 0, 16, 0, 16, 0, 16, 0}), state.autoRange);
    EXPECT_EQ(1u, state.autoRangeParam1);
    EXPECT_EQ(2u, state.autoRangeParam2);
    EXPECT_EQ((std::vector<std::uint8_t>{0xF4, 0x01, 0, 0, 0x40, 0x1F, 0, 0}), state.hdrConfiguration);
}

TEST_F(TarnDepthPresetsTest, AnUnknownPresetChangesNothing)
{
    ASSERT_HR(S_OK, presets->ApplyPreset(Types::CLOSE_UP));
    const CameraState before(device);
    device.camera->Ks().ClearTraffic();

    for (const std::uint32_t unknown : {7U, 13U, 15U, 0xFFFFFFFFU})
    {
        EXPECT_HR(E_INVALIDARG, presets->ApplyPreset(Types{unknown}));
    }

    EXPECT_TRUE(device.camera->Ks().Traffic().empty());
    EXPECT_EQ(Types::CLOSE_UP, presets->GetCurrentPreset());
    EXPECT_EQ(before, CameraState(device));
}

TEST_F(TarnDepthPresetsTest, AFailureAtAnyStepLeavesTheFormerPresetInForce)
{
    for (const auto &[former, next] :
         {std::pair{Types::FAST_MOTION, Types::HIGH_CONTRAST}, std::pair{Types::HIGH_CONTRAST, Types::FACE_LOGIN}})
    {
        device.camera->Faults().SetPlan({});
        ASSERT_HR(S_OK, presets->ApplyPreset(former));
        const CameraState before(device);
        std::uint32_t failing = 1;
        for (;; ++failing)
        {
            const TraceLines trace;
            device.FailKsCall(failing);
            const HRESULT result = presets->ApplyPreset(next);
            if (SUCCEEDED(result))
            {
                break;
            }
            EXPECT_HR(E_ABORT, result);
            EXPECT_EQ(former, presets->GetCurrentPreset());
            EXPECT_EQ(before, CameraState(device)) << "KS call " << failing;
            EXPECT_TRUE(trace.Contains("failed at"));
            EXPECT_TRUE(trace.Contains("stays in force"));
            ASSERT_LT(failing, 100u);
        }
        EXPECT_GE(failing, 10u); // five controls, and each firmware command twice
        EXPECT_EQ(next, presets->GetCurrentPreset());
    }
}

TEST_F(TarnDepthPresetsTest, ACameraThatTakesNothingAnyMoreIsReported)
{
    ASSERT_HR(S_OK, presets->Init());
    const TraceLines trace;
    device.FailKsCall(3, true);

    EXPECT_HR(E_ABORT, presets->ApplyPreset(Types::LOW_POWER));

    EXPECT_EQ(Types::DEFAULT, presets->GetCurrentPreset());
    EXPECT_TRUE(trace.Contains("could not be set back"));
    EXPECT_FALSE(trace.Contains("stays in force"));
}

TEST_F(TarnDepthPresetsTest, FaceLoginEndsWithWhatApplicationsWantAlsoAfterRefusals)
{
    const auto inForce = [this](Types type) {
        return device.camera->Controls().ValueOf(tarn_sim::kControlLaserPower) ==
                   FindDepthPreset(static_cast<std::uint32_t>(type))->laserPower &&
               presets->GetCurrentPreset() == type;
    };
    ASSERT_HR(S_OK, presets->ApplyPreset(Types::LOW_POWER));
    ASSERT_HR(S_OK, presets->BeginFaceLogin());
    EXPECT_TRUE(inForce(Types::FACE_LOGIN));
    EXPECT_EQ(Types::LOW_POWER, presets->GetWantedPreset());
    device.camera->Ks().ClearTraffic();
    EXPECT_HR(S_OK, presets->ApplyPreset(Types::CLOSE_UP));
    EXPECT_HR(E_INVALIDARG, presets->ApplyPreset(Types{13}));
    EXPECT_HR(S_OK, presets->RestoreWantedPreset());
    EXPECT_TRUE(device.camera->Ks().Traffic().empty());
    EXPECT_EQ(Types::CLOSE_UP, presets->GetWantedPreset());

    device.FailKsCall(1);
    EXPECT_HR(E_ABORT, presets->EndFaceLogin());
    EXPECT_TRUE(inForce(Types::FACE_LOGIN)); // and the next face login does not take it for the wanted one
    ASSERT_HR(S_OK, presets->BeginFaceLogin());
    ASSERT_HR(S_OK, presets->EndFaceLogin());
    EXPECT_TRUE(inForce(Types::CLOSE_UP));

    // A camera that neither takes a preset nor lets go of its first steps gets the wanted one later.
    device.FailKsCall(3, true);
    EXPECT_HR(E_ABORT, presets->BeginFaceLogin());
    EXPECT_HR(E_ABORT, presets->RestoreWantedPreset());
    EXPECT_NE(FindDepthPreset(TARN_DEPTH_PRESET_CLOSE_UP)->laserPower,
              device.camera->Controls().ValueOf(tarn_sim::kControlLaserPower));
    device.camera->Faults().SetPlan({});
    EXPECT_HR(S_OK, presets->RestoreWantedPreset());
    EXPECT_TRUE(inForce(Types::CLOSE_UP));
    device.camera->Ks().ClearTraffic();
    EXPECT_HR(S_OK, presets->EndFaceLogin()); // it has not begun
    EXPECT_HR(S_OK, presets->RestoreWantedPreset());
    EXPECT_TRUE(device.camera->Ks().Traffic().empty());
}

TEST_F(TarnDepthPresetsTest, PresetsFromTwoThreadsDoNotMix)
{
    const auto apply = [this](Types first, Types second) {
        for (int i = 0; i < 100; ++i)
        {
            EXPECT_HR(S_OK, presets->ApplyPreset(i % 2 == 0 ? first : second));
        }
    };
    std::thread other([&] { apply(Types::HIGH_CONTRAST, Types::CLOSE_UP); });
    apply(Types::FAST_MOTION, Types::LONG_DISTANCE);
    other.join();

    const CameraState afterwards(device);
    ASSERT_HR(S_OK, presets->ApplyPreset(presets->GetCurrentPreset()));
    EXPECT_EQ(afterwards, CameraState(device));
}

} // namespace
