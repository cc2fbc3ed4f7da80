// What every converting node promises, whatever it does with the pixels.
#include "tests/nodes/FrameMemory.h"

#include <stdexcept>

#include "nodes/CropMmTopologyNode.h"
#include "nodes/SharpeningTopologyNode.h"
#include "device/nodes/TarnIr10to8TopologyNode.h"
#include "nodes/Crop16BitTopologyNode.h"
#include "nodes/ImageResizeTopologyNode.h"
#include "nodes/SampleCopyTopologyNode.h"
#include "tests/trace/TraceLines.h"

using namespace mft_core;
using namespace tarn_test;

namespace
{

using NodePtr = std::shared_ptr<ITopologyNode>;

struct NodeCase
{
    const char *name;
    std::size_t neededBytes; // shortest frame that is converted
    std::size_t outputBytes;
    NodePtr (*make)(NodePtr successor);
};

void PrintTo(const NodeCase &nodeCase, std::ostream *stream)
{
    *stream << nodeCase.name;
}

class ConvertingNodesTest : public testing::TestWithParam<NodeCase>
{
  protected:
    static ComPtr<IMFSample> Frame(std::size_t bytes, unsigned seed = 1)
    {
        Bytes content = AsBytes(RandomPixels(bytes / 2 + 1, seed));
        content.resize(bytes);
        return MakeFrame(content);
    }

