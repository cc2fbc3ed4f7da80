// The same work in Halide, compiled at run time for AVX2 and for this processor, scheduled by hand, one thread.
#include "bench/Task.h"

#include "kernels/SharpenWeights.h"

#include <Halide.h>

#include <memory>
#include <numeric>

namespace tarn_bench
{
namespace
{
using Halide::cast;
using Halide::Expr;
using Halide::Func;
using Halide::Var;
using Halide::Internal::simplify;

Expr Median3(const Expr &a, const Expr &b, const Expr &c)
{
    return max(min(a, b), min(max(a, b), c));
}

struct Pipeline
{
    Var x{"x"}, y{"y"};
    Halide::ImageParam input;
    Func result{"result"};
    int lanes;

    Pipeline(const Halide::Type &type, int vectorBytes) : input(type, 2), lanes(vectorBytes / type.bytes()) {}

    void Conversion()
    {
        const Expr low = input(x, y) & cast<std::uint16_t>(1023);
        result(x, y) =
            cast<std::uint8_t>((low + cast<std::uint16_t>(2) - ((low + cast<std::uint16_t>(254)) >> 8)) >> 2);
        result.vectorize(x, 2 * lanes);
    }

    void Confidence()
    {
        const Expr c = input(x, y);
        const Expr above = max(c, cast<std::uint8_t>(15)) - cast<std::uint8_t>(15);
        result(x, y) = min(above, cast<std::uint8_t>(127)) >> 3;
        result.vectorize(x, lanes).unroll(x, 2);
    }

    void Threshold()
    {
        result(x, y) = min(input(x, y), cast<std::uint16_t>(30000));
        result.vectorize(x, lanes).unroll(x, 2);
    }

    void Copy()
    {
        result(x, y) = input(x, y);
        result.vectorize(x, lanes).unroll(x, 2);
    }

    void Median()
    {
        Func low("low"), middle("middle"), high("high");
        const Expr a = input(x - 1, y);
        const Expr b = input(x, y);
        const Expr c = input(x + 1, y);
        low(x, y) = min(min(a, b), c);
        middle(x, y) = Median3(a, b, c);
        high(x, y) = max(max(a, b), c);
        result(x, y) = Median3(max(max(low(x, y - 1), low(x, y)), low(x, y + 1)),
                               Median3(middle(x, y - 1), middle(x, y), middle(x, y + 1)),
                               min(min(high(x, y - 1), high(x, y)), high(x, y + 1)));
        Var outer("outer"), inner("inner");
        result.split(y, outer, inner, 16, Halide::TailStrategy::GuardWithIf).vectorize(x, lanes);
        for (Func *row : {&low, &middle, &high})
        {
            row->store_at(result, outer).compute_at(result, inner).vectorize(x, lanes);
        }
    }

    void Sharpen()
    {
        using namespace mft_kernels;
        Func floats("floats"), across("across");
        floats(x, y) = cast<float>(input(x, y));
        Expr sum = 0.0F;
        for (int k = 0; k < 9; ++k)
        {
            sum += kSharpenWeights[static_cast<std::size_t>(k)] * floats(x + k - 4, y);
        }
        across(x, y) = sum;
        Expr blurred = 0.0F;
        for (int k = 0; k < 9; ++k)
        {
            blurred += kSharpenWeights[static_cast<std::size_t>(k)] * across(x, y + k - 4);
        }
        const Expr pixel = cast<float>(input(x, y));
        const Expr sharpened = round(pixel + kSharpenAmount * (pixel - blurred));
        result(x, y) = cast<std::int16_t>(clamp(sharpened, 0.0F, 32767.0F));
        result.vectorize(x, lanes);
        across.store_root().compute_at(result, y).vectorize(x, lanes / 2);
        floats.compute_at(result, y).store_root().vectorize(x, lanes / 2);
    }

