// The scene that the camera looks at, and what it says of each frame.
#include "sim/GeneratedScene.h"

#include "tests/sim/SimCase.h"

using namespace tarn_sim;

namespace
{

TEST(GeneratedSceneTest, RedrawsOnlyTheBallAtAnySize)
{
    GeneratedScene scene;
    for (const auto &[width, height] : {std::pair{320U, 240U}, {1280U, 720U}, {37U, 23U}})
    {
        std::vector<std::uint16_t> pixels(std::size_t{width} * height);
        for (const std::uint64_t number : {0U, 1U, 67U, 180U, 239U, 241U})
        {
            const FrameRequest request{number, width, height, true};
            scene.Render(request, Plane::DepthEighthMm, reinterpret_cast<std::uint8_t *>(pixels.data()));
            for (std::size_t i = 0; i < pixels.size(); ++i)
            {
                ASSERT_EQ(GeneratedScene::DepthEighthMm(request, static_cast<std::uint32_t>(i % width),
                                                        static_cast<std::uint32_t>(i / width)),
                          pixels[i])
                    << "frame " << number << ", pixel " << i;
            }
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
    const auto record = RecordOf(samples[1].Get());
    ASSERT_TRUE(record.has_value());
    EXPECT_EQ(1U, record->frameCounter);
    EXPECT_EQ(tarn_test::TimeOf(samples[1]), record->timestamp100ns);
    EXPECT_EQ(0, record->illumination);
    // Two places are read by offset: the payload begins behind a foreign item of 24 bytes and its own header.
    const auto items = MetadataItems(samples[0].Get());
    EXPECT_EQ(TARN_FRAME_FLAG_CONFIDENCE_SUPPRESSED | TARN_FRAME_FLAG_PRIVACY, items.at(32 + 5));
    EXPECT_EQ(1, items.at(32 + 48));
}

} // namespace
