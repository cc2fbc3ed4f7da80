// Our kernels, each instruction set a contender of its own.
#include "bench/Task.h"

#include "kernels/Confidence.h"
#include "kernels/Copy.h"
#include "kernels/InstructionSet.h"
#include "kernels/MedianCrop.h"
#include "kernels/Resize.h"
#include "kernels/Sharpen.h"
#include "kernels/TenToEight.h"
#include "kernels/Threshold.h"

#include <memory>

namespace tarn_bench
{
namespace
{
using namespace mft_kernels;

const std::uint16_t *Words(const std::uint8_t *bytes)
{
    return reinterpret_cast<const std::uint16_t *>(bytes);
}

std::uint16_t *Words(std::uint8_t *bytes)
{
    return reinterpret_cast<std::uint16_t *>(bytes);
}

std::ptrdiff_t Pitch(std::size_t width)
{
    return static_cast<std::ptrdiff_t>(2 * width);
}

const std::uint8_t *Centre(const std::uint8_t *input, std::size_t width, std::size_t height, std::size_t newWidth,
                           std::size_t newHeight)
{
    return input + 2 * ((height - newHeight) / 2 * width + (width - newWidth) / 2);
}

// Buffers between the chain's steps.
struct ChainBuffers
{
    std::vector<std::uint16_t> median = std::vector<std::uint16_t>(kFaceCrop * kFaceCrop + kMedianRun);
    std::vector<std::uint16_t> sharp = std::vector<std::uint16_t>(kFaceCrop * kFaceCrop);
    std::vector<std::uint16_t> inner = std::vector<std::uint16_t>(kFaceInner * kFaceInner);
    std::vector<std::uint16_t> small = std::vector<std::uint16_t>(kFaceOutput * kFaceOutput);
    std::vector<float> floats = std::vector<float>(kFaceCrop * kFaceCrop);
    ResizePlan plan{kFaceInner, kFaceInner, kFaceOutput, kFaceOutput};
    std::vector<std::uint8_t> scratch = std::vector<std::uint8_t>(plan.ScratchSize());
};

void RunChain(const Task &t, ChainBuffers &b, const Slot &slot)
{
    const MedianCropInput frame = {Words(slot.input),
                                   Pitch(t.inputWidth),
                                   t.inputWidth,
                                   t.inputHeight,
                                   (t.inputWidth - kFaceCrop) / 2,
                                   (t.inputHeight - kFaceCrop) / 2};
    MedianCrop3x3(frame, b.median.data(), Pitch(kFaceCrop), kFaceCrop, kFaceCrop);
    Sharpen(b.median.data(), Pitch(kFaceCrop), b.sharp.data(), Pitch(kFaceCrop), kFaceCrop, kFaceCrop, b.floats.data());
    const std::size_t offset = (kFaceCrop - kFaceInner) / 2;
    CopyRectangle(b.sharp.data() + offset * kFaceCrop + offset, Pitch(kFaceCrop), b.inner.data(), Pitch(kFaceInner),
                  kFaceInner, kFaceInner);
    Resize(b.plan, b.inner.data(), Pitch(kFaceInner), b.small.data(), Pitch(kFaceOutput), b.scratch.data());
    ClampAbove(b.small.data(), Pitch(kFaceOutput), kFaceOutput, kFaceOutput, kFaceThreshold);
    ConvertTenToEight(b.small.data(), Pitch(kFaceOutput), slot.output, static_cast<std::ptrdiff_t>(kFaceOutput),
                      kFaceOutput, kFaceOutput);
}

std::function<void(const Slot &)> MakeRun(const Task &t)
{
    const std::size_t w = t.outputWidth;
    const std::size_t h = t.outputHeight;
    switch (t.kind)
    {
    case Kind::TenToEight:
        return [w, h](const Slot &s) {
            ConvertTenToEight(Words(s.input), Pitch(w), s.output, static_cast<std::ptrdiff_t>(w), w, h);
        };
    case Kind::Confidence:
        return [w, h](const Slot &s) { ExtractConfidence(s.output, static_cast<std::ptrdiff_t>(w), w, h); };
    case Kind::Threshold:
        return [w, h](const Slot &s) { ClampAbove(Words(s.output), Pitch(w), w, h, 30000); };
    case Kind::PlaneCopy:
        return [w, h](const Slot &s) { CopyPlane(s.output, s.input, 2 * w * h); };
    case Kind::DepthMove:
        return [w, h](const Slot &s) { MovePlane(s.output, s.output + 2 * w * h, 2 * w * h); };
    case Kind::Crop:
        return [t](const Slot &s) {
            const std::uint8_t *from = Centre(s.input, t.inputWidth, t.inputHeight, t.outputWidth, t.outputHeight);
            CopyRectangle(Words(from), Pitch(t.inputWidth), Words(s.output), Pitch(t.outputWidth), t.outputWidth,
                          t.outputHeight);
        };
    case Kind::Resize: {
        auto plan = std::make_shared<ResizePlan>(t.inputWidth, t.inputHeight, w, h);
        auto scratch = std::make_shared<std::vector<std::uint8_t>>(plan->ScratchSize());
        return [t, plan, scratch](const Slot &s) {
            Resize(*plan, Words(s.input), Pitch(t.inputWidth), Words(s.output), Pitch(t.outputWidth), scratch->data());
        };
    }
    case Kind::Median:
        return [t](const Slot &s) {
            MedianCrop3x3({Words(s.input), Pitch(t.inputWidth), t.inputWidth, t.inputHeight,
                           (t.inputWidth - t.outputWidth) / 2, (t.inputHeight - t.outputHeight) / 2},
                          Words(s.output), Pitch(t.outputWidth), t.outputWidth, t.outputHeight);
        };
    case Kind::Sharpen: {
        auto floats = std::make_shared<std::vector<float>>(w * h);
        return [w, h, floats](const Slot &s) {
            Sharpen(Words(s.input), Pitch(w), Words(s.output), Pitch(w), w, h, floats->data());
        };
    }
    case Kind::FaceLogin: {
        auto buffers = std::make_shared<ChainBuffers>();
        return [t, buffers](const Slot &s) { RunChain(t, *buffers, s); };
    }
    }
    return {};
}
} // namespace

void AddOurs(const Task &task, std::vector<Contender> &contenders)
{
    for (const std::string_view name : SupportedInstructionSets())
    {
        const std::string set(name);
        const auto run = MakeRun(task);
        contenders.push_back({"ours-" + set, [set, run](const Slot &slot) {
                                  ForceInstructionSet(set);
                                  run(slot);
                              }});
    }
}
} // namespace tarn_bench
