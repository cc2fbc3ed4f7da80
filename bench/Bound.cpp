// The memory bound: the same bytes moved by plain vector loads and stores, nothing computed; and memcpy, memmove.
#include "bench/Task.h"

#include <immintrin.h>

#include <cstring>

namespace tarn_bench
{
namespace
{
__attribute__((target("avx2"))) void TouchAvx2(std::uint8_t *bytes, std::size_t size)
{
    for (std::size_t i = 0; i + 128 <= size; i += 128)
    {
        auto *p = reinterpret_cast<__m256i *>(bytes + i);
        __m256i a = _mm256_loadu_si256(p);
        __m256i b = _mm256_loadu_si256(p + 1);
        __m256i c = _mm256_loadu_si256(p + 2);
        __m256i d = _mm256_loadu_si256(p + 3);
        __asm__ volatile("" : "+x"(a), "+x"(b), "+x"(c), "+x"(d)); // else the stores are dropped
        _mm256_storeu_si256(p, a);
        _mm256_storeu_si256(p + 1, b);
        _mm256_storeu_si256(p + 2, c);
        _mm256_storeu_si256(p + 3, d);
    }
}

__attribute__((target("avx512f"))) void TouchAvx512(std::uint8_t *bytes, std::size_t size)
{
    for (std::size_t i = 0; i + 256 <= size; i += 256)
    {
        __m512i a = _mm512_loadu_si512(bytes + i);
        __m512i b = _mm512_loadu_si512(bytes + i + 64);
        __m512i c = _mm512_loadu_si512(bytes + i + 128);
        __m512i d = _mm512_loadu_si512(bytes + i + 192);
        __asm__ volatile("" : "+v"(a), "+v"(b), "+v"(c), "+v"(d));
        _mm512_storeu_si512(bytes + i, a);
        _mm512_storeu_si512(bytes + i + 64, b);
        _mm512_storeu_si512(bytes + i + 128, c);
        _mm512_storeu_si512(bytes + i + 192, d);
    }
}

// Two bytes read for each one written.
__attribute__((target("avx2"))) void HalveAvx2(std::uint8_t *out, const std::uint8_t *in, std::size_t outSize)
{
    for (std::size_t i = 0; i + 64 <= outSize; i += 64)
    {
        const auto *p = reinterpret_cast<const __m256i *>(in + 2 * i);
        auto *q = reinterpret_cast<__m256i *>(out + i);
        _mm256_storeu_si256(q, _mm256_or_si256(_mm256_loadu_si256(p), _mm256_loadu_si256(p + 1)));
        _mm256_storeu_si256(q + 1, _mm256_or_si256(_mm256_loadu_si256(p + 2), _mm256_loadu_si256(p + 3)));
    }
}

__attribute__((target("avx512f"))) void HalveAvx512(std::uint8_t *out, const std::uint8_t *in, std::size_t outSize)
{
    for (std::size_t i = 0; i + 128 <= outSize; i += 128)
    {
        const std::uint8_t *p = in + 2 * i;
        _mm512_storeu_si512(out + i, _mm512_or_si512(_mm512_loadu_si512(p), _mm512_loadu_si512(p + 64)));
        _mm512_storeu_si512(out + i + 64, _mm512_or_si512(_mm512_loadu_si512(p + 128), _mm512_loadu_si512(p + 192)));
    }
}

void AddPair(std::vector<Contender> &contenders, std::function<void(const Slot &)> avx2,
             std::function<void(const Slot &)> avx512)
{
    contenders.push_back({"bound-avx2", std::move(avx2)});
    if (__builtin_cpu_supports("avx512f"))
    {
        contenders.push_back({"bound-avx512", std::move(avx512)});
    }
}
} // namespace

void AddBound(const Task &task, std::vector<Contender> &contenders)
{
    const std::size_t size = task.OutputSize();
    if (task.kind == Kind::Confidence || task.kind == Kind::Threshold)
    {
        AddPair(
            contenders, [size](const Slot &s) { TouchAvx2(s.output, size); },
            [size](const Slot &s) { TouchAvx512(s.output, size); });
    }
    else if (task.kind == Kind::TenToEight)
    {
        AddPair(
            contenders, [size](const Slot &s) { HalveAvx2(s.output, s.input, size); },
            [size](const Slot &s) { HalveAvx512(s.output, s.input, size); });
    }
}

void AddStandardLibrary(const Task &task, std::vector<Contender> &contenders)
{
    const std::size_t size = 2 * task.outputWidth * task.outputHeight;
    if (task.kind == Kind::PlaneCopy)
    {
        contenders.push_back({"memcpy", [size](const Slot &s) { std::memcpy(s.output, s.input, size); }});
    }
    else if (task.kind == Kind::DepthMove)
    {
        contenders.push_back({"memmove", [size](const Slot &s) { std::memmove(s.output, s.output + size, size); }});
    }
    else if (task.kind == Kind::Crop)
    {
        contenders.push_back({"memcpy-rows", [task](const Slot &s) {
                                  const std::size_t top = (task.inputHeight - task.outputHeight) / 2;
                                  const std::size_t left = (task.inputWidth - task.outputWidth) / 2;
                                  for (std::size_t y = 0; y < task.outputHeight; ++y)
                                  {
                                      std::memcpy(s.output + y * task.OutputPitch(),
                                                  s.input + 2 * ((top + y) * task.inputWidth + left),
                                                  task.OutputPitch());
                                  }
                              }});
    }
}
} // namespace tarn_bench
