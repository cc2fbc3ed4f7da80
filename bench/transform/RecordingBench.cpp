// What recording costs: processor time of the process per frame of depth and infrared with it on beside off, in the
// same run. Makes the recording folder and removes it.
//
//   tarn_recording_bench [--module PATH] [--rounds N]
#include "platform/MediaFoundation.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "bench/transform/FrameSession.h"

namespace
{

using namespace tarn_bench;

constexpr wchar_t kFolder[] = L"c:\\OrrinLogs";
constexpr Scenario kScenario{"depth and infrared", 640, 480, true, true};

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

double Least(const std::vector<double> &values)
{
    return *std::min_element(values.begin(), values.end());
}

void Compare(const Run &run)
{
    Session quiet(run, kScenario);
    std::filesystem::create_directory(kFolder);
    {
        Session recorded(run, kScenario);
        std::vector<double> off;
        std::vector<double> on;
        for (int i = 0; i < run.rounds; ++i)
        {
            off.push_back(MicrosecondsPerCall([&] { quiet.Frame(); }));
            on.push_back(MicrosecondsPerCall([&] { recorded.Frame(); }));
        }
        // Others on the machine only ever add: the least of each is nearest to what it costs.
        std::printf("| %s | %ux%u | %.1f (%.1f) | %.1f (%.1f) | %.1f |\n", kScenario.name, kScenario.width,
                    kScenario.height, Least(off), Median(off), Least(on), Median(on), Least(on) - Least(off));
    }
    std::filesystem::remove_all(kFolder);
}

} // namespace

int main(int argc, char **argv)
{
    Run run;
    run.rounds = 20;
    for (int i = 1; i + 1 < argc; i += 2)
    {
        const std::string option = argv[i];
        if (option == "--module")
        {
            run.module = argv[i + 1];
        }
        else if (option == "--rounds")
        {
            run.rounds = std::atoi(argv[i + 1]);
        }
    }
    Require(CoInitializeEx(nullptr, COINIT_MULTITHREADED), "CoInitializeEx");
    Require(MFStartup(MF_VERSION, MFSTARTUP_FULL), "MFStartup");
    if (std::filesystem::exists(kFolder))
    {
        std::fprintf(stderr, "the recording folder is there already\n");
        return 2;
    }
    std::printf("| scenario | size | frame us, least (median) of %d rounds | recorded | recording us |\n"
                "|---|---|---|---|---|\n",
                run.rounds);
    Compare(run);
    std::fflush(stdout);
    TerminateProcess(GetCurrentProcess(), 0); // the platform's threads may outlive a return
}
