#include "trace/DebugTraceSink.h"

#include <filesystem>
#include <fstream>
#include <regex>

#include "TraceLines.h"
#include "tests/support/Expect.h"
#include "trace/Trace.h"
#include "trace/TraceChannels.h"
#include "trace/Tracing.h"

using namespace mft_utils;
using namespace tarn_test;

namespace
{

class DebugTraceSinkTest : public testing::Test
{
  protected:
    void TearDown() override
    {
        ShutdownTracing();
        SetEnvironmentVariableA("TARN_TRACE", nullptr);
        std::filesystem::remove(path);
    }

    std::vector<std::string> FileLines() const
    {
        std::vector<std::string> lines;
        std::ifstream file(path);
        for (std::string line; std::getline(file, line);)
        {
            lines.push_back(line);
        }
        return lines;
    }

    const std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("tarn trace, " + std::to_string(GetCurrentProcessId()) + ".log");
};

TEST_F(DebugTraceSinkTest, UnderstandsLevelsByNumberAndName)
{
    const std::pair<const char *, std::uint32_t> levels[] = {{"2", 2},    {"8", 8},       {"error", 2},
                                                             {"info", 4}, {"verbose", 8}, {"8,file=stderr", 8}};
    for (const auto &[setting, level] : levels)
    {
        EXPECT_TRUE(DebugTraceSink::Instance().Configure(setting)) << setting;
        EXPECT_EQ(level, DebugTraceSink::Instance().MessageLevel()) << setting;
        EXPECT_EQ(level >= 4, TraceEnabled(TraceLevel::Information)) << setting;
        EXPECT_EQ(level >= 4, TraceLoggingEnabled(TraceLevel::Information)) << setting;
    }
    for (const char *setting : {"", "3", "88", "Everything", "8,", "8,colour=red", "-1", "8,file=", ",file=stderr",
                                "8,file=C:\\no such folder\\x"})
    {
        EXPECT_FALSE(DebugTraceSink::Instance().Configure(setting)) << setting;
        EXPECT_EQ(0u, DebugTraceSink::Instance().MessageLevel()) << setting;
    }
}

TEST_F(DebugTraceSinkTest, EnvironmentVariableTurnsTheFileOn)
{
    const std::string setting = "info,file=" + path.string();
    ASSERT_TRUE(SetEnvironmentVariableA("TARN_TRACE", setting.c_str()));

    InitializeTracing();
    TRACE_INFO("frame %d", 1);
    TRACE_VERBOSE("not wanted");
    WriteToTraceChannels({TraceLevel::Error, TraceOpcode::Info, nullptr, "Demo", {TraceField::Hex32("hr", E_FAIL)}});
    ShutdownTracing();
    TRACE_ERROR("after the end");

    const std::vector<std::string> lines = FileLines();
    ASSERT_EQ(4u, lines.size());
    EXPECT_TRUE(std::regex_match(lines[1], std::regex("\\d\\d:\\d\\d:\\d\\d\\.\\d{6} +\\d+ info +\\S+: frame 1")))
        << lines[1];
    EXPECT_TRUE(lines[2].ends_with(" error   event Demo hr=0x80004005")) << lines[2];
}

TEST_F(DebugTraceSinkTest, LinesOfManyThreadsStayWholeAndClosingMeanwhileEndsCleanly)
{
    const std::string setting = "8,file=" + path.string();
    ASSERT_TRUE(DebugTraceSink::Instance().Configure(setting.c_str()));
    std::atomic<int> written{0};
    const std::string text(100, 'x');
    const auto write = [&] {
        TRACE_VERBOSE("%s", text.c_str());
        ++written;
    };
    const Repeating writers[] = {Repeating(write), Repeating(write), Repeating(write), Repeating(write)};
    WaitUntil([&] { return written > 800; });
    DebugTraceSink::Instance().Close();
    EXPECT_FALSE(TraceEnabled(TraceLevel::Error));
    const std::vector<std::string> lines = FileLines();
    EXPECT_GT(lines.size(), 700u);
    for (const std::string &line : lines)
    {
        EXPECT_TRUE(line.ends_with(": " + text)) << line;
    }
    for (int i = 0; i < 50; ++i)
    {
        EXPECT_TRUE(DebugTraceSink::Instance().Configure(setting.c_str()));
        DebugTraceSink::Instance().Close();
    }
}

TEST_F(DebugTraceSinkTest, DisabledTraceEvaluatesNoArgumentAndOverlongLinesAreMarked)
{
    int evaluated = 0;
    TRACE_ERROR("%d", ++evaluated);
    EXPECT_EQ(0, evaluated);

    const TraceLines trace(TraceLevel::Error);
    TRACE_INFO("%d", ++evaluated);
    EXPECT_EQ(0, evaluated);
    TRACE_ERROR("%d", ++evaluated);
    EXPECT_EQ(1, evaluated);
    EXPECT_EQ(1u, trace.lines.size());

    TRACE_ERROR("%s", std::string(4000, 'y').c_str());
    ASSERT_EQ(2u, trace.lines.size());
    EXPECT_LT(trace.lines[1].size(), 1024u);
    EXPECT_TRUE(trace.lines[1].ends_with("yyy..."));
}

} // namespace
