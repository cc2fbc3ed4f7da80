// What a node costs beside its kernel: the sample, the output's memory and locks. Each node gets one sample over and
// over and hands its result to a node that drops it; the kernel alone runs on given buffers, in turn in the same run.
#include "platform/MediaFoundation.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include <tarn/tarn_dmft.h>

#include "bench/Task.h"
#include "nodes/CropMmTopologyNode.h"
#include "nodes/SharpeningTopologyNode.h"
#include "device/ConfidenceMapState.h"
#include "device/nodes/TarnConfidenceMapTopologyNode.h"
#include "device/nodes/TarnIr10to8TopologyNode.h"
#include "kernels/InstructionSet.h"
#include "media/BufferPool.h"
#include "nodes/Crop16BitTopologyNode.h"
#include "nodes/ImageResizeTopologyNode.h"
#include "nodes/ImageThresholdTopologyNode.h"
#include "nodes/SampleCopyTopologyNode.h"
#include "base/ThrowIfFailed.h"
#include "media/MediaBufferWrapper.h"

namespace
{

using namespace mft_core;
using mft_utils::ThrowIfFailed;
using tarn_bench::Kind;
using tarn_bench::Task;
using Clock = std::chrono::steady_clock;
using NodeHandle = std::shared_ptr<ITopologyNode>;

class DroppingNode : public ITopologyNode
{
  public:
    DroppingNode() : ITopologyNode(nullptr, "Dropping node") {}
    HRESULT ProcessSample(IMFSample * /*sample*/) override
    {
        ++count;
        return S_OK;
    }

    std::size_t count = 0;
};

std::shared_ptr<ConfidenceMapState> EnabledMap()
{
    auto state = std::make_shared<ConfidenceMapState>();
    state->Set(true);
    return state;
}

NodeHandle MakeNode(const Task &task, const NodeHandle &next)
{
    const auto inputWidth = static_cast<std::uint32_t>(task.inputWidth);
    const auto inputHeight = static_cast<std::uint32_t>(task.inputHeight);
    const auto width = static_cast<std::uint32_t>(task.outputWidth);
    const auto height = static_cast<std::uint32_t>(task.outputHeight);
    const auto signedWidth = static_cast<std::int32_t>(width);
    const auto signedHeight = static_cast<std::int32_t>(height);
    switch (task.kind)
    {
    case Kind::TenToEight:
        return std::make_shared<TarnIr10to8TopologyNode>(next, signedWidth, signedHeight);
    case Kind::Threshold:
        return std::make_shared<ImageThresholdTopologyNode>(next, width, height, std::uint16_t{30000});
    case Kind::Resize:
        return std::make_shared<ImageResizeTopologyNode>(next, inputWidth, inputHeight, width, height);
    case Kind::Crop:
        return std::make_shared<Crop16BitTopologyNode>(next, inputWidth, inputHeight, width, height);
    case Kind::PlaneCopy: // of one plane
        return std::make_shared<SampleCopyTopologyNode>(next, 0.0, 1.0, "Plane copy");
    case Kind::DepthMove: // the map is off
        return std::make_shared<TarnConfidenceMapTopologyNode>(next, signedWidth, signedHeight,
                                                               std::make_shared<ConfidenceMapState>());
    case Kind::Median:
        return std::make_shared<CropMmTopologyNode>(next, static_cast<std::int32_t>(inputWidth),
                                                    static_cast<std::int32_t>(inputHeight), signedWidth, signedHeight);
    case Kind::Sharpen:
        return std::make_shared<SharpeningTopologyNode>(next, signedWidth, signedHeight);
    case Kind::FaceLogin: {
        const auto crop = static_cast<std::uint32_t>(tarn_bench::kFaceCrop);
        const auto inner = static_cast<std::uint32_t>(tarn_bench::kFaceInner);
        NodeHandle node = std::make_shared<TarnIr10to8TopologyNode>(next, signedWidth, signedHeight);
        node = std::make_shared<ImageThresholdTopologyNode>(node, width, height, tarn_bench::kFaceThreshold);
        node = std::make_shared<ImageResizeTopologyNode>(node, inner, inner, width, height);
        node = std::make_shared<Crop16BitTopologyNode>(node, crop, crop, inner, inner);
        node = std::make_shared<SharpeningTopologyNode>(node, static_cast<std::int32_t>(crop),
                                                        static_cast<std::int32_t>(crop));
        return std::make_shared<CropMmTopologyNode>(node, static_cast<std::int32_t>(inputWidth),
                                                    static_cast<std::int32_t>(inputHeight),
                                                    static_cast<std::int32_t>(crop), static_cast<std::int32_t>(crop));
    }
    case Kind::Confidence: // with the map attached and the depth plane moved
        return std::make_shared<TarnConfidenceMapTopologyNode>(next, signedWidth, signedHeight, EnabledMap());
    }
    return nullptr;
}

std::size_t FrameLength(const Task &task)
{
    if (task.kind == Kind::Confidence)
    {
        return 4 * task.outputWidth * task.outputHeight; // two planes
    }
    return task.InPlace() ? task.OutputSize() : task.InputSize();
}

ComPtr<IMFSample> MakeSample(std::size_t size)
{
    ComPtr<IMFSample> sample;
    ThrowIfFailed(MFCreateSample(&sample), "MFCreateSample");
    const mft_utils::MediaBufferWrapper buffer(static_cast<DWORD>(size));
    for (std::size_t i = 0; i < size; ++i)
    {
        buffer.data[i] = static_cast<BYTE>(i % 2 == 0 ? i / 64 : 1);
    }
    ThrowIfFailed(sample->AddBuffer(buffer.mediaBuffer.Get()), "AddBuffer");
    ThrowIfFailed(sample->SetSampleTime(1), "SetSampleTime");
    return sample;
}

double MicrosecondsPerCall(const std::function<void()> &call)
{
    constexpr auto kRoundTime = std::chrono::milliseconds(2);
    int calls = 0;
    const auto start = Clock::now();
    auto now = start;
    for (; now - start < kRoundTime; now = Clock::now())
    {
        call();
        ++calls;
    }
    return std::chrono::duration<double, std::micro>(now - start).count() / calls;
}

double Median(std::vector<double> &values)
{
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2), values.end());
    return values[values.size() / 2];
}

