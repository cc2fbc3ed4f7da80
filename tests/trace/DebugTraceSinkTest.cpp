#include "trace/DebugTraceSink.h"

#include <algorithm>
#include <atomic>
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
        std::filesystem::remove(older);
    }

    static std::vector<std::string> LinesOf(const std::filesystem::path &read)
    {
        std::vector<std::string> lines;
        std::ifstream file(read);
        for (std::string line; std::getline(file, line);)
        {
            lines.push_back(line);
        }
        return lines;
    }

    const std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("tarn trace, " + std::to_string(GetCurrentProcessId()) + ".log");
    const std::filesystem::path older = path.wstring() + L".old";
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
                                "8,file=C:\\no such folder\\x", "8,limit=1", "8,limit=0,file=x", "8,limit=4097,file=x"})
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

    const std::vector<std::string> lines = LinesOf(path);
    ASSERT_EQ(5u, lines.size());
    const std::string header = "\\d\\d:\\d\\d:\\d\\d\\.\\d{6} +" + std::to_string(GetCurrentProcessId()) + " +\\d+ ";
    EXPECT_TRUE(std::regex_match(
        lines[0],
        std::regex(header + "info    event Module Version=\"\\d+\\.\\d+\\.\\d+\" Date=\"\\d{4}-\\d\\d-\\d\\d\" "
                            "Machine=\".+\" ProcessId=\\d+ Windows=\"\\d+\\.\\d+\\.\\d+\" "
                            "Path=\".+tarn_trace_test.exe\" Process=\".+tarn_trace_test.exe\"")))
        << lines[0];
    EXPECT_TRUE(std::regex_match(lines[2], std::regex(header + "info +\\S+: frame 1"))) << lines[2];
    EXPECT_TRUE(lines[3].ends_with(" error   event Demo hr=0x80004005")) << lines[3];
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
    std::vector<std::string> lines = LinesOf(path);
    EXPECT_GT(lines.size(), 700u);
    lines.erase(lines.begin()); // the module's record
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

// Two writers as two processes are: with a handle each.
TEST_F(DebugTraceSinkTest, FullFileBecomesTheOlderOneAndNoLineOfEitherWriterIsLost)
{
    const std::filesystem::path folder = std::filesystem::current_path();
    std::filesystem::current_path(path.parent_path());
    const std::string setting = "8,limit=1,file=" + path.filename().string();
    mft_utils::TraceDestination writers[2];
    for (auto &writer : writers)
    {
        ASSERT_TRUE(writer.Open(mft_utils::TraceSetting::Parse(setting)));
    }
    std::filesystem::current_path(folder); // the log stays where it was
    constexpr int kLines = 15000;
    for (int i = 0; i < kLines; ++i)
    {
        mft_utils::TraceText line;
        line.AppendFormat("%s %d", std::string(200, 'x').c_str(), i);
        writers[i % 2].Write(line);
    }
    for (auto &writer : writers)
    {
        writer.Close();
    }

    std::vector<std::string> lines = LinesOf(older);
    const std::vector<std::string> newest = LinesOf(path);
    lines.insert(lines.end(), newest.begin(), newest.end());
    int expected[] = {-1, -1};
    int records = 0;
    for (const std::string &line : lines)
    {
        if (line.find(" event Module ") != std::string::npos)
        {
            ++records;
            continue;
        }
        const int number = std::stoi(line.substr(line.rfind(' ')));
        int &next = expected[number % 2];
        EXPECT_TRUE(next == -1 || next == number) << number;
        next = number + 2;
    }
    EXPECT_EQ(kLines, expected[0]);
    EXPECT_EQ(kLines + 1, expected[1]);
    EXPECT_EQ(4, records); // of each writer in each file
    constexpr std::uintmax_t kMiB = 1024 * 1024;
    EXPECT_GE(std::filesystem::file_size(older), kMiB);
    EXPECT_LT(std::filesystem::file_size(older), kMiB + 3 * mft_utils::TraceFile::kBytesBetweenLooks);
    EXPECT_LT(std::filesystem::file_size(path), kMiB);
    EXPECT_FALSE(std::filesystem::exists(path.wstring() + L".gate"));
}

TEST_F(DebugTraceSinkTest, FullFileThatCannotBeRenamedIsEmptied)
{
    std::filesystem::create_directory(older); // nothing can take its place
    const std::string setting = "8,limit=1,file=" + path.string();
    mft_utils::TraceDestination writer;
    ASSERT_TRUE(writer.Open(mft_utils::TraceSetting::Parse(setting)));
    constexpr std::uintmax_t kMiB = 1024 * 1024;
    std::uintmax_t largest = 0;
    for (int i = 0; i < 6000; ++i)
    {
        writer.Write(mft_utils::TraceText(std::string(500, 'x')));
        largest = std::max(largest, std::filesystem::file_size(path));
    }
    writer.Close();
    EXPECT_GE(largest, kMiB);
    EXPECT_LT(largest, kMiB + 2 * mft_utils::TraceFile::kBytesBetweenLooks);
    EXPECT_NE(std::string::npos, LinesOf(path).at(0).find(" event Module "));
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
