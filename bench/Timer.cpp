// Times our kernels without any library, so that the native build and the module's target can be compared.
// Prints one line per kernel: name, instruction set, microseconds (tenth percentile). The arguments name the
// set and the kind to time.
#include "bench/Task.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>

namespace
{
using namespace tarn_bench;
using Clock = std::chrono::steady_clock;

// A low percentile of many short rounds: what the machine does beside this only ever adds.
double MicrosecondsPerCall(const Contender &contender, const Slot &slot)
{
    constexpr std::size_t kRounds = 300;
    constexpr auto kRoundTime = std::chrono::microseconds(300);
    std::vector<double> rounds;
    while (rounds.size() < kRounds)
    {
        int calls = 0;
        const auto start = Clock::now();
        auto now = start;
        for (; now - start < kRoundTime; now = Clock::now())
        {
            contender.run(slot);
            ++calls;
        }
        rounds.push_back(std::chrono::duration<double, std::micro>(now - start).count() / calls);
    }
    std::nth_element(rounds.begin(), rounds.begin() + kRounds / 10, rounds.end());
    return rounds[kRounds / 10];
}

std::uint8_t *WholeLine(std::vector<std::uint8_t> &bytes)
{
    const std::size_t over = reinterpret_cast<std::uintptr_t>(bytes.data()) % 64;
    return bytes.data() + (64 - over) % 64;
}
} // namespace

int main(int argc, char **argv)
{
    const std::string only = argc > 1 ? argv[1] : "ours-avx";
    for (const Task &task : AllTasks())
    {
        if (argc > 2 && std::string(KindName(task.kind)) != argv[2])
        {
            continue;
        }
        std::vector<std::uint8_t> input(task.InputSize() + 128, 1);
        std::vector<std::uint8_t> output(task.OutputSize() + 128, 1);
        std::vector<Contender> contenders;
        AddOurs(task, contenders);
        for (const Contender &contender : contenders)
        {
            if (contender.name.rfind(only, 0) == 0)
            {
                std::cout << KindName(task.kind) << "|" << task.name << "|" << contender.name << "|"
                          << MicrosecondsPerCall(contender, {WholeLine(input), WholeLine(output)}) << "\n";
            }
        }
    }
    return 0;
}
