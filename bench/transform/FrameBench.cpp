// What whole frames cost through COM: processor time of the process per frame beside one plain copy of the input frame
// into a kept block in the same run, and the way of a frame at 60 frames a second.
//
//   tarn_frame_bench [--module PATH] [--allocator] [--latency] [--rounds N]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "bench/transform/FrameSession.h"

namespace
{

using namespace tarn_bench;
using Clock = std::chrono::steady_clock;

const std::vector<Scenario> kScenarios{
    {"depth", 640, 480, true},
    {"depth and map", 640, 480, true, false, true},
    {"infrared", 640, 480, false, true},
    {"depth and infrared", 640, 480, true, true},
    {"face login", 640, 480, false, true, false, true},
    {"depth", 1280, 720, true},
    {"depth and map", 1280, 720, true, false, true},
    {"infrared", 1280, 720, false, true},
    {"depth and infrared", 1280, 720, true, true},
};

double Part(std::vector<double> values, double part)
{
    std::sort(values.begin(), values.end());
    return values.at(static_cast<std::size_t>(static_cast<double>(values.size() - 1) * part));
}

void CompareWithCopy(const Run &run, const Scenario &scenario)
{
    Session session(run, scenario);
    DWORD length = 0;
    const BYTE *const input = session.FrameData(length);
    std::vector<BYTE> kept(length);
    std::vector<double> copies;
    std::vector<double> frames;
    std::vector<double> ratios;
    for (int i = 0; i < 200; ++i)
    {
        session.Frame();
    }
    for (int i = 0; i < run.rounds; ++i)
    {
        frames.push_back(MicrosecondsPerCall([&] { session.Frame(); }));
        copies.push_back(MicrosecondsPerCall([&] { std::memcpy(kept.data(), input, kept.size()); }));
        ratios.push_back(frames.back() / copies.back());
    }
    std::printf("| %s | %ux%u | %.1f | %.0f | %.1f (%.1f-%.1f) |\n", scenario.name, scenario.width, scenario.height,
                Part(copies, 0.5), Part(frames, 0.5), Part(ratios, 0.5), Part(ratios, 0.0), Part(ratios, 1.0));
    std::fflush(stdout);
}

void MeasureLatency(const Run &run, const Scenario &scenario)
{
    constexpr int kSeconds = 10;
    Session session(run, scenario);
    std::vector<double> ways;
    auto due = Clock::now();
    for (int i = 0; i < 60 * kSeconds; ++i)
    {
        due += std::chrono::microseconds(16'667);
        std::this_thread::sleep_until(due);
        const auto start = Clock::now();
        session.Frame();
        ways.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    }
    std::printf("| %s | %ux%u | %.2f | %.2f | %.2f |\n", scenario.name, scenario.width, scenario.height,
                Part(ways, 0.5), Part(ways, 0.99), Part(ways, 1.0));
    std::fflush(stdout);
}

} // namespace

int main(int argc, char **argv)
{
    Run run;
    for (int i = 1; i < argc; ++i)
    {
        const std::string option = argv[i];
        run.latency = run.latency || option == "--latency";
        run.allocator = run.allocator || option == "--allocator";
        if (i + 1 < argc && option == "--module")
        {
            run.module = argv[++i];
        }
        else if (i + 1 < argc && option == "--rounds")
        {
            run.rounds = std::atoi(argv[++i]);
        }
    }
    Require(CoInitializeEx(nullptr, COINIT_MULTITHREADED), "CoInitializeEx");
    Require(MFStartup(MF_VERSION, MFSTARTUP_FULL), "MFStartup");
    std::printf("%s\n\n| scenario | size | copy us | frame us | frame / copy, median (least-most) of %d rounds |\n"
                "|---|---|---|---|---|\n",
                run.allocator ? "With the pipeline's allocator" : "Without an allocator", run.rounds);
    for (const Scenario &scenario : kScenarios)
    {
        CompareWithCopy(run, scenario);
    }
    if (run.latency)
    {
        std::printf("\n| scenario, 60 frames a second | size | p50 ms | p99 ms | max ms |\n|---|---|---|---|---|\n");
        for (const Scenario &scenario : kScenarios)
        {
            MeasureLatency(run, scenario);
        }
    }
    std::fflush(stdout);
    TerminateProcess(GetCurrentProcess(), 0); // the platform's threads may outlive a return
}
