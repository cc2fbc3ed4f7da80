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
        std::uint16_t value = 0;
        std::memcpy(&value, bytes.data() + 2 * (plane * pixels + i), sizeof(value));
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

TEST(FrameLayoutTest, EachFormatHoldsTheScenesPlanesInOrder)
{
    const struct
    {
        const GUID &subtype;
        std::vector<Expected> planes;
        UINT32 fps;
    } cases[] = {{CUSTOM_GUID_KELP_Z, {kDepth}, 30},
                 {CUSTOM_GUID_KELP_ZI, {kInfrared, kDepth}, 30},
                 {CUSTOM_GUID_KELP_ZC, {kConfidence, kDepth}, 30},
                 {CUSTOM_GUID_KELP_FACE_LOGIN, {kInfrared}, 60}};
    for (const auto &[subtype, planes, fps] : cases)
    {
        auto configuration = CameraConfiguration::TarnDepth();
        configuration.guardPages = true;
        const auto camera = MakeCamera(configuration);
        const auto samples = Capture(*camera.Get(), MakeVideoType(subtype, 640, 480, fps).Get(), 3);
        camera->Pins().StopAll();

        ASSERT_EQ(3U, samples.size());
        for (std::uint32_t number = 0; number < samples.size(); ++number)
        {
            const auto bytes = BytesOf(samples[number].Get());
            ASSERT_EQ(planes.size() * 640 * 480 * 2, bytes.size());
            const FrameRequest request{number, 640, 480, fps == 30 || number % 2 == 0};
            for (std::size_t plane = 0; plane < planes.size(); ++plane)
            {
                EXPECT_TRUE(SamePlane(bytes, plane, request, planes[plane])) << "plane " << plane;
            }
        }
    }
}

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

TEST(FrameMetadataTest, RecordTellsHowTheFrameWasTaken)
{
    const auto camera = MakeCamera(CameraConfiguration::TarnDepth());
    camera->Controls().privacy = true;
    camera->Controls().confidenceSuppressed = true;
    const auto samples = Capture(*camera.Get(), MakeVideoType(CUSTOM_GUID_KELP_FACE_LOGIN, 640, 480, 60).Get(), 2);
    camera->Pins().StopAll();

    ASSERT_EQ(2U, samples.size());
    LONGLONG time = 0;
    EXPECT_HR(S_OK, samples[1]->GetSampleTime(&time));
    const auto record = RecordOf(samples[1].Get());
    ASSERT_TRUE(record.has_value());
    EXPECT_EQ(1U, record->frameCounter);
    EXPECT_EQ(time, record->timestamp100ns);
    EXPECT_EQ(0, record->illumination);
    // Two places are read by offset: the payload begins behind a foreign item of 24 bytes and its own header.
    const auto items = MetadataItems(samples[0].Get());
    EXPECT_EQ(TARN_FRAME_FLAG_CONFIDENCE_SUPPRESSED | TARN_FRAME_FLAG_PRIVACY, items.at(32 + 5));
    EXPECT_EQ(1, items.at(32 + 48));
}

} // namespace
} // namespace tarn_sim