    void Resize(const Task &task)
    {
        const auto coordinate = [](const Var &v, std::size_t in, std::size_t out, int limit, Expr &first, Expr &second,
                                   Expr &weight) {
            const std::size_t divisor = std::gcd(in, out);
            const int p = static_cast<int>(in / divisor);
            const int q = static_cast<int>(out / divisor);
            const Expr numerator = (2 * v + 1) * p - q;
            const Expr position = numerator / (2 * q); // rounds down
            weight = cast<std::uint32_t>(numerator - position * 2 * q);
            first = clamp(position, 0, limit - 1);
            second = clamp(position + 1, 0, limit - 1);
            return cast<std::uint32_t>(Expr(2 * q));
        };
        Expr left, right, columnWeight, upper, lower, rowWeight;
        const Expr columns = coordinate(x, task.inputWidth, task.outputWidth, static_cast<int>(task.inputWidth), left,
                                        right, columnWeight);
        const Expr rows = coordinate(y, task.inputHeight, task.outputHeight, static_cast<int>(task.inputHeight), upper,
                                     lower, rowWeight);
        const auto wide = [this](const Expr &i, const Expr &j) { return cast<std::uint32_t>(input(i, j)); };
        const auto across = [&](const Expr &j) {
            return wide(left, j) * (columns - columnWeight) + wide(right, j) * columnWeight;
        };
        const Expr sum = across(upper) * (rows - rowWeight) + across(lower) * rowWeight;
        result(x, y) = cast<std::uint16_t>((sum + simplify(columns * rows / 2)) / simplify(columns * rows));
        result.vectorize(x, lanes / 2);
    }
};

Halide::Type TypeOf(Kind kind)
{
    switch (kind)
    {
    case Kind::Confidence:
        return Halide::UInt(8);
    case Kind::Median:
    case Kind::Sharpen:
        return Halide::Int(16);
    default:
        return Halide::UInt(16);
    }
}

template <typename In, typename Out>
Contender MakeContender(const std::string &name, const Task &task, const Halide::Target &target,
                        const std::shared_ptr<Pipeline> &pipeline)
{
    pipeline->result.compile_jit(target);
    return {name, [task, pipeline](const Slot &s) {
                const std::size_t width = task.InPlace() ? task.outputWidth : task.inputWidth;
                const std::size_t height = task.InPlace() ? task.outputHeight : task.inputHeight;
                const std::uint8_t *from = task.InPlace() ? s.output : s.input;
                Halide::Buffer<In> in(reinterpret_cast<In *>(const_cast<std::uint8_t *>(from)), static_cast<int>(width),
                                      static_cast<int>(height));
                Halide::Buffer<Out> out(reinterpret_cast<Out *>(s.output), static_cast<int>(task.outputWidth),
                                        static_cast<int>(task.outputHeight));
                if (task.kind == Kind::Median || task.kind == Kind::Crop)
                {
                    out.set_min(static_cast<int>((width - task.outputWidth) / 2),
                                static_cast<int>((height - task.outputHeight) / 2));
                }
                if (task.kind == Kind::Sharpen)
                {
                    const int border = static_cast<int>(task.Border());
                    out.crop(0, border, static_cast<int>(width) - 2 * border);
                    out.crop(1, border, static_cast<int>(height) - 2 * border);
                }
                pipeline->input.set(in);
                pipeline->result.realize(out);
            }};
}

void Add(const Task &task, const std::string &name, const Halide::Target &target, std::vector<Contender> &contenders)
{
    const bool wide = target.has_feature(Halide::Target::AVX512_Skylake);
    auto pipeline = std::make_shared<Pipeline>(TypeOf(task.kind), wide ? 64 : 32);
    switch (task.kind)
    {
    case Kind::TenToEight:
        pipeline->Conversion();
        contenders.push_back(MakeContender<std::uint16_t, std::uint8_t>(name, task, target, pipeline));
        break;
    case Kind::Confidence:
        pipeline->Confidence();
        contenders.push_back(MakeContender<std::uint8_t, std::uint8_t>(name, task, target, pipeline));
        break;
    case Kind::Threshold:
        pipeline->Threshold();
        contenders.push_back(MakeContender<std::uint16_t, std::uint16_t>(name, task, target, pipeline));
        break;
    case Kind::PlaneCopy:
    case Kind::Crop:
        pipeline->Copy();
        contenders.push_back(MakeContender<std::uint16_t, std::uint16_t>(name, task, target, pipeline));
        break;
    case Kind::Resize:
        pipeline->Resize(task);
        contenders.push_back(MakeContender<std::uint16_t, std::uint16_t>(name, task, target, pipeline));
        break;
    case Kind::Median:
        pipeline->Median();
        contenders.push_back(MakeContender<std::int16_t, std::int16_t>(name, task, target, pipeline));
        break;
    case Kind::Sharpen:
        pipeline->Sharpen();
        contenders.push_back(MakeContender<std::int16_t, std::int16_t>(name, task, target, pipeline));
        break;
    case Kind::DepthMove:
    case Kind::FaceLogin:
        break;
    }
}
} // namespace

void AddHalide(const Task &task, std::vector<Contender> &contenders)
{
    const Halide::Target host = Halide::get_host_target();
    Halide::Target avx2(
        host.os, host.arch, host.bits,
        {Halide::Target::SSE41, Halide::Target::AVX, Halide::Target::AVX2, Halide::Target::FMA, Halide::Target::F16C});
    for (const Halide::Target::Feature feature : {Halide::Target::NoAsserts, Halide::Target::NoBoundsQuery})
    {
        avx2.set_feature(feature);
    }
    Add(task, "halide-avx2", avx2, contenders);
    if (__builtin_cpu_supports("avx512bw"))
    {
        Halide::Target avx512 = avx2;
        avx512.set_feature(Halide::Target::AVX512);
        avx512.set_feature(Halide::Target::AVX512_Skylake);
        Add(task, "halide-avx512", avx512, contenders);
    }
}
} // namespace tarn_bench
