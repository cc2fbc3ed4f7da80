#include "tools/pictures/FrameWriter.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>
#include <fstream>
#include <iterator>

#include "TemporaryFolder.h"
#include "tarn/sample_attributes.h"
#include "tools/command/ExitCode.h"

namespace
{

using namespace tarn_host;
using tarn_host_test::TemporaryFolder;

std::string ReadAll(const std::filesystem::path &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

FrameFormat Format(PixelKind pixels, std::uint32_t width, std::uint32_t height)
{
    FrameFormat format;
    format.pixels = pixels;
    format.size = {width, height, 30};
    format.subtypeName = "TEST";
    return format;
}

TEST(FrameWriterTest, DepthWithConfidenceBecomesTwoGreyMapsAndALine)
{
    const TemporaryFolder folder;
    // Two pixels of depth, then a second plane that is not part of the picture.
    const std::array<std::uint8_t, 8> pixels{0x34, 0x12, 0xFF, 0x00, 0xEE, 0xEE, 0xEE, 0xEE};
    SampleDetails details;
    details.time100ns = 5;
    details.confidence = {15, 1, 0xEE, 0xEE};
    details.record.emplace().frameCounter = 77;
    details.intrinsics.resize(1);
    details.intrinsics.front().CameraModel.FocalLength = {0.5F, 0.25F};
    {
        FrameWriter writer(folder.Path());
        writer.Write("depth", 12, Format(PixelKind::Depth16, 2, 1), std::as_bytes(std::span(pixels)), details);
    }

    EXPECT_EQ(std::string("P5\n2 1\n65535\n\x12\x34\x00\xFF", 17), ReadAll(folder.Path() / "depth-000012.pgm"));
    EXPECT_EQ(std::string("P5\n2 1\n15\n\x0F\x01", 12), ReadAll(folder.Path() / "confidence-000012.pgm"));
    const auto line = nlohmann::json::parse(ReadAll(folder.Path() / "frames.jsonl"));
    EXPECT_EQ(line["number"], 12);
    EXPECT_EQ(line["time100ns"], 5);
    EXPECT_EQ(line["confidenceFile"], "confidence-000012.pgm");
    EXPECT_EQ(line["metadata"]["frameCounter"], 77);
    EXPECT_EQ(line["intrinsics"][0]["focalLength"][1], 0.25);
    EXPECT_FALSE(line.contains("illuminated"));
}

TEST(FrameWriterTest, FramesTooShortForTheirFormatAreSavedAsTheyAre)
{
    const TemporaryFolder folder;
    const std::array<std::uint8_t, 3> pixels{1, 2, 3};
    SampleDetails details;
    details.confidence = {1}; // too short as well
    FrameWriter writer(folder.Path());
    writer.Write("infrared", 0, Format(PixelKind::Grey8, 2, 2), std::as_bytes(std::span(pixels)), details);

    EXPECT_EQ(std::string("\x01\x02\x03"), ReadAll(folder.Path() / "infrared-000000.raw"));
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "confidence-000000.pgm"));
}

TEST(FrameWriterTest, AFolderThatCannotBeWrittenIsReported)
{
    const TemporaryFolder folder;
    EXPECT_THROW(FrameWriter(folder.Path() / "missing"), HostError);
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
