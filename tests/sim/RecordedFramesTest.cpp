// Replay of recorded pictures: units, sizes, what is missing, what is broken.
#include "sim/RecordedFrames.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/sim/SimCase.h"

namespace tarn_sim
{
namespace
{

std::filesystem::path DataFolder()
{
    const char *const folder = std::getenv("TARN_DATA_DIR");
    return folder == nullptr ? std::filesystem::path() : std::filesystem::path(folder);
}

class RecordedFramesTest : public testing::Test
{
  protected:
    void SetUp() override
    {
        if (!std::filesystem::is_directory(DataFolder()))
        {
            GTEST_SKIP() << "no recorded frames: TARN_DATA_DIR is \"" << DataFolder().string() << "\"";
        }
    }

    static std::vector<std::uint16_t> Render(RecordedFrames &frames, const FrameRequest &request, Plane plane)
    {
        std::vector<std::uint16_t> pixels(std::size_t{request.width} * request.height);
        frames.Render(request, plane, reinterpret_cast<std::uint8_t *>(pixels.data()));
        return pixels;
    }
};

TEST_F(RecordedFramesTest, ConvertsDepthByTheManifestsUnit)
{
    RecordedFrames frames(DataFolder() / "cabinet-orbit");
    const auto raw = ReadGreyPng(DataFolder() / "cabinet-orbit" / "depth_0003.png");
    EXPECT_EQ(58U, frames.PictureCount());
    EXPECT_EQ(0.2, frames.MmPerUnit());

    const auto depth = Render(frames, {58 + 3, 640, 480, true}, Plane::DepthEighthMm); // starts over after the last

    for (std::size_t i = 0; i < depth.size(); ++i)
    {
        // 0.2 mm per count and 8 counts per mm: five counts make eight.
        ASSERT_EQ((raw.pixels[i] * 8U * 2U + 5U) / 10U, depth[i]) << "pixel " << i;
    }
}

TEST_F(RecordedFramesTest, ClipsWhatSixteenBitsCannotHold)
{
    RecordedFrames frames(DataFolder() / "boxes-and-hallway");
    const auto raw = ReadGreyPng(DataFolder() / "boxes-and-hallway" / "depth_0003.png");

    const auto depth = Render(frames, {3, 640, 480, true}, Plane::DepthEighthMm);

    std::size_t clipped = 0;
    for (std::size_t i = 0; i < depth.size(); ++i)
    {
        clipped += raw.pixels[i] > 8191 ? 1 : 0;
        ASSERT_EQ(std::min(raw.pixels[i] * 8, 65535), depth[i]);
    }
    EXPECT_LT(0U, clipped);
    EXPECT_EQ(2.5, RecordedFrames(DataFolder() / "tof-mug", {.mmPerUnit = 2.5}).MmPerUnit());
}

TEST_F(RecordedFramesTest, CutsAndFramesAroundTheCentre)
{
    RecordedFrames frames(DataFolder() / "tof-office"); // 416 x 512
    const auto raw = ReadGreyPng(DataFolder() / "tof-office" / "depth_0000.png");

    const auto depth = Render(frames, {0, 640, 480, true}, Plane::DepthEighthMm);

    for (std::uint32_t y = 0; y < 480; ++y)
    {
        for (std::uint32_t x = 0; x < 640; ++x)
        {
            const bool inside = x >= 112 && x < 528;
            const int expected = inside ? raw.pixels[(y + 16) * 416 + x - 112] * 8 : 0;
            ASSERT_EQ(expected, depth[y * 640 + x]) << x << "," << y;
        }
    }
}

TEST_F(RecordedFramesTest, FitsInfraredOfEveryRecorderIntoTenBits)
{
    for (const char *set : {"tof-office", "tof-cable-wall", "tof-mug", "boxes-and-hallway"})
    {
        RecordedFrames frames(DataFolder() / set);
        const auto infrared = Render(frames, {0, 416, 416, true}, Plane::Infrared);
        const auto unlit = Render(frames, {0, 416, 416, false}, Plane::Infrared);
        const auto largest = std::ranges::max_element(infrared);
        EXPECT_GE(1023, *largest) << set;
        EXPECT_LT(50, *largest) << set;
        EXPECT_EQ(*largest / 8, unlit[static_cast<std::size_t>(largest - infrared.begin())]) << set;
    }
    RecordedFrames wall(DataFolder() / "tof-cable-wall");
    const auto raw = ReadGreyPng(DataFolder() / "tof-cable-wall" / "ir_0000.png");
    EXPECT_EQ(raw.pixels[0] >> 2, Render(wall, {0, 512, 512, true}, Plane::Infrared)[0]);
}

TEST_F(RecordedFramesTest, TurnsAnErrorMeasureIntoConfidence)
{
    RecordedFrames frames(DataFolder() / "tof-office");
    const auto raw = ReadGreyPng(DataFolder() / "tof-office" / "confidence_0000.png");
    std::vector<std::uint8_t> confidence(416U * 512);

    frames.Render({0, 416, 512, true}, Plane::Confidence, confidence.data());

    for (std::size_t i = 0; i < confidence.size(); ++i)
    {
        ASSERT_EQ(255 - std::min(raw.pixels[i] * 8, 255), confidence[i]);
    }
}

std::string MessageOf(const std::filesystem::path &folder)
{
    try
    {
        RecordedFrames frames(folder);
        return "no exception";
    }
    catch (const std::runtime_error &error)
    {
        return error.what();
    }
}

TEST(RecordedFramesErrorTest, SaysInOneLineWhatIsWrong)
{
    const auto folder = std::filesystem::temp_directory_path() / "tarn sim test";
    std::filesystem::remove_all(folder);
    EXPECT_EQ("no such folder: " + folder.string(), MessageOf(folder));

    std::filesystem::create_directories(folder);
    std::ofstream(folder / "notes.txt") << "nothing to see";
    std::ofstream(folder / "depth_x.png") << "nothing to see";
    EXPECT_EQ("no depth_NNNN.png or ir_NNNN.png pictures in " + folder.string(), MessageOf(folder));

    std::ofstream(folder / "depth_0001.png") << "not a picture at all";
    EXPECT_EQ("cannot read picture " + (folder / "depth_0001.png").string() + ": not a PNG picture", MessageOf(folder));
    std::filesystem::remove_all(folder);
}

TEST_F(RecordedFramesTest, RefusesADamagedPicture)
{
    const auto folder = std::filesystem::temp_directory_path() / "tarn damaged";
    std::filesystem::create_directories(folder);
    std::ifstream whole(DataFolder() / "tof-mug" / "depth_0000.png", std::ios::binary);
    std::string bytes(20000, '\0');
    whole.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    std::ofstream(folder / "depth_0000.png", std::ios::binary) << bytes;

    EXPECT_EQ("cannot read picture " + (folder / "depth_0000.png").string() + ": the picture data are damaged",
              MessageOf(folder));
    std::filesystem::remove_all(folder);
}

} // namespace
} // namespace tarn_sim
