#include "trace/GuidTranslator.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <string>
#include <thread>

#include "platform/CameraAttributes.h"
#include "base/GuidLess.h"
#include "trace/MediaEventTranslator.h"
#include "trace/PlatformGuidNames.h"
#include "trace/StreamNames.h"

namespace
{

using mft_utils::GuidTranslator;

constexpr GUID kPrivate = {0xF84AB655, 0x8931, 0x42BD, {0x8C, 0x04, 0x8A, 0xE2, 0x88, 0x14, 0x54, 0xFE}};
constexpr char kPrivateText[] = "{F84AB655-8931-42BD-8C04-8AE2881454FE}";

TEST(GuidTranslatorTest, NamesKnownGuidsOnlyBetweenCreateAndDestroy)
{
    EXPECT_EQ("{00000050-0000-0010-8000-00AA00389B71}", GuidTranslator::Name(MFVideoFormat_D16));
    EXPECT_EQ(E_UNEXPECTED, GuidTranslator::Register(kPrivate, "TOO_EARLY"));

    ASSERT_EQ(S_OK, GuidTranslator::Create());
    EXPECT_EQ(S_FALSE, GuidTranslator::Create());
    EXPECT_EQ("MFVideoFormat_D16 {00000050-0000-0010-8000-00AA00389B71}", GuidTranslator::Name(MFVideoFormat_D16));
    EXPECT_EQ(kPrivateText, GuidTranslator::Name(kPrivate));
    EXPECT_EQ(S_OK, GuidTranslator::Register(kPrivate, "TARN_PRIVATE"));
    EXPECT_EQ(std::string("TARN_PRIVATE ") + kPrivateText, GuidTranslator::Name(kPrivate));
    EXPECT_EQ(E_POINTER, GuidTranslator::Register(kPrivate, nullptr));

    GuidTranslator::Destroy();
    GuidTranslator::Destroy();
    EXPECT_EQ(kPrivateText, GuidTranslator::Name(kPrivate));
}

TEST(GuidTranslatorTest, LookupsRunBesideCreateAndDestroy)
{
    std::atomic<bool> stop{false};
    std::thread reader([&] {
        while (!stop)
        {
            EXPECT_TRUE(GuidTranslator::Name(MFVideoFormat_D16).ends_with("00AA00389B71}"));
        }
    });
    for (int i = 0; i < 10; ++i)
    {
        EXPECT_EQ(S_OK, GuidTranslator::Create());
        EXPECT_EQ(S_OK, GuidTranslator::Register(kPrivate, "TARN_PRIVATE"));
        GuidTranslator::Destroy();
    }
    stop = true;
    reader.join();
}

TEST(NamesTest, TablesHoldEachGuidOnceAndUnknownValuesHaveNamesToo)
{
    std::set<GUID, mft_utils::GuidLess> guids;
    for (const mft_utils::NamedGuid &entry : mft_utils::PlatformGuidNames())
    {
        EXPECT_TRUE(guids.insert(*entry.guid).second) << entry.name;
    }
    using mft_utils::MediaEventTranslator;
    EXPECT_STREQ("MEUnknown", MediaEventTranslator::Name(0));
    EXPECT_STREQ("METransformHaveOutput", MediaEventTranslator::Name(602));
    EXPECT_STREQ("MEReservedMax", MediaEventTranslator::Name(10000));
    EXPECT_STREQ("Unknown event", MediaEventTranslator::Name(606));
    EXPECT_STREQ("Unknown event", MediaEventTranslator::Name(0xFFFFFFFF));
    EXPECT_STREQ("Active", mft_utils::StreamStateName(DeviceStreamState_Run));
    EXPECT_STREQ("Infrared", mft_utils::FrameSourceName(MFFrameSourceTypes_Infrared));
    EXPECT_STREQ("Unknown MFFrameSourceType",
                 mft_utils::FrameSourceName(MFFrameSourceTypes_Depth | MFFrameSourceTypes_Infrared));
}

} // namespace
