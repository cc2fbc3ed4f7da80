#include "tools/pictures/FrameWriter.h"

#include <nlohmann/json.hpp>

#include <fstream>

#include "TemporaryFolder.h"
#include "sim/PngImage.h"
#include "sim/RecordingNotes.h"
#include "tarn/sample_attributes.h"
#include "tools/command/ExitCode.h"
#include "tests/support/Expect.h"

using namespace tarn_host;

namespace
{

using tarn_host_test::TemporaryFolder;

FrameFormat Format(PixelKind pixels, std::uint32_t width, std::uint32_t height)
{
    return {{width, height, 30}, pixels, "TEST"};
}

TEST(FrameWriterTest, DepthWithConfidenceBecomesTwoPicturesAndALine)
{
    const TemporaryFolder folder;
    // Two pixels of depth, then a second plane that is not part of the picture.
    const std::array<std::uint8_t, 8> pixels{0x34, 0x12, 0xFF, 0x00, 0xEE, 0xEE, 0xEE, 0xEE};
    SampleDetails details;
    details.time100ns = 9007199254740993;
    details.confidence = {15, 1, 0xEE, 0xEE};
    details.record.emplace().frameCounter = 77;
    details.intrinsics.resize(1);
    details.intrinsics.front().CameraModel.FocalLength = {0.5F, 0.25F};
    {
        FrameWriter writer(folder.Path());
        writer.Write("depth", 12, Format(PixelKind::Depth16, 2, 1), std::as_bytes(std::span(pixels)), details);
    }

    const tarn_sim::GreyImage depth = tarn_sim::ReadGreyPng(folder.Path() / "depth_000012.png");
    EXPECT_EQ(depth.bits, 16U);
    EXPECT_EQ(depth.pixels, (std::vector<std::uint16_t>{0x1234, 0x00FF}));
    const tarn_sim::GreyImage map = tarn_sim::ReadGreyPng(folder.Path() / "confidence_000012.png");
    EXPECT_EQ(map.bits, 8U);
    EXPECT_EQ(map.pixels, (std::vector<std::uint16_t>{15, 1}));
    EXPECT_EQ(tarn_sim::RecordingNotes::Of(folder.Path()).mmPerUnit, 0.125);
    const auto line = nlohmann::json::parse(folder.Read("frames.jsonl"));
    EXPECT_EQ(line["number"], 12);
    EXPECT_EQ(line["time100ns"], "9007199254740993"); // a double would make it even
    EXPECT_EQ(line["confidenceFile"], "confidence_000012.png");
    EXPECT_EQ(line["metadata"]["frameCounter"], 77);
    EXPECT_EQ(line["intrinsics"][0]["focalLength"][1], 0.25);
    EXPECT_FALSE(line.contains("lit"));
}

TEST(FrameWriterTest, FramesTooShortForTheirFormatAreSavedAsTheyAre)
{
    const TemporaryFolder folder;
    const std::array<std::uint8_t, 3> pixels{1, 2, 3};
    SampleDetails details;
    details.confidence = {1}; // too short as well
    FrameWriter writer(folder.Path());
    writer.Write("infrared", 0, Format(PixelKind::Grey8, 2, 2), std::as_bytes(std::span(pixels)), details);

    EXPECT_EQ(std::string("\x01\x02\x03"), folder.Read("ir_000000.raw"));
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "confidence_000000.png"));
}

TEST(FrameWriterTest, AFolderThatCannotBeWrittenIsReported)
{
    const TemporaryFolder folder;
    EXPECT_THROW(FrameWriter(folder.Path() / "missing"), HostError);
}

TEST(FrameWriterTest, OnlyPicturesThatAnEarlierRunListedAreRemoved)
{
    const TemporaryFolder folder;
    std::ofstream(folder.Path() / "depth-000007.pgm") << "of an earlier run";
    std::ofstream(folder.Path() / "notes.png") << "of the user";
    std::ofstream(folder.Path() / "frames.jsonl")
        << "{\"file\": \"depth-000007.pgm\"}\n{\"file\": \"notes.png\"}\n{\"file\": \"..\\\\depth_1.png\"}\n7\n{";
    {
        FrameWriter writer(folder.Path());
        EXPECT_TRUE(std::filesystem::exists(folder.Path() / "depth-000007.pgm")) << "until there is something new";
        writer.Write("color", 0, Format(PixelKind::Yuy2, 2, 2), {}, {});
    }
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "depth-000007.pgm"));
    EXPECT_TRUE(std::filesystem::exists(folder.Path() / "notes.png"));

    std::ofstream(folder.Path() / "depth_0000.png") << "a recording of the user";
    EXPECT_THROW(FrameWriter(folder.Path()), UsageError);
}

TEST(SampleDetailsTest, RecordsThatClaimMoreThanThereIsAreCutToWhatThereIs)
{
    ComPtr<IMFSample> sample;
    ASSERT_EQ(S_OK, MFCreateSample(&sample));
    std::array<std::uint8_t, 4 + 44 + 10> intrinsics{0xFF, 0xFF, 0xFF, 0xFF};
    ASSERT_EQ(S_OK, sample->SetBlob(MFSampleExtension_PinholeCameraIntrinsics, intrinsics.data(), intrinsics.size()));
    const std::array<std::uint8_t, 63> record{};
    ASSERT_EQ(S_OK, sample->SetBlob(TARN_SAMPLE_FRAME_METADATA, record.data(), record.size()));

    const SampleDetails details = SampleDetails::Of(*sample.Get());
    EXPECT_EQ(1U, details.intrinsics.size());
    EXPECT_TRUE(details.extrinsics.empty());
    EXPECT_FALSE(details.record);
}

} // namespace
