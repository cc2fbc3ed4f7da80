// Replay of recorded pictures: units, sizes, what is damaged.
#include "sim/RecordedFrames.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/sim/SimCase.h"

using namespace tarn_sim;

namespace
{

using Pixels = std::vector<std::uint16_t>;

class RecordedFramesTest : public testing::Test
{
  protected:
    void SetUp() override
    {
        if (!std::filesystem::is_directory(data))
        {
            GTEST_SKIP() << "no recorded frames: TARN_DATA_DIR is \"" << data.string() << "\"";
        }
    }
    Pixels Render(const char *set, const FrameRequest &request, Plane plane,
                  const RecordedFrameOptions &options = {}) const
    {
        Pixels pixels(std::size_t{request.width} * request.height);
        RecordedFrames(data / set, options).Render(request, plane, reinterpret_cast<std::uint8_t *>(pixels.data()));
        return pixels;
    }
    Pixels Raw(const char *set, const char *picture) const { return ReadGreyPng(data / set / picture).pixels; }

    const char *const dataFolder = std::getenv("TARN_DATA_DIR");
    const std::filesystem::path data = dataFolder == nullptr ? "" : dataFolder;
};

TEST_F(RecordedFramesTest, DepthIsConvertedByTheManifestsUnitAndClipped)
{
    Pixels fifths = Raw("cabinet-orbit", "depth_0003.png");
    for (auto &value : fifths) // 0.2 mm per count and 8 counts per mm: five counts make eight
    {
        value = static_cast<std::uint16_t>((value * 16U + 5U) / 10U);
    }
    // Starts over after the last of 58 pictures.
    EXPECT_EQ(fifths, Render("cabinet-orbit", {58 + 3, 640, 480, true}, Plane::DepthEighthMm));

    Pixels millimetres = Raw("boxes-and-hallway", "depth_0003.png");
    for (auto &value : millimetres)
    {
        value = static_cast<std::uint16_t>(std::min(value * 8, 65535));
    }
    EXPECT_EQ(65535, std::ranges::max(millimetres));
    EXPECT_EQ(millimetres, Render("boxes-and-hallway", {3, 640, 480, true}, Plane::DepthEighthMm));
    // What the caller says goes before the manifest.
    Pixels quarters = Raw("boxes-and-hallway", "depth_0003.png");
    for (auto &value : quarters)
    {
        value = static_cast<std::uint16_t>(std::min(value * 2, 65535));
    }
    EXPECT_EQ(quarters, Render("boxes-and-hallway", {3, 640, 480, true}, Plane::DepthEighthMm,
                               {.mmPerUnit = 0.25, .confidence = {}}));
}

TEST_F(RecordedFramesTest, PictureOfAnotherSizeIsCutAndFramedAroundItsCentre)
{
    const Pixels raw = Raw("tof-office", "depth_0000.png"); // 416 x 512
    const Pixels depth = Render("tof-office", {0, 640, 480, true}, Plane::DepthEighthMm);
    for (std::uint32_t y = 0; y < 480; ++y)
    {
        for (std::uint32_t x = 0; x < 640; ++x)
        {
            const bool inside = x >= 112 && x < 528;
            ASSERT_EQ(inside ? raw[(y + 16) * 416 + x - 112] * 8 : 0, depth[y * 640 + x]) << x << "," << y;
        }
    }
}

TEST_F(RecordedFramesTest, InfraredOfEveryRecorderFitsIntoTenBits)
{
    for (const char *set : {"tof-office", "tof-cable-wall", "tof-mug", "boxes-and-hallway"})
    {
        const Pixels infrared = Render(set, {0, 416, 416, true}, Plane::Infrared);
        const auto largest = std::ranges::max_element(infrared);
        EXPECT_GE(1023, *largest) << set;
        EXPECT_LT(50, *largest) << set;
        const Pixels unlit = Render(set, {0, 416, 416, false}, Plane::Infrared);
        EXPECT_EQ(*largest / 8, unlit[static_cast<std::size_t>(largest - infrared.begin())]) << set;
    }
    EXPECT_EQ(Raw("tof-cable-wall", "ir_0000.png")[0] >> 2,
              Render("tof-cable-wall", {0, 512, 512, true}, Plane::Infrared)[0]);
}

TEST_F(RecordedFramesTest, AnErrorMeasureBecomesConfidence)
{
    const Pixels raw = Raw("tof-office", "confidence_0000.png");
    std::vector<std::uint8_t> confidence(416U * 512);
    RecordedFrames(data / "tof-office").Render({0, 416, 512, true}, Plane::Confidence, confidence.data());
    EXPECT_TRUE(std::ranges::equal(raw, confidence, {}, [](int error) { return 255 - std::min(error * 8, 255); }));
}

TEST_F(RecordedFramesTest, ADamagedPictureIsNamed)
{
    const auto folder = std::filesystem::temp_directory_path() / "tarn damaged";
    std::filesystem::create_directories(folder);
    std::ifstream whole(data / "tof-mug" / "depth_0000.png", std::ios::binary);
    std::string bytes(20000, '\0');
    whole.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    std::ofstream(folder / "depth_0000.png", std::ios::binary) << bytes;
    EXPECT_EQ("cannot read picture " + (folder / "depth_0000.png").string() + ": the picture data are damaged",
              tarn_test::ThrownText<std::runtime_error>([&] { const RecordedFrames frames(folder); }));
    std::filesystem::remove_all(folder);
}

} // namespace
