#include "tools/command/CommandLine.h"

#include <CLI/CLI.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "TemporaryFolder.h"
#include "tools/runs/StreamCommand.h"
#include "tools/command/Text.h"
#include "tools/command/VideoSize.h"

namespace
{

using namespace tarn_host;
using tarn_host_test::TemporaryFolder;

// Ends the way its option says.
class EndingCommand final : public Command
{
  public:
    const char *Name() const noexcept override
    {
        return "end";
    }
    const char *Summary() const noexcept override
    {
        return "ends";
    }
    void AddOptions(CLI::App &app) override
    {
        app.add_option("--how", how);
    }
    ExitCode Run() override
    {
        if (how == "usage")
        {
            throw UsageError("no such folder: x");
        }
        if (how == "failure")
        {
            throw HostError("InitializeTransform", E_FAIL);
        }
        return how == "lost" ? ExitCode::Failure : ExitCode::Success;
    }

  private:
    std::string how;
};

class CommandLineTest : public testing::Test
{
  protected:
    ExitCode Run(std::vector<std::string> arguments)
    {
        output.str({});
        errors.str({});
        std::vector<std::unique_ptr<Command>> commands;
        commands.push_back(std::make_unique<StreamCommand>());
        commands.push_back(std::make_unique<EndingCommand>());
        return CommandLine(std::move(commands)).Run(std::move(arguments), output, errors);
    }

    void ExpectOneErrorLineWith(const std::string &part) const
    {
        const std::string text = errors.str();
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
        EXPECT_NE(text.find(part), std::string::npos) << text;
        EXPECT_TRUE(output.str().empty()) << output.str();
    }

    std::ostringstream output;
    std::ostringstream errors;
};

TEST_F(CommandLineTest, OutcomeOfTheCommandBecomesTheExitCode)
{
    EXPECT_EQ(Run({"end"}), ExitCode::Success);
    EXPECT_EQ(Run({"end", "--how", "lost"}), ExitCode::Failure);

    EXPECT_EQ(Run({"end", "--how", "usage"}), ExitCode::Usage);
    ExpectOneErrorLineWith("no such folder: x");

    EXPECT_EQ(Run({"end", "--how", "failure"}), ExitCode::Failure);
    ExpectOneErrorLineWith("InitializeTransform failed with 0x80004005");
}

TEST_F(CommandLineTest, WrongOptionsGiveOneClearLine)
{
    const struct
    {
        std::vector<std::string> arguments;
        const char *named;
    } cases[] = {
        {{}, "A subcommand is required"},
        {{"dance"}, "no command 'dance'"},
        {{"stream", "--colour"}, "--colour"},
        {{"stream", "--count", "0"}, "--count"},
        {{"stream", "--count", "many"}, "--count"},
        {{"stream", "--count", "5", "--seconds", "1"}, "--seconds"},
        {{"stream", "--seconds", "-1"}, "--seconds"},
        {{"stream", "--pace", "leisurely"}, "'leisurely' is not one of fast|realtime"},
        {{"stream", "--transform", "1"}, "--transform"},
        {{"stream", "--depth", "640x480"}, "640x480@30"},
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
    const std::vector<std::string> arguments{"stream", "--no-register", "--quiet", "--frames", folder.Text()};

    EXPECT_EQ(Run(arguments), ExitCode::Usage) << "empty folder";
    ExpectOneErrorLineWith(folder.Text());

    std::ofstream(folder.Path() / "depth_0000.png") << "not a picture";
    EXPECT_EQ(Run(arguments), ExitCode::Usage) << "unreadable picture";
    ExpectOneErrorLineWith("depth_0000.png");
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

TEST(TextTest, PathsBeyondAsciiSurviveTheRoundTrip)
{
    const std::string text = "Z:\\Fl\xC3\xA4"
                             "che\\\xE6\xB7\xB1";

    EXPECT_EQ(ToText(ToPath(text)), text);
    EXPECT_EQ(ToPath(text).native(), L"Z:\\Fl\u00E4che\\\u6DF1");
}

} // namespace