void Compare(const Task &task)
{
    const auto sink = std::make_shared<DroppingNode>();
    const NodeHandle node = MakeNode(task, sink);
    if (node == nullptr)
    {
        return;
    }
    const auto pool = std::make_shared<mft_utils::BufferPool>(); // as in a topology
    node->Propagate(PropagateOrder::CallLambdaAndPropagate, [&](ITopologyNode *one) -> HRESULT {
        one->UseBuffers(pool);
        return S_OK;
    });
    const ComPtr<IMFSample> sample = MakeSample(FrameLength(task));
    node->Process(sample.Get());
    if (sink->count != 1)
    {
        ThrowIfFailed(E_FAIL, "node");
    }
    std::vector<std::uint8_t> input(task.InputSize() + 64, 1);
    std::vector<std::uint8_t> output(task.OutputSize() + 64, 1);
    std::vector<tarn_bench::Contender> contenders;
    AddOurs(task, contenders);
    const auto &kernel = contenders.back(); // the set that the node uses

    constexpr int kRounds = 101;
    std::vector<double> kernelTimes;
    std::vector<double> nodeTimes;
    for (int i = 0; i < kRounds; ++i)
    {
        kernelTimes.push_back(MicrosecondsPerCall([&] { kernel.run({input.data(), output.data()}); }));
        nodeTimes.push_back(MicrosecondsPerCall([&] { node->Process(sample.Get()); }));
    }
    const double kernelTime = Median(kernelTimes);
    const double nodeTime = Median(nodeTimes);
    std::printf("| %s | %s | %.1f | %.1f | %.1f |\n", KindName(task.kind), task.name.c_str(), kernelTime, nodeTime,
                nodeTime - kernelTime);
}

} // namespace

int main()
{
    ThrowIfFailed(CoInitializeEx(nullptr, COINIT_MULTITHREADED), "CoInitializeEx");
    ThrowIfFailed(MFStartup(MF_VERSION, MFSTARTUP_FULL), "MFStartup");
    const std::string_view set = mft_kernels::ActiveInstructionSet();
    std::printf("Microseconds per frame, %.*s, median of 101 rounds\n\n", static_cast<int>(set.size()), set.data());
    std::printf("| node of | size | kernel | node | difference |\n|---|---|---|---|---|\n");
    for (const Task &task : tarn_bench::AllTasks())
    {
        Compare(task);
    }
    MFShutdown();
    CoUninitialize();
    return 0;
}
