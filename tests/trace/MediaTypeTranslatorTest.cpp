#include "trace/MediaTypeTranslator.h"

#include <gtest/gtest.h>

#include "platform/CameraAttributes.h"
#include "trace/GuidTranslator.h"

namespace
{

using mft_utils::GuidTranslator;
using mft_utils::MediaTypeTranslator;

TEST(MediaTypeTranslatorTest, DescribesWhatTheTypeHasAndListsEveryKindOfValue)
{
    ComPtr<IMFMediaType> type;
    ASSERT_EQ(S_OK, MFCreateMediaType(type.GetAddressOf()));
    EXPECT_EQ("null", MediaTypeTranslator::Describe(nullptr));
    EXPECT_EQ("no subtype", MediaTypeTranslator::Describe(type.Get()));
    ASSERT_EQ(S_OK, MFSetAttributeSize(type.Get(), MF_MT_FRAME_SIZE, 640, 480));
    EXPECT_EQ("{1652C33D-D6B2-4012-B834-72030849A37D} = 2748779069920", MediaTypeTranslator::DescribeAll(type.Get()));

    ASSERT_EQ(S_OK, GuidTranslator::Create());
    ASSERT_EQ(S_OK, MediaTypeTranslator::Create());
    ASSERT_EQ(S_OK, type->SetGUID(MF_MT_SUBTYPE, MFVideoFormat_L8));
    ASSERT_EQ(S_OK, MFSetAttributeRatio(type.Get(), MF_MT_FRAME_RATE, 30, 1));
    EXPECT_EQ("MFVideoFormat_L8 {00000032-0000-0010-8000-00AA00389B71} 640x480 @ 30/1 fps",
              MediaTypeTranslator::Describe(type.Get()));

    const UINT8 blob[20] = {1, 2, 0xFF};
    ASSERT_EQ(S_OK, type->DeleteItem(MF_MT_SUBTYPE));
    ASSERT_EQ(S_OK, type->DeleteItem(MF_MT_FRAME_RATE));
    ASSERT_EQ(S_OK, type->SetUINT64(MF_MT_DEPTH_VALUE_UNIT, 125000));
    ASSERT_EQ(S_OK, type->SetUINT32(MF_MT_DEPTH_MEASUREMENT, 0));
    ASSERT_EQ(S_OK, type->SetString(MFT_ENUM_HARDWARE_URL_Attribute, L"caf\u00e9"));
    ASSERT_EQ(S_OK, type->SetBlob(MF_MT_USER_DATA, blob, sizeof(blob)));
    ASSERT_EQ(S_OK, type->SetUnknown(MF_DEVICEMFT_CONNECTED_FILTER_KSCONTROL, nullptr));
    ASSERT_EQ(S_OK, type->SetGUID(MF_MT_MAJOR_TYPE, MFMediaType_Video));
    EXPECT_EQ("MF_MT_FRAME_SIZE = 640x480\n"
              "MF_MT_DEPTH_VALUE_UNIT = 125000\n"
              "MF_MT_DEPTH_MEASUREMENT = 0\n"
              "MFT_ENUM_HARDWARE_URL_Attribute = \"caf\xC3\xA9\"\n"
              "MF_MT_USER_DATA = 20 bytes 01 02 FF 00 00 00 00 00 00 00 00 00 00 00 00 00 ...\n"
              "MF_DEVICEMFT_CONNECTED_FILTER_KSCONTROL = null object\n"
              "MF_MT_MAJOR_TYPE = MFMediaType_Video {73646976-0000-0010-8000-00AA00389B71}",
              MediaTypeTranslator::DescribeAll(type.Get()));
    EXPECT_EQ("null", MediaTypeTranslator::DescribeAll(nullptr));
    MediaTypeTranslator::Destroy();
    GuidTranslator::Destroy();
}

} // namespace
