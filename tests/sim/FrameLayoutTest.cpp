// The camera's frame formats, byte by byte, against the scene it looks at.
#include "sim/FrameComposer.h"

#include "sim/GeneratedScene.h"
#include "tests/sim/SimCase.h"

namespace tarn_sim
{
namespace
{

using Expected = std::function<std::uint32_t(const FrameRequest &, std::uint32_t x, std::uint32_t y)>;

// Compares a 16-bit plane pixel by pixel and reports the first difference.
testing::AssertionResult SamePlane(const std::vector<std::uint8_t> &bytes, std::size_t plane,
                                   const FrameRequest &request, const Expected &expected)
{
    const std::size_t pixels = std::size_t{request.width} * request.height;
    for (std::size_t i = 0; i < pixels; ++i)
    {
        const auto x = static_cast<std::uint32_t>(i % request.width);
        const auto y = static_cast<std::uint32_t>(i / request.width);
        const std::uint32_t value = Value16(bytes, plane * pixels + i);
        if (value != expected(request, x, y))
        {
            return testing::AssertionFailure() << "frame " << request.number << " at " << x << "," << y << ": " << value
                                               << " instead of " << expected(request, x, y);
        }
    }
    return testing::AssertionSuccess();
}

const Expected kDepth = GeneratedScene::DepthEighthMm;
const Expected kInfrared = GeneratedScene::Infrared;
// A confidence plane seen as 16-bit values: two bytes each in its first half, nothing in the second.
const Expected kConfidence = [](const FrameRequest &request, std::uint32_t x, std::uint32_t y) -> std::uint32_t {
    const std::uint32_t index = 2 * (y * request.width + x);
    if (index >= request.width * request.height)
    {
        return 0;
    }
    const auto at = [&request](std::uint32_t i) {
        return GeneratedScene::Confidence(request, i % request.width, i / request.width);
    };
    return std::uint32_t{at(index)} | std::uint32_t{at(index + 1)} << 8;
};

std::vector<ComPtr<IMFSample>> Capture(SimulatedCamera &camera, const GUID &subtype, UINT32 width, UINT32 height,
                                       UINT32 fps, std::uint32_t frames)
{
    KeepingSink sink;
    camera.SetFrameSink(&sink);
    const auto type = MakeVideoType(subtype, width, height, fps);
    EXPECT_HR(S_OK, camera.SetPinState(0, DeviceStreamState_Run, type.Get()));
    EXPECT_HR(S_OK, camera.Step(0, frames, kLongEnough));
    EXPECT_HR(S_OK, camera.SetPinState(0, DeviceStreamState_Stop, nullptr));
    camera.SetFrameSink(nullptr);
    return sink.Take();
}

struct LayoutCase
{
    const char *name;
    const GUID *subtype;
    std::vector<const Expected *> planes;
};

class FrameLayoutTest : public testing::TestWithParam<LayoutCase>
{
};

TEST_P(FrameLayoutTest, HoldsTheScenesPlanesInOrder)
{
    const auto &[name, subtype, planes] = GetParam();
    auto configuration = CameraConfiguration::TarnDepth();
    configuration.guardPages = true;
    const auto camera = MakeCamera(configuration);

    const bool isFaceLogin = IsEqualGUID(*subtype, kSubtypeFaceLogin) != FALSE;
    const auto samples = Capture(*camera.Get(), *subtype, 640, 480, isFaceLogin ? 60 : 30, 3);

    ASSERT_EQ(3U, samples.size());
    for (std::uint32_t number = 0; number < samples.size(); ++number)
    {
        const auto bytes = BytesOf(samples[number].Get());
        ASSERT_EQ(planes.size() * 640 * 480 * 2, bytes.size());
        const FrameRequest request{number, 640, 480, !isFaceLogin || number % 2 == 0};
        for (std::size_t plane = 0; plane < planes.size(); ++plane)
        {
            EXPECT_TRUE(SamePlane(bytes, plane, request, *planes[plane]));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, FrameLayoutTest,
                         testing::Values(LayoutCase{"INVZ", &kSubtypeDepth, {&kDepth}},
                                         LayoutCase{"INZI", &kSubtypeInfraredDepth, {&kInfrared, &kDepth}},
                                         LayoutCase{"INZC", &kSubtypeConfidenceDepth, {&kConfidence, &kDepth}},
                                         LayoutCase{"PAIR", &kSubtypeFaceLogin, {&kInfrared}}),
                         [](const auto &layoutCase) { return std::string(layoutCase.param.name); });

TEST(GeneratedSceneTest, RedrawsOnlyTheBallAtAnySize)
{
    GeneratedScene scene;
    for (const auto &[width, height] : {std::pair{320U, 240U}, {1280U, 720U}, {37U, 23U}})
    {
        std::vector<std::uint8_t> pixels(std::size_t{width} * height * 2);
        for (const std::uint64_t number : {0U, 1U, 67U, 180U, 239U, 241U})
        {
            const FrameRequest request{number, width, height, true};
            scene.Render(request, Plane::DepthEighthMm, pixels.data());
            EXPECT_TRUE(SamePlane(pixels, 0, request, kDepth));
        }
    }
}

TEST(GeneratedSceneTest, StandsWhereItsDescriptionSays)
{
    const FrameRequest request{0, 640, 480, true};

    EXPECT_EQ(0, GeneratedScene::DepthMillimetres(request, 0, 100));
    EXPECT_EQ(1200.0, GeneratedScene::DepthMillimetres(request, 400, 400));
    EXPECT_NEAR(550.0, GeneratedScene::DepthMillimetres(request, 507, 240), 1.0); // centre of the ball
    EXPECT_EQ(1023, GeneratedScene::Infrared(request, 507, 240));
    EXPECT_LT(900.0, GeneratedScene::DepthMillimetres(request, 20, 240));
}

TEST(FrameMetadataTest, RecordTellsHowTheFrameWasTaken)
{
    const auto camera = MakeCamera(CameraConfiguration::TarnDepth());
    camera->SetPrivacy(true);
    camera->SetConfidenceSuppressed(true);
    camera->SetErrorCode(9);

    const auto samples = Capture(*camera.Get(), kSubtypeFaceLogin, 640, 480, 60, 4);

    ASSERT_EQ(4U, samples.size());
    LONGLONG lastTime = -1;
    for (std::uint64_t number = 0; number < samples.size(); ++number)
    {
        LONGLONG time = 0;
        LONGLONG duration = 0;
        EXPECT_HR(S_OK, samples[number]->GetSampleTime(&time));
        EXPECT_HR(S_OK, samples[number]->GetSampleDuration(&duration));
        const auto record = RecordOf(samples[number].Get());
        ASSERT_TRUE(record.has_value());
        EXPECT_EQ(166666, duration);
        EXPECT_GT(time, lastTime);
        EXPECT_EQ(TARN_FRAME_METADATA_MAGIC, record->magic);
        EXPECT_EQ(number, record->frameCounter);
        EXPECT_EQ(time, record->timestamp100ns);
        EXPECT_EQ(number % 2 == 0 ? 1 : 0, record->illumination);
        EXPECT_EQ(TARN_FRAME_FLAG_CONFIDENCE_SUPPRESSED | TARN_FRAME_FLAG_PRIVACY, record->flags);
        EXPECT_EQ(kSubtypeFaceLogin.Data1, record->formatFourCc);
        EXPECT_EQ(9U, record->errorCode);
        EXPECT_EQ(16, record->laserPower);
        lastTime = time;
    }
    const auto items = MetadataItems(samples.front().Get());
    // The places that are read by offset: our payload begins behind a foreign item of 24 bytes and its own header.
    EXPECT_EQ(TARN_FRAME_FLAG_CONFIDENCE_SUPPRESSED | TARN_FRAME_FLAG_PRIVACY, items.at(32 + 5));
    EXPECT_EQ(1, items.at(32 + 48));
}

} // namespace
} // namespace tarn_sim
