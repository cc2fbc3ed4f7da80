#include "core/InputStream.h"
#include "core/MediaEventGenerator.h"
#include "core/OutputStream.h"

#include "tests/core/TestParts.h"
#include "tests/trace/TraceLines.h"

using namespace mft_core;
using namespace tarn_test;

namespace
{

std::unique_ptr<OutputStream> StreamWith(const MediaTypeList &types, TestEventGenerator *generator = nullptr)
{
    OutputStreamConfiguration configuration;
    *configuration.mtList = types;
    return std::make_unique<OutputStream>(0, generator, configuration);
}

// "none" where there is none.
std::string Closest(const MediaTypeList &types, UINT32 minFps, UINT32 minWidth = 1, UINT32 minHeight = 1)
{
    ComPtr<IMFMediaType> found;
    mft_utils::MediaTypeData data;
    return FAILED(StreamWith(types)->FindClosestMediaType(&found, MFVideoFormat_D16, minFps, minWidth, minHeight)) ||
                   FAILED(mft_utils::MediaTypeParser::GetMediaTypeData(data, found.Get()))
               ? "none"
               : std::to_string(data.width) + "x" + std::to_string(data.height) + "@" + std::to_string(data.FPS());
}

TEST(StreamTest, ClosestTypeIsTheSmallestFrameThenTheLowestRate)
{
    EXPECT_EQ("640x480@30", Closest({MakeType(640, 480, 60), MakeType(640, 480, 30)}, 30, 640, 480));
    EXPECT_EQ("640x480@30", Closest({MakeType(1280, 720, 30), MakeType(640, 480, 30)}, 30));
    EXPECT_EQ("640x480@30", Closest({MakeType(640, 480, 30), MakeType(1280, 720, 30)}, 30));
    // Each is smaller in one dimension: the later one replaces the earlier.
    EXPECT_EQ("800x480@30", Closest({MakeType(640, 720, 30), MakeType(800, 480, 30)}, 30));
    EXPECT_EQ("640x720@30", Closest({MakeType(800, 480, 30), MakeType(640, 720, 30)}, 30));
    EXPECT_EQ("640x480@60", Closest({MakeType(320, 240, 30), MakeType(640, 480, 60)}, 31));
    EXPECT_EQ("none", Closest({MakeType(640, 480, 30)}, 30, 641, 480));
    EXPECT_EQ("none", Closest({MakeType(640, 480, 30, MFVideoFormat_L8)}, 30));
    // A type without a denominator counts as 0 frames a second, and its rate replaces nothing.
    EXPECT_EQ("640x480@0", Closest({MakeType(640, 480, 30), MakeType(640, 480, 30, MFVideoFormat_D16, 0)}, 0));
}

TEST(StreamTest, MatchingComparesSizeRateAndSubtypeOnly)
{
    const auto stream = StreamWith({MakeType(640, 480, 30), MakeType(640, 480, 60)});
    const auto requested = MakeType(640, 480, 60);
    ASSERT_HR(S_OK, requested->SetUINT32(MF_MT_INTERLACE_MODE, 7));
    ComPtr<IMFMediaType> found;
    EXPECT_HR(S_OK, stream->FindMatchingMediaType(&found, requested.Get()));
    ComPtr<IMFMediaType> second;
    ASSERT_HR(S_OK, stream->GetMediaTypeAt(1, &second));
    EXPECT_EQ(second.Get(), found.Get());
    EXPECT_TRUE(stream->IsSupported(requested.Get()));

    ComPtr<IMFMediaType> untouched;
    EXPECT_HR(E_FAIL, stream->FindMatchingMediaType(&untouched, MakeType(640, 480, 15).Get()));
    EXPECT_HR(E_FAIL, stream->FindMatchingMediaType(&untouched, MakeType(640, 480, 30, MFVideoFormat_L8).Get()));
    EXPECT_EQ(nullptr, untouched.Get());
    EXPECT_FALSE(stream->IsSupported(nullptr));
    EXPECT_HR(E_POINTER, stream->FindMatchingMediaType(&untouched, nullptr));
}

TEST(StreamTest, OutputAttributesDescribeTheStreamAndKeepThePinsOwn)
{
    TestEventGenerator generator;
    OutputStreamConfiguration configuration;
    configuration.parentName = "Parent";
    *configuration.mtList = {MakeType(640, 480, 30), MakeType(640, 480, 30, MFVideoFormat_L8)};
    configuration.depth = DepthDescription{0, 125000};
    ASSERT_HR(S_OK, MFCreateAttributes(&configuration.attributes, 3));
    ASSERT_HR(S_OK, configuration.attributes->SetUINT32(MF_DEVICESTREAM_STREAM_ID, 99));
    ASSERT_HR(S_OK, configuration.attributes->SetUINT32(MF_SA_D3D11_SHARED_WITHOUT_MUTEX, 1));
    ASSERT_HR(S_OK, configuration.attributes->SetUINT32(MF_MT_INTERLACE_MODE, 2));
    const std::shared_ptr<UINT8[]> blob(new UINT8[3]{1, 2, 3});
    configuration.intrinsics = {blob, 3};
    OutputStream stream(5, &generator, configuration);

    ComPtr<IMFAttributes> attributes;
    ASSERT_HR(S_OK, stream.GetAttributes(&attributes));
    EXPECT_EQ(5u, MFGetAttributeUINT32(attributes.Get(), MF_DEVICESTREAM_STREAM_ID, 0));
    EXPECT_EQ(1u, MFGetAttributeUINT32(attributes.Get(), MF_DEVICESTREAM_FRAMESERVER_SHARED, 0));
    EXPECT_EQ(6u, MFGetAttributeUINT32(attributes.Get(), MF_DEVICESTREAM_ATTRIBUTE_FRAMESOURCE_TYPES, 0));
    EXPECT_EQ(2u, MFGetAttributeUINT32(attributes.Get(), MF_MT_INTERLACE_MODE, 0));
    EXPECT_EQ(0u, MFGetAttributeUINT32(attributes.Get(), MF_SA_D3D11_SHARED_WITHOUT_MUTEX, 0));
    EXPECT_EQ(125000u, MFGetAttributeUINT64(attributes.Get(), MF_MT_DEPTH_VALUE_UNIT, 0));
    GUID category{};
    EXPECT_HR(S_OK, attributes->GetGUID(MF_DEVICESTREAM_STREAM_CATEGORY, &category));
    EXPECT_TRUE(IsEqualGUID(PINNAME_VIDEO_CAPTURE, category));
    EXPECT_EQ((Bytes{1, 2, 3}), BlobOf(attributes, MFStreamExtension_PinholeCameraIntrinsics));
    EXPECT_TRUE(BlobOf(attributes, MFStreamExtension_CameraExtrinsics).empty());

    // The offered types are copies: the configuration's stay as they were.
    ComPtr<IMFMediaType> offered;
    ASSERT_HR(S_OK, stream.GetMediaTypeAt(1, &offered));
    EXPECT_EQ(125000u, MFGetAttributeUINT64(offered.Get(), MF_MT_DEPTH_VALUE_UNIT, 0));
    EXPECT_EQ(0u, MFGetAttributeUINT64(configuration.mtList->at(1).Get(), MF_MT_DEPTH_VALUE_UNIT, 0));
}

TEST(StreamTest, OnlyARunningOutputKeepsSamples)
{
    TestEventGenerator generator;
    const auto stream = StreamWith({MakeType(640, 480, 30)}, &generator);
    const auto sample = MakeSample(11);
    MFT_OUTPUT_DATA_BUFFER buffer{};

    EXPECT_HR(S_OK, stream->ProcessSample(sample.Get())); // stopped: dropped, not announced
    EXPECT_EQ(0, generator.Count(METransformHaveOutput));
    EXPECT_HR(S_OK, stream->ProcessOutput(buffer));
    EXPECT_EQ(nullptr, buffer.pSample);
    EXPECT_REFS(sample, 1);

    EXPECT_HR(S_OK, stream->SetState(DeviceStreamState_Run));
    EXPECT_EQ(1, generator.Count(MEUnknown));
    EXPECT_HR(MF_E_TRANSFORM_NEED_MORE_INPUT, stream->ProcessOutput(buffer));
    EXPECT_HR(S_OK, stream->ProcessSample(sample.Get()));
    EXPECT_REFS(sample, 2);
    EXPECT_EQ(1, generator.Count(METransformHaveOutput));
    EXPECT_HR(S_OK, stream->ProcessOutput(buffer));
    EXPECT_EQ(sample.Get(), buffer.pSample);
    EXPECT_REFS(sample, 2); // the queue's reference moved to the caller
    buffer.pSample->Release();

    EXPECT_HR(S_OK, stream->ProcessSample(sample.Get()));
    EXPECT_HR(S_OK, stream->SetState(DeviceStreamState_Stop)); // leaving Run empties the queue
    EXPECT_REFS(sample, 1);

    EXPECT_HR(S_OK, stream->SetState(DeviceStreamState_Run));
    generator.ShutDown();
    EXPECT_HR(MF_E_SHUTDOWN, stream->ProcessSample(sample.Get())); // cannot be announced: not kept
    EXPECT_REFS(sample, 1);
    EXPECT_HR(E_POINTER, stream->ProcessSample(nullptr));
    stream->SetState(DeviceStreamState_Stop);
    EXPECT_HR(MF_E_SHUTDOWN, stream->SetState(DeviceStreamState_Run));
    EXPECT_EQ(DeviceStreamState_Stop, stream->GetState());
}

TEST(StreamTest, ATypeWithoutARateDoesNotInheritTheFormerOnesFrames)
{
    TestEventGenerator generator;
    for (const auto &[rate, denominator] : {std::pair{30u, 0u}, std::pair{0u, 1u}})
    {
        const auto stream = StreamWith({MakeType(640, 480, 30)}, &generator);
        const TraceLines trace(mft_utils::TraceLevel::Information);
        ASSERT_HR(S_OK, stream->SetState(DeviceStreamState_Run));
        for (int frame = 0; frame < 2; ++frame)
        {
            const MFTIME before = MFGetSystemTime();
            EXPECT_TRUE(WaitUntil([&] { return MFGetSystemTime() > before + 10; })); // a microsecond
            EXPECT_HR(S_OK, stream->ProcessSample(MakeSample(frame).Get()));
        }
        ASSERT_HR(S_OK, stream->SetState(DeviceStreamState_Stop));
        EXPECT_EQ(std::string::npos, trace.lines.back().find("input 0.0 fps")) << trace.lines.back();

        ASSERT_HR(S_OK, stream->SetCurrentMediaType(MakeType(640, 480, rate, MFVideoFormat_D16, denominator).Get()));
        ASSERT_HR(S_OK, stream->SetState(DeviceStreamState_Run));
        ASSERT_HR(S_OK, stream->SetState(DeviceStreamState_Stop));
        EXPECT_NE(std::string::npos, trace.lines.back().find("input 0.0 fps")) << trace.lines.back();
    }
}

} // namespace
