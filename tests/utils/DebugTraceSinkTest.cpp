#include "utils/DebugTraceSink.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <regex>
#include <thread>
#include <vector>

#include "TraceLines.h"
#include "utils/Tracing.h"

namespace
{

using mft_utils::DebugTraceSink;
using mft_utils::TraceEnabled;
using mft_utils::TraceLevel;
using mft_utils::TraceLoggingEnabled;
using tarn_test::TraceLines;

class DebugTraceSinkTest : public testing::Test
{
  protected:
    void TearDown() override
    {
        mft_utils::ShutdownTracing();
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
    const struct
    {
        const char *setting;
        std::uint32_t level; // 0: refused
    } cases[] = {{"2", 2},
                 {"4", 4},
                 {"8", 8},
                 {"error", 2},
                 {"info", 4},
                 {"verbose", 8},
                 {"", 0},
                 {"3", 0},
                 {"88", 0},
                 {"Everything", 0},
                 {"8,", 0},
                 {"8,colour=red", 0},
                 {"-1", 0},
                 {"8,file=", 0},
                 {"8,file=stderr", 8},
                 {",file=stderr", 0},
                 {"8,file=C:\\no such folder\\x", 0}};
    for (const auto &entry : cases)
    {
        EXPECT_EQ(entry.level != 0, DebugTraceSink::Configure(entry.setting)) << entry.setting;
        EXPECT_EQ(entry.level, DebugTraceSink::EnabledLevel()) << entry.setting;
        EXPECT_EQ(entry.level >= 4, TraceEnabled(TraceLevel::Information)) << entry.setting;
        EXPECT_EQ(entry.level >= 4, TraceLoggingEnabled(TraceLevel::Information)) << entry.setting;
    }
}

TEST_F(DebugTraceSinkTest, EnvironmentVariableTurnsTheFileOn)
{
    const std::string setting = "info,file=" + path.string();
    ASSERT_TRUE(SetEnvironmentVariableA("TARN_TRACE", setting.c_str()));

    mft_utils::InitializeTracing();
    TRACE_INFO("frame %d", 1);
    TRACE_VERBOSE("not wanted");
    mft_utils::TraceLoggingWrite(TraceLevel::Error, "Demo", {mft_utils::TraceField::Hex32("hr", E_FAIL)});
    mft_utils::ShutdownTracing();
    TRACE_ERROR("after the end");

    const std::vector<std::string> lines = FileLines();
    ASSERT_EQ(4u, lines.size());
    EXPECT_TRUE(std::regex_match(lines[1], std::regex("\\d\\d:\\d\\d:\\d\\d\\.\\d{6} +\\d+ info +\\S+: frame 1")))
        << lines[1];
    EXPECT_TRUE(lines[2].ends_with(" error   event Demo hr=0x80004005")) << lines[2];
}

TEST_F(DebugTraceSinkTest, LinesOfManyThreadsStayWhole)
{
    ASSERT_TRUE(DebugTraceSink::Configure("8,file=" + path.string()));
    constexpr int kThreads = 4;
    constexpr int kLines = 200;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
    {
        threads.emplace_back([] {
            for (int line = 0; line < kLines; ++line)
            {
                TRACE_VERBOSE("%s", std::string(100, 'x').c_str());
            }
        });
    }
    for (std::thread &thread : threads)
    {
        thread.join();
    }
    DebugTraceSink::Close();

    const std::vector<std::string> lines = FileLines();
    EXPECT_EQ(static_cast<std::size_t>(kThreads * kLines), lines.size());
    for (const std::string &line : lines)
    {
        EXPECT_TRUE(line.ends_with(": " + std::string(100, 'x'))) << line;
    }
}

TEST_F(DebugTraceSinkTest, ClosingWhileOthersTraceEndsCleanly)
{
    std::atomic<bool> stop{false};
    std::thread writer([&] {
        while (!stop)
        {
            const mft_utils::EntryExitTrace trace("writer");
            TRACE_INFO("line");
        }
    });
    for (int i = 0; i < 50; ++i)
    {
        EXPECT_TRUE(DebugTraceSink::Configure("8,file=" + path.string()));
        DebugTraceSink::Close();
        EXPECT_FALSE(TraceEnabled(TraceLevel::Error));
    }
    stop = true;
    writer.join();
}

TEST_F(DebugTraceSinkTest, DisabledTraceEvaluatesNoArgument)
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
}

TEST_F(DebugTraceSinkTest, OverlongLineIsMarked)
{
    const TraceLines trace;
    TRACE_ERROR("%s", std::string(4000, 'y').c_str());

    ASSERT_EQ(1u, trace.lines.size());
    EXPECT_LT(trace.lines[0].size(), 1024u);
    EXPECT_TRUE(trace.lines[0].ends_with("yyy..."));
}

} // namespace
