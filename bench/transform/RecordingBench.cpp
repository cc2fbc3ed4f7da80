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

void Compare(const Run &run)
{
    Session quiet(run, kScenario);
    std::filesystem::create_directory(kFolder);
    {
        Session recorded(run, kScenario);
        std::vector<double> off;
        std::vector<double> costs;
        for (int i = 0; i < run.rounds; ++i)
        {
            // Either goes first in turn.
            const bool recordedFirst = i % 2 == 0;
            const double first = MicrosecondsPerCall([&] { (recordedFirst ? recorded : quiet).Frame(); });
            const double second = MicrosecondsPerCall([&] { (recordedFirst ? quiet : recorded).Frame(); });
            off.push_back(recordedFirst ? second : first);
            costs.push_back(recordedFirst ? first - second : second - first);
        }
        std::printf("| %s | %ux%u | %.0f | %.1f (%.1f-%.1f) |\n", kScenario.name, kScenario.width, kScenario.height,
                    Median(off), Median(costs), *std::min_element(costs.begin(), costs.end()),
                    *std::max_element(costs.begin(), costs.end()));
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
    std::printf("| scenario | size | frame us, not recorded | recording us, median (least-most) of %d rounds |\n"
                "|---|---|---|---|\n",
                run.rounds);
    Compare(run);
    std::fflush(stdout);
    TerminateProcess(GetCurrentProcess(), 0); // the platform's threads may outlive a return
}
