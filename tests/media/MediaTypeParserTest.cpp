#include "media/MediaTypeParser.h"

#include "tests/support/Samples.h"

using namespace tarn_test;
using namespace mft_utils;

namespace
{

GUID SubtypeOf(IMFMediaType *type)
{
    GUID subtype{};
    EXPECT_EQ(S_OK, type->GetGUID(MF_MT_SUBTYPE, &subtype));
    return subtype;
}

TEST(MediaTypeParserTest, ReadsSizeAndRate)
{
    MediaTypeData data;
    ASSERT_EQ(S_OK, MediaTypeParser::GetMediaTypeData(data, MakeType(640, 480, 30000, MFVideoFormat_L8, 1001).Get()));
    EXPECT_EQ(640u, data.width);
    EXPECT_EQ(480u, data.height);
    EXPECT_EQ(29u, data.FPS());
    ASSERT_EQ(S_OK, MediaTypeParser::GetMediaTypeData(data, MakeType(1, 1, 30, MFVideoFormat_L8, 0).Get()));
    EXPECT_EQ(0u, data.FPS());
    ComPtr<IMFMediaType> empty;
    ASSERT_EQ(S_OK, MFCreateMediaType(empty.GetAddressOf()));
    EXPECT_EQ(MF_E_ATTRIBUTENOTFOUND, MediaTypeParser::GetMediaTypeData(data, empty.Get()));
    EXPECT_EQ(0u, data.width);
    EXPECT_EQ(E_POINTER, MediaTypeParser::GetMediaTypeData(data, nullptr));
}

TEST(MediaTypeParserTest, SubsetAppendsCopiesOfTheWantedSubtypesAndCorrectsALayoutThatTheyState)
{
    ComPtr<IMFMediaType> withoutSubtype;
    ASSERT_EQ(S_OK, MFCreateMediaType(withoutSubtype.GetAddressOf()));
    const auto stated = MakeType(640, 480, 30, MFVideoFormat_YUY2);
    const auto absurd = MakeType(0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, MFVideoFormat_YUY2); // does not wrap
    for (const auto &type : {stated, absurd})
    {
        ASSERT_EQ(S_OK, type->SetUINT32(MF_MT_DEFAULT_STRIDE, 1920));
        ASSERT_EQ(S_OK, type->SetUINT32(MF_MT_SAMPLE_SIZE, 5));
        ASSERT_EQ(S_OK, type->SetUINT32(MF_MT_AVG_BITRATE, 1));
    }
    MediaTypeList list{MakeType(160, 120, 5, MFVideoFormat_NV12), withoutSubtype, nullptr,
                       MakeType(320, 240, 60, MFVideoFormat_L8),  stated,         absurd};
    // Source and destination may be one list.
    ASSERT_EQ(S_OK, MediaTypeParser::CreateMediaTypeListSubset(list, list, {MFVideoFormat_YUY2, MFVideoFormat_NV12},
                                                               MFVideoFormat_D16, 16));
    ASSERT_EQ(9u, list.size());
    EXPECT_EQ(MFVideoFormat_D16, SubtypeOf(list[6].Get()));
    EXPECT_EQ(MFVideoFormat_NV12, SubtypeOf(list[0].Get()));
    MediaTypeData data;
    ASSERT_EQ(S_OK, MediaTypeParser::GetMediaTypeData(data, list[6].Get()));
    EXPECT_EQ(160u, data.width);
    EXPECT_EQ(5u, data.FPS());
    const auto value = [&](std::size_t index, const GUID &key) {
        return MFGetAttributeUINT32(list.at(index).Get(), key, 99);
    };
    EXPECT_EQ(99u, value(6, MF_MT_DEFAULT_STRIDE)) << "was not stated";
    EXPECT_EQ(640u * 2, value(7, MF_MT_DEFAULT_STRIDE));
    EXPECT_EQ(640u * 480u * 2, value(7, MF_MT_SAMPLE_SIZE));
    EXPECT_EQ(640u * 480u * 16u * 30u, value(7, MF_MT_AVG_BITRATE));
    EXPECT_EQ(5u, value(8, MF_MT_SAMPLE_SIZE));
}

} // namespace
