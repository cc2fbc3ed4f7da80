#include "tools/diagnosis/TraceSummary.h"

#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <sstream>

namespace
{

std::string Sample(const char *name)
{
    std::ifstream file(std::string(TARN_TRACE_SAMPLES) + "/" + name, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    EXPECT_FALSE(text.empty()) << name;
    return text;
}

std::string AsUtf16(const std::string &text)
{
    std::string wide = "\xFF\xFE";
    for (const char letter : text)
    {
        wide.append(1, letter).append(1, '\0');
    }
    return wide;
}

// Of files that belong together.
std::string Summarise(const std::vector<std::string> &files)
{
    tarn_host::TraceSummary summary;
    for (const std::string &file : files)
    {
        std::istringstream stream(file);
        summary.Read(stream);
    }
    std::ostringstream text;
    summary.Write(text);
    return text.str();
}

constexpr const char *kForms[] = {"text.log", "tracerpt.xml", "netsh.txt", "pktmon.txt"};

TEST(TraceSummaryTest, EachFormOfOneSessionTellsTheSame)
{
    constexpr const char *kSaid[] = {
        "WRONG   a call is refused: KSPROPERTYSETID_TARN_DMFT_CONTROL property DEPTH_PRESETS (1) SET: "
        "HRESULT_FROM_WIN32(ERROR_GEN_FAILURE) (0x8007001F) (00:00:00.502)\n",
        "\nmodule   version 0.1.0, "
        "C:\\Windows\\System32\\DriverStore\\FileRepository\\tarn.inf_amd64_1\\tarn_dmft.dll\n"
        "process  4321, C:\\Windows\\System32\\svchost.exe\nmachine  CAMERA-PC, Windows 10.0.26100\n"
        "time     2026-11-21 23:59:58.000 to 00:00:01.000, 3.0 s, 25 records\n",
        // with what led to it, and the caller that passed the result on
        "property DEPTH_PRESETS (1) SET, data length 4\n  > 00:00:00.501  mft_core::UvcCommand::Set: ksControl->",
        "  Tarn Depth DMFT Output Stream 0         1        1.1 s        4   10.0       100 ms  MFVideoFormat_D16 "
        "640x480 "
        "@ 30/1 fps; measured input 10.0 fps",
        "\n  4 frames came from the camera\n",
        "\nKS calls that failed\n       1  00:00:00.502  ",
        "00:00:00.600  Tarn Depth DMFT Output Stream 0: asked to go Active -> Stopped\n",
    };
    for (const char *const form : kForms)
    {
        const std::string text = Summarise({Sample(form)});
        for (const char *const said : kSaid)
        {
            EXPECT_NE(std::string::npos, text.find(said)) << form << " lacks " << said << ":\n" << text;
        }
        EXPECT_EQ(std::string(form) != "text.log", text.find(", 1 lines or events of others") != std::string::npos);
    }
    EXPECT_EQ(Summarise({Sample("text.log")}), Summarise({AsUtf16(Sample("text.log"))}));
}

TEST(TraceSummaryTest, SessionsOfSeveralProcessesAndFilesAreKeptApart)
{
    const std::string log = Sample("text.log");
    const std::size_t half = log.find("asked to go Active");
    const std::string older = log.substr(0, log.rfind('\n', half) + 1);
    EXPECT_EQ(Summarise({log}), Summarise({older, log.substr(older.size())}));

    const std::string text =
        Summarise({log + log, // the service was started again
                   "12:00:00.1  77 78 error   mft_core::DeviceMft::InitializeMembers: Tarn: no filter "
                   "attributes\n(12 lines lost)\nsomething else\n"});
    EXPECT_NE(std::string::npos, text.find("\n52 records of 3 sessions, 1 lines or events of others")) << text;
    EXPECT_NE(std::string::npos, text.find("advice  lines of this log were lost")) << text;
    EXPECT_NE(std::string::npos, text.find("WRONG   the transform was not given a camera (12:00:00.100)")) << text;
    EXPECT_NE(std::string::npos, text.find("module   not told")) << text;

    // An error that no rule knows.
    const std::string unknown = Summarise(
        {"12:00:00.1  77 78 error   mft_core::X::Y: Go() failed, hr 0xC00D36B4\n12:00:00.1  77 78 error   z: w\n"});
    EXPECT_TRUE(unknown.starts_with(
        "WRONG   a step failed: mft_core::X::Y: Go() failed, hr MF_E_INVALIDMEDIATYPE (0xC00D36B4)"))
        << unknown;

    // The output was started in a file that is gone.
    const std::string rest = Summarise({log.substr(log.find("23:59:59.600"))});
    EXPECT_NE(std::string::npos, rest.find("Output Stream 0         0            -        4   10.0       100 ms"))
        << rest;
}

// Under the sanitizers: nothing is read past an end, and nothing throws.
TEST(TraceSummaryTest, SurvivesAnyDamage)
{
    constexpr unsigned kSeed = 20261121;
    std::mt19937 random(kSeed);
    const auto below = [&](std::size_t end) { return std::uniform_int_distribution<std::size_t>(0, end - 1)(random); };
    constexpr std::string_view kMarks = "<>&;\"'[]{}=#:. \n\0\xFF/-%0";
    for (const char *const form : kForms)
    {
        const std::string whole = Sample(form);
        for (int round = 0; round < 150; ++round)
        {
            std::string damaged = round % 3 == 0 ? AsUtf16(whole) : whole;
            damaged.resize(round % 2 == 0 ? damaged.size() : below(damaged.size()) + 1);
            for (std::size_t i = below(40); i > 0; --i)
            {
                const std::size_t at = below(damaged.size());
                switch (below(3))
                {
                case 0:
                    damaged[at] = kMarks[below(kMarks.size())];
                    break;
                case 1:
                    damaged.insert(at, damaged.substr(below(damaged.size()), below(60) + 1));
                    break;
                default:
                    damaged.erase(at, below(60) + 1);
                    damaged += damaged.empty() ? "x" : "";
                }
            }
            EXPECT_FALSE(Summarise({damaged}).empty()) << form << ", seed " << kSeed << ", round " << round;
        }
    }
}

} // namespace
