#include "media/MediaTypeParser.h"

#include <gtest/gtest.h>

namespace
{

using mft_utils::MediaTypeData;
using mft_utils::MediaTypeList;
using mft_utils::MediaTypeParser;

ComPtr<IMFMediaType> MakeType(const GUID &subtype, UINT32 width, UINT32 height, UINT32 numerator, UINT32 denominator)
{
    ComPtr<IMFMediaType> type;
    EXPECT_EQ(S_OK, MFCreateMediaType(type.GetAddressOf()));
    EXPECT_EQ(S_OK, type->SetGUID(MF_MT_MAJOR_TYPE, MFMediaType_Video));
    EXPECT_EQ(S_OK, type->SetGUID(MF_MT_SUBTYPE, subtype));
    EXPECT_EQ(S_OK, MFSetAttributeSize(type.Get(), MF_MT_FRAME_SIZE, width, height));
    EXPECT_EQ(S_OK, MFSetAttributeRatio(type.Get(), MF_MT_FRAME_RATE, numerator, denominator));
    return type;
}

GUID SubtypeOf(IMFMediaType *type)
{
    GUID subtype{};
    EXPECT_EQ(S_OK, type->GetGUID(MF_MT_SUBTYPE, &subtype));
    return subtype;
}

TEST(MediaTypeParserTest, ReadsSizeAndRate)
{
    MediaTypeData data;
    ASSERT_EQ(S_OK, MediaTypeParser::GetMediaTypeData(data, MakeType(MFVideoFormat_L8, 640, 480, 30000, 1001).Get()));
    EXPECT_EQ(640u, data.width);
    EXPECT_EQ(480u, data.height);
    EXPECT_EQ(29u, data.FPS());

    ASSERT_EQ(S_OK, MediaTypeParser::GetMediaTypeData(data, MakeType(MFVideoFormat_L8, 1, 1, 30, 0).Get()));
    EXPECT_EQ(0u, data.FPS());

    ComPtr<IMFMediaType> empty;
    ASSERT_EQ(S_OK, MFCreateMediaType(empty.GetAddressOf()));
    EXPECT_EQ(MF_E_ATTRIBUTENOTFOUND, MediaTypeParser::GetMediaTypeData(data, empty.Get()));
    EXPECT_EQ(0u, data.width);
    EXPECT_EQ(E_POINTER, MediaTypeParser::GetMediaTypeData(data, nullptr));
}

TEST(MediaTypeParserTest, SubsetAppendsCopiesOfTheWantedSubtypes)
{
    ComPtr<IMFMediaType> withoutSubtype;
    ASSERT_EQ(S_OK, MFCreateMediaType(withoutSubtype.GetAddressOf()));
    const MediaTypeList source{MakeType(MFVideoFormat_NV12, 640, 480, 30, 1), withoutSubtype, nullptr,
                               MakeType(MFVideoFormat_L8, 320, 240, 60, 1),
                               MakeType(MFVideoFormat_YUY2, 160, 120, 5, 1)};
    const ComPtr<IMFMediaType> present = MakeType(MFVideoFormat_L16, 1, 1, 1, 1);
    MediaTypeList destination{present};

    ASSERT_EQ(S_OK, MediaTypeParser::CreateMediaTypeListSubset(
                        destination, source, {MFVideoFormat_YUY2, MFVideoFormat_NV12}, MFVideoFormat_D16, 16));

    ASSERT_EQ(3u, destination.size());
    EXPECT_EQ(present, destination[0]);
    EXPECT_EQ(MFVideoFormat_D16, SubtypeOf(destination[1].Get()));
    EXPECT_EQ(MFVideoFormat_NV12, SubtypeOf(source[0].Get()));
    MediaTypeData data;
    ASSERT_EQ(S_OK, MediaTypeParser::GetMediaTypeData(data, destination[2].Get()));
    EXPECT_EQ(160u, data.width);
    EXPECT_EQ(5u, data.FPS());
    UINT32 stride = 0;
    EXPECT_EQ(MF_E_ATTRIBUTENOTFOUND, destination[1]->GetUINT32(MF_MT_DEFAULT_STRIDE, &stride));
}

TEST(MediaTypeParserTest, SubsetCorrectsALayoutThatTheTypeStates)
{
    const ComPtr<IMFMediaType> type = MakeType(MFVideoFormat_YUY2, 640, 480, 30, 1);
    ASSERT_EQ(S_OK, type->SetUINT32(MF_MT_DEFAULT_STRIDE, 1920));
    ASSERT_EQ(S_OK, type->SetUINT32(MF_MT_SAMPLE_SIZE, 1920 * 480));
    ASSERT_EQ(S_OK, type->SetUINT32(MF_MT_AVG_BITRATE, 1));
    MediaTypeList list{type};

    // Source and destination may be one list.
    ASSERT_EQ(S_OK, MediaTypeParser::CreateMediaTypeListSubset(list, list, {MFVideoFormat_YUY2}, MFVideoFormat_L8, 8));

    ASSERT_EQ(2u, list.size());
    UINT32 value = 0;
    EXPECT_EQ(S_OK, list[1]->GetUINT32(MF_MT_DEFAULT_STRIDE, &value));
    EXPECT_EQ(640u, value);
    EXPECT_EQ(S_OK, list[1]->GetUINT32(MF_MT_SAMPLE_SIZE, &value));
    EXPECT_EQ(640u * 480u, value);
    EXPECT_EQ(S_OK, list[1]->GetUINT32(MF_MT_AVG_BITRATE, &value));
    EXPECT_EQ(640u * 480u * 8u * 30u, value);

    // An absurd frame size does not wrap.
    const ComPtr<IMFMediaType> absurd = MakeType(MFVideoFormat_YUY2, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 1);
    ASSERT_EQ(S_OK, absurd->SetUINT32(MF_MT_SAMPLE_SIZE, 5));
    ASSERT_EQ(S_OK,
              MediaTypeParser::CreateMediaTypeListSubset(list, {absurd}, {MFVideoFormat_YUY2}, MFVideoFormat_D16, 16));
    EXPECT_EQ(S_OK, list.at(2)->GetUINT32(MF_MT_SAMPLE_SIZE, &value));
    EXPECT_EQ(5u, value);
}

} // namespace
