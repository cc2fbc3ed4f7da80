#include "trace/WppTrace.h"

#include <cctype>
#include <cstdio>
#include <fstream>
#include <map>

#include "FakeTracePlatform.h"
#include "trace/Check.h"
#include "trace/GuidTranslator.h"

using namespace mft_utils;
using namespace tarn_test;

namespace
{

// A message's format as a trace tool reads it from the format file.
struct MessageFormat
{
    std::string text;
    std::vector<std::string> types;
};

struct FormatFile
{
    FormatFile()
    {
        std::ifstream file(TARN_TMF_FILE);
        int number = 0;
        for (std::string line; std::getline(file, line);)
        {
            char type[32] = {};
            if (std::sscanf(line.c_str(), "#typev %*s %d", &number) == 1)
            {
                const std::size_t begin = line.find("\"%0") + 3;
                formats[number].text = line.substr(begin, line.rfind('"') - begin);
            }
            else if (std::sscanf(line.c_str(), "%*[a-z], %31s -- %*d", type) == 1)
            {
                formats[number].types.emplace_back(type);
            }
            else if (line.find(" tarn_dmft // SRC") == 36)
            {
                messageClass = line.substr(0, 36);
            }
        }
    }

    std::map<int, MessageFormat> formats;
    std::string messageClass;
};

const FormatFile kFormatFile;

// Puts the bytes that were written into the format's text.
std::string Decode(const WrittenMessage &message)
{
    const auto format = kFormatFile.formats.find(message.number);
    if (format == kFormatFile.formats.end() || format->second.types.size() != message.arguments.size())
    {
        return std::string("undecodable message ").append(std::to_string(message.number));
    }
    std::string text = format->second.text;
    for (std::size_t i = 0; i < message.arguments.size(); ++i)
    {
        std::string bytes = message.arguments[i];
        if (format->second.types[i] == "ItemString")
        {
            EXPECT_EQ(std::strlen(bytes.c_str()) + 1, bytes.size());
            bytes.pop_back();
        }
        else
        {
            std::uint32_t value = 0;
            EXPECT_EQ(sizeof(value), bytes.size());
            std::memcpy(&value, bytes.data(), sizeof(value));
            char number[16];
            std::snprintf(number, sizeof(number), format->second.types[i] == "ItemLong" ? "%u" : "0x%08X", value);
            bytes = number;
        }
        const std::string place = std::string("%").append(std::to_string(10 + i)).append("!");
        const std::size_t at = text.find(place);
        EXPECT_NE(std::string::npos, at) << place;
        text.replace(at, place.size() + 2, bytes);
    }
    return text;
}

using WppTraceTest = TracePlatformTest;

TEST_F(WppTraceTest, EveryMessageDecodesWithTheShippedFormats)
{
    platform.EnableClassic(7, 8, kWppFlagMessages | kWppFlagEntryExit);
    platform.messages.clear();

    trace_detail::WriteEntry("HRESULT ns::Run()", "camera");
    trace_detail::WriteExit("HRESULT ns::Run()", "camera");
    PrintRetOnHResultErrorMessage_LM_DMFT_COMMON("HRESULT ns::Run()", "step(1, 2)", E_FAIL);
    PrintRetOnHResultErrorMessage_LM_DMFT_COMMON("HRESULT ns::Run()", "pEvent", "nullptr", "valid pointer",
                                                 E_INVALIDARG);
    trace_detail::Write(TraceLevel::Information, "HRESULT ns::Run()", "%s %lld", "frames", 3LL);

    const char *const expected[] = {
        "==> ns::Run (camera)", "<== ns::Run (camera)", "ns::Run: step(1, 2) failed, hr 0x80004005",
        "ns::Run: pEvent is nullptr, expected valid pointer, hr 0x80070057", "ns::Run [4]: frames 3"};
    ASSERT_EQ(std::size(expected), platform.messages.size());
    for (std::size_t i = 0; i < platform.messages.size(); ++i)
    {
        EXPECT_EQ(expected[i], Decode(platform.messages[i]));
        EXPECT_EQ(7u, platform.messages[i].logger);
        EXPECT_EQ(43u, platform.messages[i].flags);
    }
    ASSERT_EQ(1u, platform.moduleMessages.size());
    EXPECT_TRUE(Decode(platform.moduleMessages[0]).starts_with("mft_utils::ModuleRecord [0]: Module Version=\""));
}

TEST_F(WppTraceTest, FormatFileNamesTheRegisteredGuids)
{
    std::string messageClass = "{" + kFormatFile.messageClass + "}";
    std::transform(messageClass.begin(), messageClass.end(), messageClass.begin(),
                   [](char letter) { return static_cast<char>(std::toupper(letter)); });
    EXPECT_EQ(messageClass, GuidTranslator::ToString(platform.classicMessageClass));
    EXPECT_TRUE(IsEqualGUID(kWppControlGuid, platform.classicControl));
    EXPECT_FALSE(IsEqualGUID(kWppControlGuid, kWppMessageGuid));
}

TEST_F(WppTraceTest, LevelAndFlagsSelectMessages)
{
    platform.EnableClassic(7, 4, kWppFlagMessages);
    platform.messages.clear();

    TRACE_ERROR("error");
    TRACE_INFO("info");
    TRACE_VERBOSE("verbose");
    trace_detail::WriteEntry("void f()", "camera");
    EXPECT_EQ(2u, platform.messages.size());

    platform.EnableClassic(7, 8, kWppFlagEntryExit);
    platform.messages.clear();
    TRACE_ERROR("error");
    trace_detail::WriteEntry("void f()", "camera");
    ASSERT_EQ(1u, platform.messages.size());
    EXPECT_EQ(static_cast<USHORT>(TraceMessageId::Entry), platform.messages[0].number);

    platform.DisableClassic();
    platform.messages.clear();
    TRACE_ERROR("error");
    EXPECT_TRUE(platform.messages.empty());
}

TEST_F(WppTraceTest, LevelReportedWithoutASessionIsNotBelieved)
{
    // Wine and a session that has just gone report level 5 under the handle -1.
    for (const std::uint64_t logger : {~std::uint64_t{0}, std::uint64_t{0}, std::uint64_t{7}})
    {
        platform.EnableClassic(logger, 5, logger == 7 ? 0 : 0xFF);
        EXPECT_FALSE(TraceEnabled(TraceLevel::Error));
    }
}

TEST_F(WppTraceTest, LongTextsAreCutInsideTheMessage)
{
    const std::string longText(5000, 'x');
    const WppArgumentList list({"f", longText.c_str(), nullptr, E_FAIL, longText.c_str(), "one too many"});

    ASSERT_EQ(WppArgumentList::kMaxArguments, list.Count());
    EXPECT_EQ(TextCutter::kMaxBytes, list.At(1).size);
    EXPECT_EQ('\0', static_cast<const char *>(list.At(1).data)[list.At(1).size - 1]);
    EXPECT_STREQ("null", static_cast<const char *>(list.At(2).data));
    EXPECT_STREQ("...", static_cast<const char *>(list.At(4).data));

    platform.EnableClassic(7, 8, kWppFlagMessages);
    platform.messages.clear();
    TRACE_INFO("%s", longText.c_str());
    ASSERT_EQ(1u, platform.messages.size());
    EXPECT_TRUE(Decode(platform.messages[0]).ends_with("xxx..."));
}

TEST_F(WppTraceTest, RefusalLeavesTheChannelOff)
{
    ShutdownTracing();
    platform.registerResult = ERROR_ACCESS_DENIED;
    InitializeTracing();
    EXPECT_EQ(E_ACCESSDENIED, WppTrace::Register());
}

} // namespace
