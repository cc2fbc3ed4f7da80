// Registers every contender for every task, hot and cold, with how far its result is from ours.
#include "bench/Task.h"

#include <benchmark/benchmark.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

namespace
{
using namespace tarn_bench;

constexpr std::size_t kColdBytes = std::size_t{160} << 20U; // several times the last-level cache

struct Free
{
    void operator()(std::uint8_t *p) const
    {
        std::free(p);
    }
};
using Memory = std::unique_ptr<std::uint8_t, Free>;

std::size_t WholeLines(std::size_t size)
{
    return (size + 127) / 64 * 64;
}

// One arena for all tasks: each takes its buffers one behind the other.
Memory arena;
std::size_t arenaSize = 0;

std::vector<Slot> MakeSlots(const Task &task, bool cold)
{
    const std::size_t each = WholeLines(task.InputSize()) + WholeLines(task.OutputSize());
    const std::size_t count = cold ? kColdBytes / each : 1;
    if (arenaSize < count * each)
    {
        arenaSize = std::max(count * each, kColdBytes);
        arena.reset(static_cast<std::uint8_t *>(std::aligned_alloc(64, arenaSize)));
        if (arena == nullptr)
        {
            throw std::bad_alloc();
        }
        std::memset(arena.get(), 1, arenaSize);
    }
    std::vector<Slot> slots;
    for (std::size_t i = 0; i < count; ++i)
    {
        std::uint8_t *start = arena.get() + i * each;
        slots.push_back({start, start + WholeLines(task.InputSize())});
    }
    return slots;
}

// A smooth picture with noise, 10 bits for what works on infrared.
void Fill(const Task &task, std::uint8_t *bytes, std::size_t size)
{
    const bool tenBits = task.kind == Kind::TenToEight || task.kind == Kind::FaceLogin;
    std::uint32_t state = 12345;
    for (std::size_t i = 0; i + 1 < size; i += 2)
    {
        state = state * 1664525U + 1013904223U;
        const std::uint32_t value =
            (static_cast<std::uint32_t>(i) / 64U + (state >> 22U)) & (tenBits ? 1023U : 0x7FFFU);
        const auto word = static_cast<std::uint16_t>(value);
        std::memcpy(bytes + i, &word, sizeof(word));
    }
}

std::vector<std::uint8_t> ResultOf(const Task &task, const Contender &contender)
{
    const Memory input(static_cast<std::uint8_t *>(std::aligned_alloc(64, WholeLines(task.InputSize()))));
    const Memory output(static_cast<std::uint8_t *>(std::aligned_alloc(64, WholeLines(task.OutputSize()))));
    Fill(task, input.get(), task.InputSize());
    Fill(task, output.get(), task.OutputSize());
    contender.run({input.get(), output.get()});
    return {output.get(), output.get() + task.OutputSize()};
}

// Largest difference between two results inside the border.
double LargestDifference(const Task &task, const std::vector<std::uint8_t> &a, const std::vector<std::uint8_t> &b)
{
    int largest = 0;
    const std::size_t border = task.Border();
    for (std::size_t y = border; y < task.outputHeight - border; ++y)
    {
        for (std::size_t x = border; x < task.outputWidth - border; ++x)
        {
            std::uint16_t values[2] = {};
            const std::size_t offset = y * task.OutputPitch() + x * task.OutputPixelSize();
            std::memcpy(&values[0], &a[offset], task.OutputPixelSize());
            std::memcpy(&values[1], &b[offset], task.OutputPixelSize());
            largest = std::max(largest, std::abs(int{values[0]} - int{values[1]}));
        }
    }
    return largest;
}

void Measure(benchmark::State &state, const Task &task, const Contender &contender, bool cold, double difference)
{
    const std::vector<Slot> slots = MakeSlots(task, cold);
    Fill(task, const_cast<std::uint8_t *>(slots[0].input), task.InputSize());
    contender.run(slots[0]);
    std::size_t next = 0;
    for (auto _ : state)
    {
        contender.run(slots[next]);
        next = next + 1 < slots.size() ? next + 1 : 0;
        benchmark::ClobberMemory();
    }
    state.counters["difference"] = difference;
}

// Includes an output buffer per call whose pages are touched for the first time, as a node makes one for each frame.
void MeasureFresh(benchmark::State &state, const Task &task, const Contender &contender)
{
    const std::vector<Slot> slots = MakeSlots(task, false);
    Fill(task, const_cast<std::uint8_t *>(slots[0].input), task.InputSize());
    for (auto _ : state)
    {
        void *output = mmap(nullptr, task.OutputSize(), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (output == MAP_FAILED)
        {
            throw std::bad_alloc();
        }
        contender.run({slots[0].input, static_cast<std::uint8_t *>(output)});
        benchmark::ClobberMemory();
        munmap(output, task.OutputSize());
    }
    state.counters["difference"] = 0;
}

void Register(const Task &task)
{
    std::vector<Contender> contenders;
    AddOurs(task, contenders);
    AddBound(task, contenders);
    AddStandardLibrary(task, contenders);
    AddOpenCv(task, contenders);
    AddLibyuv(task, contenders);
    AddHalide(task, contenders);
    AddZimg(task, contenders);
    const std::vector<std::uint8_t> ours = ResultOf(task, contenders.front());
    const std::string prefix = std::string(KindName(task.kind)) + "|" + task.name + "|";
    for (const Contender &contender : contenders)
    {
        const bool isBound = contender.name.rfind("bound", 0) == 0;
        const double difference = isBound ? 0 : LargestDifference(task, ours, ResultOf(task, contender));
        for (const bool cold : {false, true})
        {
            benchmark::RegisterBenchmark((prefix + (cold ? "cold|" : "hot|") + contender.name).c_str(),
                                         [task, contender, cold, difference](benchmark::State &state) {
                                             Measure(state, task, contender, cold, difference);
                                         });
        }
        if (contender.name.rfind("ours-avx", 0) == 0 && !task.InPlace())
        {
            benchmark::RegisterBenchmark(
                (prefix + "fresh|" + contender.name).c_str(),
                [task, contender](benchmark::State &state) { MeasureFresh(state, task, contender); });
        }
    }
}
} // namespace

int main(int argc, char **argv)
{
    for (const Task &task : AllTasks())
    {
        Register(task);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
