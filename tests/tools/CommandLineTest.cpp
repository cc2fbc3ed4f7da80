#include "tools/command/CommandLine.h"

#include <CLI/CLI.hpp>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

#include "TemporaryFolder.h"
#include "tools/command/ProgressLine.h"
#include "tools/runs/StreamCommand.h"
#include "tools/command/Text.h"
#include "tools/command/VideoSize.h"

namespace
{

using namespace tarn_host;
using tarn_host_test::TemporaryFolder;

class CommandLineTest : public testing::Test
{
  protected:
    ExitCode Run(std::vector<std::string> arguments)
    {
        output.str({});
        errors.str({});
        std::vector<std::unique_ptr<Command>> commands;
        commands.push_back(std::make_unique<StreamCommand>());
        return CommandLine(std::move(commands)).Run(std::move(arguments), output, errors);
    }

    void ExpectOneErrorLineWith(const std::string &part) const
    {
        const std::string text = errors.str();
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
        EXPECT_NE(text.find(part), std::string::npos) << text;
        EXPECT_TRUE(output.str().empty()) << output.str();
    }

    static std::string ReadAll(const std::filesystem::path &path)
    {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::ostringstream output;
    std::ostringstream errors;
};

TEST_F(CommandLineTest, WrongOptionsGiveOneClearLine)
{
    const struct
    {
        std::vector<std::string> arguments;
        const char *named;
    } cases[] = {
        {{}, "A subcommand is required"},
        {{"dance"}, "no command 'dance'"},
        {{"stream", "--colour", "3"}, "unknown: --colour 3"},
        {{"stream", "--count", "0"}, "--count"},
        {{"stream", "--count", "many"}, "--count"},
        {{"stream", "--count", "5", "--seconds", "1"}, "--seconds"},
        {{"stream", "--seconds", "-1"}, "--seconds"},
        {{"stream", "--pace", "leisurely"}, "'leisurely' is not one of fast|realtime"},
        {{"stream", "--transform", "1"}, "--transform"},
        {{"stream", "--depth", "640x480"}, "640x480@30"},
        {{"stream", "--depth", "--frames", "DIR"}, "--depth: '--frames'"},
        {{"stream", "--face-login", "--ir", "640x480@30"}, "360x360@60 then, not at 640x480@30"},
        {{"stream", "--face-login", "--depth", "640x480@30"}, "leave --depth out"},
        {{"stream", "--transform", "color", "--ir", "640x480@30"}, "--ir"},
        {{"stream", "--color", "640x480@30"}, "--transform color"},
        {{"stream", "--confidence", "--ir", "640x480@30"}, "while infrared runs"},
        {{"stream", "--save-frames"}, "--out"},
        {{"stream", "--frames"}, "--frames"},
        {{"stream", "--frames", "Z:\\no\\such\\folder"}, "Z:\\no\\such\\folder"},
        {{"stream", "--dll", "Z:\\no\\such.dll"}, "Z:\\no\\such.dll"},
    };
    for (const auto &one : cases)
    {
        EXPECT_EQ(Run(one.arguments), ExitCode::Usage) << one.named;
        ExpectOneErrorLineWith(one.named);
    }
}

TEST_F(CommandLineTest, UnusableFramesGiveOneClearLine)
{
    const TemporaryFolder folder;
    const std::vector<std::string> arguments{"stream", "--quiet", "--frames", folder.Text()};

    EXPECT_EQ(Run(arguments), ExitCode::Usage) << "empty folder";
    ExpectOneErrorLineWith(folder.Text());

    std::ofstream(folder.Path() / "depth_0000.png") << "not a picture";
    EXPECT_EQ(Run(arguments), ExitCode::Usage) << "unreadable picture";
    ExpectOneErrorLineWith("depth_0000.png");

    std::ofstream(folder.Path() / "recording.txt") << "depth_mm_per_unit none\n";
    EXPECT_EQ(Run(arguments), ExitCode::Usage) << "unreadable notes";
    ExpectOneErrorLineWith("depth_mm_per_unit none");
}

TEST_F(CommandLineTest, ATypeThatIsNotOfferedIsAnsweredWithEachThatIs)
{
    EXPECT_EQ(Run({"stream", "--quiet", "--depth", "640x480@29"}), ExitCode::Usage);
    ExpectOneErrorLineWith("640x480@29");
    const std::string text = errors.str();
    EXPECT_NE(text.find("D16 640x480@30"), std::string::npos) << text;
    EXPECT_EQ(text.find("D16 640x480@30"), text.rfind("D16 640x480@30")) << text;
}

// A run that goes wrong ends with one line or with a report, and with the module out of the process.
TEST_F(CommandLineTest, BrokenModulesEndWithTheFailureCodeAndAreLetGo)
{
    const TemporaryFolder folder;
    const std::string noModule = ToText(folder.Path() / "none.dll");
    std::ofstream(ToPath(noModule)) << "not a program";
    const std::string noExports = ToText(DefaultModulePath().replace_filename("tarn-host.exe"));
    const std::string faulty = ToText(DefaultModulePath().replace_filename("tarn_faulty_dmft.dll"));

    EXPECT_EQ(Run({"stream", "--quiet", "--dll", noModule}), ExitCode::Failure);
    ExpectOneErrorLineWith("none.dll failed with HRESULT_FROM_WIN32(ERROR_BAD_EXE_FORMAT) (0x800700C1)");
    EXPECT_EQ(Run({"stream", "--quiet", "--dll", noExports}), ExitCode::Failure);
    ExpectOneErrorLineWith("no DllGetClassObject in");
    EXPECT_EQ(Run({"stream", "--quiet", "--dll", faulty}), ExitCode::Failure) << "a refused start";
    ExpectOneErrorLineWith("SetOutputStreamState failed with MF_E_INVALIDMEDIATYPE (0xC00D36B4)");
    EXPECT_EQ(GetModuleHandleW(L"tarn_faulty_dmft.dll"), nullptr);

    testing::internal::CaptureStdout();
    EXPECT_EQ(Run({"stream", "--quiet", "--dll", faulty, "--transform", "color", "--seconds", "60", "--json"}),
              ExitCode::Failure)
        << "no frame comes out";
    const auto report = nlohmann::json::parse(testing::internal::GetCapturedStdout());
    EXPECT_NE(report["problems"].dump().find("no more frames came"), std::string::npos) << report;
    EXPECT_EQ(report["leftBehind"]["transformReferences"], 0) << report;
    EXPECT_EQ(GetModuleHandleW(L"tarn_faulty_dmft.dll"), nullptr);
}

TEST_F(CommandLineTest, SavedFramesPlayAgainAndTheNextRunTakesTheirPlace)
{
    const TemporaryFolder first;
    const TemporaryFolder second;
    const std::vector<std::string> stream{"stream",  "--quiet",    "--pace",       "fast",
                                          "--depth", "640x480@30", "--confidence", "--save-frames"};
    const auto run = [&](std::vector<std::string> more) {
        more.insert(more.begin(), stream.begin(), stream.end());
        return Run(more);
    };

    ASSERT_EQ(run({"--count", "3", "--out", first.Text()}), ExitCode::Success) << errors.str();
    ASSERT_EQ(run({"--frames", first.Text(), "--out", second.Text()}), ExitCode::Success) << errors.str();
    for (const char *name : {"depth_000002.png", "confidence_000002.png"})
    {
        const std::string saved = ReadAll(first.Path() / name);
        EXPECT_GT(saved.size(), 640U * 480) << name;
        EXPECT_TRUE(saved == ReadAll(second.Path() / name)) << name;
    }
    const std::string sheet = ReadAll(second.Path() / "contact-sheet.png");
    EXPECT_FALSE(sheet.empty());

    ASSERT_EQ(run({"--count", "1", "--out", first.Text()}), ExitCode::Success) << errors.str();
    EXPECT_TRUE(std::filesystem::exists(first.Path() / "depth_000000.png"));
    EXPECT_FALSE(std::filesystem::exists(first.Path() / "depth_000001.png"));

    EXPECT_EQ(run({"--out", second.Text(), "--frames", second.Text()}), ExitCode::Usage);
    ExpectOneErrorLineWith("--out is the folder of --frames");
    EXPECT_TRUE(sheet == ReadAll(second.Path() / "contact-sheet.png"));
}

TEST_F(CommandLineTest, HelpFitsOneScreenAndListsTheExitCodes)
{
    EXPECT_EQ(Run({"stream", "--help"}), ExitCode::Success);

    std::istringstream help(output.str());
    std::string line;
    int lines = 0;
    while (std::getline(help, line))
    {
        ++lines;
        EXPECT_LE(line.size(), 120U) << line;
    }
    EXPECT_LE(lines, 30) << output.str();
    EXPECT_NE(output.str().find("Exit codes: 0"), std::string::npos);
}

TEST(ProgressLineTest, TellsTheShareAndTheTimeThatIsLeft)
{
    using namespace std::chrono_literals;
    EXPECT_EQ(ProgressLine::Describe(0, 1s), "0 %");
    EXPECT_EQ(ProgressLine::Describe(0.25, 10s), "25 %, 30 s left");
    EXPECT_EQ(ProgressLine::Describe(0.5, 601s), "50 %, 11 min left");
    EXPECT_EQ(ProgressLine::Describe(0.01, 864s), "1 %, 24 h left");
    EXPECT_EQ(ProgressLine::Describe(1, 5s), "100 %, 0 s left");
}

TEST(VideoSizeTest, TakesSizeAndRateAndNothingElse)
{
    EXPECT_EQ(VideoSize::Parse("640x480@30"), (VideoSize{640, 480, 30}));
    EXPECT_EQ(VideoSize::Parse("640x480@30").ToText(), "640x480@30");

    for (const char *text : {"", "640x480", "640x480@", "0x480@30", "640x0@30", "640x480@0", "-640x480@30",
                             "640x480@30 ", "640X480@30", "16385x480@30", "99999999999x480@30"})
    {
        EXPECT_THROW(VideoSize::Parse(text), UsageError) << text;
    }
}

} // namespace
