#include "tests/kernels/KernelCase.h"

#include "kernels/Confidence.h"
#include "kernels/Copy.h"
#include "kernels/InstructionSet.h"
#include "kernels/MedianCrop.h"
#include "kernels/Resize.h"
#include "kernels/Sharpen.h"
#include "kernels/TenToEight.h"
#include "kernels/Threshold.h"

#include <cstdlib>
#include <sstream>

namespace mft_kernels
{
namespace
{
struct Sizes
{
    std::size_t inputRow, inputHeight; // row in bytes
    std::size_t outputRow, outputHeight;
};

std::size_t WholeRuns(std::size_t width)
{
    return (width + kMedianRun - 1) / kMedianRun * kMedianRun;
}

Sizes SizesOf(const KernelCase &c)
{
    switch (c.kernel)
    {
    case Kernel::TenToEight:
        return {2 * c.width, c.height, c.width, c.height};
    case Kernel::Confidence:
        return {0, 0, c.width, c.height};
    case Kernel::ClampAbove:
        return {0, 0, 2 * c.width, c.height};
    case Kernel::CopyPlane:
        return {c.width, 1, c.width, 1};
    case Kernel::MovePlane:
        return {0, 0, c.width + static_cast<std::size_t>(std::abs(c.moveDistance)), 1};
    case Kernel::MedianCrop: {
        const std::size_t frameWidth = c.width + c.marginLeft + c.marginRight;
        const std::size_t frameHeight = c.height + c.marginTop + c.marginBottom;
        if (c.outputPitch != 0)
        {
            return {2 * frameWidth, frameHeight, 2 * (c.outputPitch * (c.height - 1) + WholeRuns(c.width)), 1};
        }
        return {2 * frameWidth, frameHeight, 2 * WholeRuns(c.width), c.height};
    }
    case Kernel::Resize:
        return {2 * c.inputWidth, c.inputHeight, 2 * c.width, c.height};
    case Kernel::CopyRectangle:
    case Kernel::Sharpen:
        break;
    }
    return {2 * c.width, c.height, 2 * c.width, c.height};
}

void RunCase(const KernelCase &c, const Canvas &in, const Canvas &out)
{
    switch (c.kernel)
    {
    case Kernel::TenToEight:
        ConvertTenToEight(in.Words(), in.Stride(), out.Row(0), out.Stride(), c.width, c.height);
        break;
    case Kernel::Confidence:
        ExtractConfidence(out.Row(0), out.Stride(), c.width, c.height);
        break;
    case Kernel::ClampAbove:
        ClampAbove(out.Words(), out.Stride(), c.width, c.height, c.threshold);
        break;
    case Kernel::CopyRectangle:
        CopyRectangle(in.Words(), in.Stride(), out.Words(), out.Stride(), c.width, c.height);
        break;
    case Kernel::CopyPlane:
        CopyPlane(out.Row(0), in.Row(0), c.width);
        break;
    case Kernel::MovePlane: {
        std::uint8_t *source = out.Row(0) + (c.moveDistance < 0 ? -c.moveDistance : 0);
        MovePlane(source + c.moveDistance, source, c.width);
        break;
    }
    case Kernel::MedianCrop: {
        const MedianCropInput frame = {
            in.Words(),   in.Stride(), c.width + c.marginLeft + c.marginRight, c.height + c.marginTop + c.marginBottom,
            c.marginLeft, c.marginTop};
        const std::ptrdiff_t stride =
            c.outputPitch != 0 ? 2 * static_cast<std::ptrdiff_t>(c.outputPitch) : out.Stride();
        MedianCrop3x3(frame, out.Words(), stride, c.width, c.height);
        break;
    }
    case Kernel::Resize: {
        const ResizePlan plan(c.inputWidth, c.inputHeight, c.width, c.height);
        const GuardedMemory scratch(plan.ScratchSize());
        Resize(plan, in.Words(), in.Stride(), out.Words(), out.Stride(), scratch.End() - plan.ScratchSize());
        break;
    }
    case Kernel::Sharpen: {
        const std::size_t scratchSize = c.width * c.height * sizeof(float);
        const GuardedMemory scratch(scratchSize);
        auto *floats = reinterpret_cast<float *>(scratch.End() - scratchSize);
        Sharpen(in.Words(), in.Stride(), out.Words(), out.Stride(), c.width, c.height, floats);
        break;
    }
    }
}

std::string Describe(const KernelCase &c)
{
    std::ostringstream text;
    text << "kernel " << static_cast<int>(c.kernel) << " " << c.width << "x" << c.height << " from " << c.inputWidth
         << "x" << c.inputHeight << " margins " << c.marginLeft << "," << c.marginTop << "," << c.marginRight << ","
         << c.marginBottom << " pitch " << c.outputPitch << " threshold " << c.threshold << " move " << c.moveDistance
         << " contents " << static_cast<int>(c.contents) << " seed " << c.seed;
    for (const Layout &layout : {c.input, c.output})
    {
        text << " layout " << layout.atEnd << "," << layout.misalignment << "," << layout.padding << ","
             << layout.upsideDown;
    }
    return text.str();
}
} // namespace

std::string CompareWithScalar(const KernelCase &testCase, std::string_view instructionSet)
{
    const Sizes sizes = SizesOf(testCase);
    Canvas input(sizes.inputRow, sizes.inputHeight, testCase.input);
    Canvas inputBefore(sizes.inputRow, sizes.inputHeight, testCase.input);
    Canvas output(sizes.outputRow, sizes.outputHeight, testCase.output);
    Canvas expected(sizes.outputRow, sizes.outputHeight, testCase.output);
    input.Fill(testCase.contents, testCase.seed);
    inputBefore.Fill(testCase.contents, testCase.seed);
    output.Fill(testCase.contents, ~testCase.seed);
    expected.Fill(testCase.contents, ~testCase.seed);

    if (!ForceInstructionSet("scalar"))
    {
        return "scalar set cannot be forced";
    }
    RunCase(testCase, input, expected);
    if (!ForceInstructionSet(instructionSet))
    {
        return "instruction set cannot be forced";
    }
    RunCase(testCase, input, output);
    ForceInstructionSet("");

    std::string difference = output.DifferenceTo(expected);
    if (difference.empty())
    {
        difference = input.DifferenceTo(inputBefore);
    }
    return difference.empty() ? difference : Describe(testCase) + ": " + difference;
}
} // namespace mft_kernels
