#include "trace/MediaTypeTranslator.h"

#include <gtest/gtest.h>

#include "platform/CameraAttributes.h"
#include "trace/GuidTranslator.h"

namespace
{

using mft_utils::GuidTranslator;
using mft_utils::MediaTypeTranslator;

TEST(MediaTypeTranslatorTest, DescribesWhatTheTypeHas)
{
    ComPtr<IMFMediaType> type;
    ASSERT_EQ(S_OK, MFCreateMediaType(type.GetAddressOf()));
    EXPECT_EQ("null", MediaTypeTranslator::Describe(nullptr));
    EXPECT_EQ("no subtype", MediaTypeTranslator::Describe(type.Get()));
    ASSERT_EQ(S_OK, MFSetAttributeSize(type.Get(), MF_MT_FRAME_SIZE, 640, 480));

    ASSERT_EQ(S_OK, GuidTranslator::Create());
    ASSERT_EQ(S_OK, MediaTypeTranslator::Create());
    ASSERT_EQ(S_OK, type->SetGUID(MF_MT_SUBTYPE, MFVideoFormat_L8));
    ASSERT_EQ(S_OK, MFSetAttributeRatio(type.Get(), MF_MT_FRAME_RATE, 30, 1));
    EXPECT_EQ("MFVideoFormat_L8 {00000032-0000-0010-8000-00AA00389B71} 640x480 @ 30/1 fps",
              MediaTypeTranslator::Describe(type.Get()));

    MediaTypeTranslator::Destroy();
    GuidTranslator::Destroy();
}

} // namespace
