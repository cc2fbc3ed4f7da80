#include "trace/TraceLogging.h"

#include "FakeTracePlatform.h"
#include "TraceLines.h"
#include "trace/GuidTranslator.h"
#include "trace/TraceLoggingProvider.h"

using namespace mft_utils;
using namespace tarn_test;

namespace
{

// Reads the metadata as a trace consumer does and puts the values beside the names.
std::string Decode(const WrittenEvent &event)
{
    const std::string &metadata = event.data.at(1);
    std::uint16_t size = 0;
    std::memcpy(&size, metadata.data(), sizeof(size));
    EXPECT_EQ(metadata.size(), size);
    EXPECT_EQ(0, metadata[2]); // no tag
    std::size_t at = 3;
    const auto readName = [&] {
        const std::string name = metadata.c_str() + at;
        at += name.size() + 1;
        return name;
    };
    std::string text = readName();
    for (std::size_t i = 2; i < event.data.size(); ++i)
    {
        const std::string &value = event.data[i];
        text.append(" ").append(readName()).append("=");
        const int type = metadata.at(at++);
        if (type == 2)
        {
            EXPECT_EQ(std::strlen(value.c_str()) + 1, value.size());
            text += value.c_str();
            continue;
        }
        EXPECT_TRUE(type == 8 || type == 9 || type == 20) << type;
        EXPECT_EQ(type == 9 ? 8u : 4u, value.size());
        std::int64_t number = 0;
        std::memcpy(&number, value.data(), std::min(value.size(), sizeof(number)));
        text.append(type == 20 ? "h" : "").append(std::to_string(number));
    }
    EXPECT_EQ(metadata.size(), at);
    return text;
}

// Outside any activity.
void WriteEvent(TraceLevel level, const char *name, std::initializer_list<TraceField> fields = {})
{
    WriteToTraceChannels({level, TraceOpcode::Info, nullptr, name, fields});
}

using TraceLoggingTest = TracePlatformTest;

TEST(ProviderNameTest, HashGivesThePublishedIds)
{
    for (const auto &[name, guid] : {std::pair{"MyProvider", "{B3864C38-4273-58C5-545B-8B3608343471}"},
                                     {"microsoft.web.platform", "{FF32ADA1-5A4B-583C-889E-A3C027B201F5}"},
                                     {"TARN_DEVICE_MFT", "{817C90F0-D169-5F8F-A653-7FA53090FFEA}"}})
    {
        EXPECT_EQ(guid, GuidTranslator::ToString(GuidFromProviderName(name)));
    }
}

TEST_F(TraceLoggingTest, ProviderAndEventAreByteForByteAsDocumented)
{
    EXPECT_TRUE(IsEqualGUID(kTraceLoggingProviderGuid, platform.structuredProvider));
    EXPECT_EQ(std::string("\x12\x00TARN_DEVICE_MFT\x00", 18), platform.structuredTraits);
    platform.EnableStructured(1, 8);

    WriteEvent(TraceLevel::Information, "Demo",
               {TraceField::String("PropId", "WARMSTART"), TraceField::Hex32("hr", E_FAIL),
                TraceField::Int64("SampleTime", -2)});

    ASSERT_EQ(1u, platform.events.size());
    const WrittenEvent &event = platform.events[0];
    EXPECT_EQ((std::vector<ULONG>{2, 1, 0, 0, 0}), event.types);
    EXPECT_EQ(platform.structuredTraits, event.data[0]);
    EXPECT_EQ(std::string("\x20\0\0Demo\0PropId\0\x02hr\0\x14SampleTime\0\x09", 32), event.data[1]);
    EXPECT_EQ(std::string("WARMSTART\0", 10), event.data[2]);
    EXPECT_EQ("Demo PropId=WARMSTART hr=h2147500037 SampleTime=-2", Decode(event));
    EXPECT_EQ(11, event.descriptor.Channel);
    EXPECT_EQ(4, event.descriptor.Level);
    EXPECT_EQ(0, event.descriptor.Opcode);
    EXPECT_EQ(0u, event.descriptor.Keyword);
    EXPECT_FALSE(event.hasActivity);

    // Each session gets the module's record once, whatever its level.
    platform.EnableStructured(1, 2);
    WriteEvent(TraceLevel::Information, "not wanted");
    EXPECT_EQ(1u, platform.moduleEvents.size());
    WriteEvent(TraceLevel::Error, "Demo");
    WriteEvent(TraceLevel::Error, "Demo");
    ASSERT_EQ(2u, platform.moduleEvents.size());
    EXPECT_TRUE(Decode(platform.moduleEvents[1]).starts_with("Module Version="));
}

TEST_F(TraceLoggingTest, ActivityHasStartAndStopUnderOneId)
{
    platform.EnableStructured(1, 4);
    {
        TraceLoggingActivity activity("Run", {TraceField::UInt32("SamplesQSize", 3)});
        activity.Write(TraceLevel::Error, "Failed to convert output sample");
        activity.Write(TraceLevel::Verbose, "not wanted");
        activity.Stop({TraceField::Hex32("hr", S_OK)});
        activity.Stop();
    }
    const TraceLoggingActivity other("Run");

    ASSERT_EQ(4u, platform.events.size());
    EXPECT_FALSE(IsEqualGUID(platform.events[0].activity, platform.events[3].activity));
    platform.events.pop_back();
    EXPECT_EQ("Run SamplesQSize=3", Decode(platform.events[0]));
    EXPECT_EQ("Failed to convert output sample", Decode(platform.events[1]));
    EXPECT_EQ("Run hr=h0", Decode(platform.events[2]));
    EXPECT_EQ(1, platform.events[0].descriptor.Opcode);
    EXPECT_EQ(0, platform.events[1].descriptor.Opcode);
    EXPECT_EQ(2, platform.events[2].descriptor.Opcode);
    for (const WrittenEvent &event : platform.events)
    {
        EXPECT_TRUE(event.hasActivity);
        EXPECT_TRUE(IsEqualGUID(platform.events[0].activity, event.activity));
    }
}

TEST_F(TraceLoggingTest, LongStringsAndSurplusFieldsAreCut)
{
    // The cut falls into the second byte of a two-byte character.
    const std::string longValue = std::string(TextCutter::kMaxBytes - 2, 'v') + "\xC3\xA9" + "tail";
    const std::string longName(300, 'n');
    platform.EnableStructured(1, 0); // level 0 asks for everything
    WriteEvent(TraceLevel::Verbose, longName.c_str(),
               {TraceField::String(longName.c_str(), longValue.c_str()), TraceField::String("b", longValue.c_str()),
                TraceField::String(nullptr, nullptr), TraceField::Int64("4", 4), TraceField::Int64("5", 5),
                TraceField::Int64("6", 6), TraceField::Int64("7", 7), TraceField::Int64("8", 8),
                TraceField::Int64("9", 9)});

    ASSERT_EQ(1u, platform.events.size());
    const std::string cutName(EncodedEvent::kMaxNameBytes - 1, 'n');
    EXPECT_EQ(cutName + " " + cutName + "=" + std::string(TextCutter::kMaxBytes - 2, 'v') +
                  " b=... = 4=4 5=5 6=6 7=7 8=8",
              Decode(platform.events[0]));
}

TEST_F(TraceLoggingTest, SessionsLevelDecides)
{
    EXPECT_FALSE(TraceLoggingEnabled(TraceLevel::Error));
    platform.EnableStructured(1, 2);
    EXPECT_TRUE(TraceLoggingEnabled(TraceLevel::Error));
    EXPECT_FALSE(TraceLoggingEnabled(TraceLevel::Information));
    platform.EnableStructured(2, 5); // a request for a state dump changes nothing
    EXPECT_FALSE(TraceLoggingEnabled(TraceLevel::Information));
    platform.EnableStructured(0, 5);
    EXPECT_FALSE(TraceLoggingEnabled(TraceLevel::Error));

    // The other listener's level does not open the provider.
    const TraceLines trace;
    WriteEvent(TraceLevel::Error, "Demo");
    EXPECT_TRUE(platform.events.empty());
    EXPECT_EQ((std::vector<std::string>{"event Demo"}), trace.Texts());
}

TEST_F(TraceLoggingTest, ProviderWithoutTraitsStaysSilent)
{
    ShutdownTracing();
    platform.traitsResult = ERROR_NOT_SUPPORTED;
    InitializeTracing();
    EXPECT_EQ(nullptr, platform.structuredCallback);
    EXPECT_NE(nullptr, platform.classicCallback);
}

} // namespace
