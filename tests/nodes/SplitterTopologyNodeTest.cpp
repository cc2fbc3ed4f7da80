#include "nodes/SplitterTopologyNode.h"

#include "device/nodes/TarnIrIlluminationTopologyNode.h"
#include "tests/nodes/FrameMemory.h"

using namespace mft_core;
using namespace tarn_test;

namespace
{

constexpr GUID kBranchMark = {0x6A3F7B10, 0x0002, 0x4000, {1, 2, 3, 4, 5, 6, 7, 8}};

// Notes its turn, and what an earlier branch left on its sample, then leaves something itself.
class BranchNode : public ITopologyNode
{
  public:
    BranchNode(std::string &turns, char letter) : ITopologyNode(nullptr, "Branch node"), order(turns), mark(letter) {}
    HRESULT ProcessSample(IMFSample *input) override
    {
        order += mark;
        sample = input;
        foundMark = SUCCEEDED(input->GetItem(kBranchMark, nullptr));
        return input->SetUINT32(kBranchMark, static_cast<UINT32>(mark));
    }

    ComPtr<IMFSample> sample;
    bool foundMark = false;

  private:
    std::string &order;
    const char mark;
};

class SplitterTopologyNodeTest : public testing::Test
{
  protected:
    void Split(BranchSamples kind)
    {
        SplitterTopologyNode splitter(a, kind);
        splitter.AddNextNode(b);
        splitter.AddNextNode(c);
        splitter.Process(frame.Get());
    }

    std::string turns;
    std::shared_ptr<BranchNode> a = std::make_shared<BranchNode>(turns, 'a');
    std::shared_ptr<BranchNode> b = std::make_shared<BranchNode>(turns, 'b');
    std::shared_ptr<BranchNode> c = std::make_shared<BranchNode>(turns, 'c');
    ComPtr<IMFSample> frame = MakeFrame(Bytes(8));
};

TEST_F(SplitterTopologyNodeTest, BranchesSeeOneSharedSampleInOrder)
{
    Split(BranchSamples::Shared);
    EXPECT_EQ("abc", turns);
    EXPECT_EQ(frame.Get(), b->sample.Get());
    EXPECT_TRUE(c->foundMark);
    EXPECT_REFS(frame, 1 + 3);
    EXPECT_HR(S_OK, SplitterTopologyNode(nullptr).ProcessSample(frame.Get()));
}

TEST_F(SplitterTopologyNodeTest, SeparateSamplesShareBuffersButNoAttributes)
{
    Split(BranchSamples::Separate);
    EXPECT_EQ("abc", turns);
    ComPtr<IMFMediaBuffer> buffer;
    EXPECT_HR(S_OK, frame->GetBufferByIndex(0, &buffer));
    for (const auto &branch : {a, b, c})
    {
        EXPECT_FALSE(branch->foundMark);
        ExpectFrameProperties(branch->sample);
        ComPtr<IMFMediaBuffer> branchBuffer;
        EXPECT_HR(S_OK, branch->sample->GetBufferByIndex(0, &branchBuffer));
        EXPECT_EQ(buffer, branchBuffer);
    }
    EXPECT_NE(a->sample.Get(), b->sample.Get());
    EXPECT_EQ(frame.Get(), c->sample.Get());
    EXPECT_REFS(a->sample, 1);
}

TEST_F(SplitterTopologyNodeTest, IlluminationOfOneBranchStaysOutOfTheOther)
{
    Bytes record(sizeof(TARN_FRAME_METADATA));
    record[48] = 1;
    AttachMetadata(frame, Item(TARN_FRAME_METADATA_ITEM_ID, record));
    const auto lit = std::make_shared<CollectingNode>();
    const auto plain = std::make_shared<CollectingNode>();
    SplitterTopologyNode splitter(std::make_shared<TarnIrIlluminationTopologyNode>(lit), BranchSamples::Separate);
    splitter.AddNextNode(plain);

    splitter.Process(frame.Get());

    for (const auto &branch : {lit, plain})
    {
        ComPtr<IMFAttributes> store;
        EXPECT_HR(S_OK, branch->samples.at(0)->GetUnknown(MFSampleExtension_CaptureMetadata, IID_PPV_ARGS(&store)));
        EXPECT_EQ(branch == lit, SUCCEEDED(store->GetItem(MF_CAPTURE_METADATA_FRAME_ILLUMINATION, nullptr)));
    }
}

TEST_F(SplitterTopologyNodeTest, BranchWithoutASampleLosesTheFrameAlone)
{
    const FailingCall failing(1);
    Split(BranchSamples::Separate);
    EXPECT_EQ("bc", turns);
    EXPECT_FALSE(b->foundMark);
    EXPECT_FALSE(c->foundMark);
}

} // namespace