    std::shared_ptr<CollectingNode> end = std::make_shared<CollectingNode>();
    NodePtr node = GetParam().make(end);
};

TEST_P(ConvertingNodesTest, OutputCarriesTheFrameAndTheInputStaysAsItWas)
{
    const auto input = Frame(GetParam().neededBytes);
    const Bytes before = BytesOf(input);
    ComPtr<IMFMediaBuffer> buffer;
    input->GetBufferByIndex(0, &buffer);

    node->Process(input.Get());

    ASSERT_EQ(1u, end->samples.size());
    ExpectFrameProperties(end->samples[0]);
    EXPECT_EQ(GetParam().outputBytes, BytesOf(end->samples[0]).size());
    EXPECT_REFS(end->samples[0], 1);
    EXPECT_REFS(input, 1);
    EXPECT_REFS(buffer, 2);
    EXPECT_EQ(before, BytesOf(input));
}

TEST_P(ConvertingNodesTest, FrameThatIsTooShortIsDropped)
{
    const std::size_t needed = GetParam().neededBytes;
    for (const std::size_t length : {std::size_t{0}, std::size_t{1}, std::size_t{2}, needed / 2, needed - 1})
    {
        if (length >= needed)
        {
            continue;
        }
        const TraceLines trace(mft_utils::TraceLevel::Error);
        node->Process(Frame(length).Get());

        ASSERT_TRUE(end->samples.empty()) << length;
        EXPECT_TRUE(std::ranges::any_of(trace.Texts(), [](const std::string &text) {
            return text.find("Failed to convert output sample") != std::string::npos;
        })) << length;
    }
    ComPtr<IMFSample> withoutBuffer;
    ASSERT_HR(S_OK, MFCreateSample(&withoutBuffer));
    node->Process(withoutBuffer.Get());
    EXPECT_HR(E_POINTER, node->ProcessSample(nullptr));
    EXPECT_TRUE(end->samples.empty());

    node->Process(Frame(needed + 1).Get());
    EXPECT_EQ(1u, end->samples.size());
}

TEST_P(ConvertingNodesTest, EachFailingCallDropsTheFrameAndTheNextOneIsConverted)
{
    const auto input = Frame(GetParam().neededBytes);
    for (const bool hasPool : {false, true})
    {
        end->samples.clear();
        int call = 1;
        for (bool failed = true; failed; ++call)
        {
            ASSERT_LT(call, 20);
            node->UseBuffers(hasPool ? std::make_shared<mft_utils::BufferPool>() : nullptr);
            const FailingCall failing(call);
            node->Process(input.Get());
            failed = failing.HasFailed();
            EXPECT_EQ(failed ? 0u : 1u, end->samples.size()) << "call " << call;
            EXPECT_REFS(input, 1);
        }
        EXPECT_EQ(5 + 2, call) << "sample, input lock, memory, length, output lock, then the run that passes";
    }
}

TEST_P(ConvertingNodesTest, RecycledMemoryShowsNothingOfAnEarlierFrame)
{
    const auto input = Frame(GetParam().neededBytes);
    node->Process(input.Get());
    const Bytes expected = BytesOf(end->samples.at(0));
    const auto pool = std::make_shared<mft_utils::BufferPool>();
    node->UseBuffers(pool);
    for (const BYTE pattern : {BYTE{0x00}, BYTE{0x5A}, BYTE{0xFF}})
    {
        ComPtr<IMFMediaBuffer> recycled;
        BYTE *data = nullptr;
        ASSERT_HR(S_OK, pool->Take(static_cast<DWORD>(GetParam().outputBytes), &recycled));
        ASSERT_HR(S_OK, recycled->Lock(&data, nullptr, nullptr));
        std::fill_n(data, GetParam().outputBytes, pattern);
        ASSERT_HR(S_OK, recycled->Unlock());
        IMFMediaBuffer *const address = recycled.Get();
        recycled.Reset();

        end->samples.clear(); // the last frame is given back
        node->Process(input.Get());
        ComPtr<IMFMediaBuffer> output;
        ASSERT_HR(S_OK, end->samples.at(0)->GetBufferByIndex(0, &output));
        EXPECT_EQ(address, output.Get());
        EXPECT_EQ(expected, BytesOf(end->samples[0]));
    }
}

TEST_P(ConvertingNodesTest, WithoutANextNodeTheFrameEndsInAnOutOfRangeFailure)
{
    const NodePtr last = GetParam().make(nullptr);
    const auto input = Frame(GetParam().neededBytes);
    EXPECT_EQ("invalid vector<T> subscript", ThrownText<std::out_of_range>([&] { last->ProcessSample(input.Get()); }));
    last->Process(input.Get());
    EXPECT_REFS(input, 1);
}

TEST_P(ConvertingNodesTest, FramesOnSeveralThreadsDoNotMix)
{
    constexpr int kThreads = 4;
    constexpr int kRounds = 20;
    std::vector<ComPtr<IMFSample>> inputs;
    std::vector<Bytes> expected;
    for (unsigned i = 0; i < unsigned{kThreads}; ++i)
    {
        inputs.push_back(Frame(GetParam().neededBytes, i));
        inputs[i]->SetSampleTime(i);
        node->Process(inputs[i].Get());
        expected.push_back(BytesOf(end->samples[i]));
    }
    end->samples.clear();

    OnThreads(kThreads, [&](int thread) {
        for (int round = 0; round < kRounds; ++round)
        {
            node->Process(inputs[static_cast<std::size_t>(thread)].Get());
        }
    });
    ASSERT_EQ(std::size_t{kThreads * kRounds}, end->samples.size());
    for (const auto &sample : end->samples)
    {
        LONGLONG index = 0;
        sample->GetSampleTime(&index);
        ASSERT_EQ(expected[static_cast<std::size_t>(index)], BytesOf(sample));
    }
}

constexpr NodeCase kCases[] = {
    {"SampleCopy", 2, 1,
     [](NodePtr next) -> NodePtr { return std::make_shared<SampleCopyTopologyNode>(next, 0.5, 0.5, "Copy"); }},
    // What is read ends at the last pixel of the rectangle.
    {"Crop16Bit", 2 * (41 * 28 + 39), 2 * 37 * 27,
     [](NodePtr next) -> NodePtr { return std::make_shared<Crop16BitTopologyNode>(next, 41, 32, 37, 27); }},
    {"ImageResize", 2 * 67 * 45, 2 * 93 * 31,
     [](NodePtr next) -> NodePtr { return std::make_shared<ImageResizeTopologyNode>(next, 67, 45, 93, 31); }},
    {"TarnIr10to8", 2 * 33 * 17, 33 * 17,
     [](NodePtr next) -> NodePtr { return std::make_shared<TarnIr10to8TopologyNode>(next, 33, 17, 0); }},
    {"CropMm", 2 * 45 * 39, 2 * 45 * 39,
     [](NodePtr next) -> NodePtr { return std::make_shared<CropMmTopologyNode>(next, 45, 39, 37, 37); }},
    {"Sharpening", 2 * 53 * 31, 2 * 53 * 31,
     [](NodePtr next) -> NodePtr { return std::make_shared<SharpeningTopologyNode>(next, 53, 31); }},
};

INSTANTIATE_TEST_SUITE_P(Nodes, ConvertingNodesTest, testing::ValuesIn(kCases),
                         [](const testing::TestParamInfo<NodeCase> &instance) { return instance.param.name; });

} // namespace
