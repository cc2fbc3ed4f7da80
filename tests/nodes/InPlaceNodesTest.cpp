// Nodes that work on the sample they are given.
#include "tests/nodes/FrameMemory.h"

#include <stdexcept>

#include <tarn/tarn_dmft.h>

#include "device/nodes/TarnConfidenceMapTopologyNode.h"
#include "device/nodes/TarnIrIlluminationTopologyNode.h"
#include "nodes/DepthRangeTopologyNode.h"
#include "kernels/Confidence.h"
#include "nodes/ImageThresholdTopologyNode.h"
#include "base/ComException.h"

using namespace mft_core;
using namespace tarn_test;

namespace
{

class InPlaceNodesTest : public testing::Test
{
  protected:
    // Expects that the very sample was handed on and that nothing else holds it.
    void ExpectHandedOn(const ComPtr<IMFSample> &sample)
    {
        ASSERT_EQ(1u, end->samples.size());
        EXPECT_EQ(sample.Get(), end->samples[0].Get());
        end->samples.clear();
        EXPECT_REFS(sample, 1);
        ExpectFrameProperties(sample);
    }

    std::shared_ptr<CollectingNode> end = std::make_shared<CollectingNode>();
};

TEST_F(InPlaceNodesTest, ThresholdClampsFromAboveAndTakesShortFramesAsTheyAre)
{
    ImageThresholdTopologyNode node(end, 4, 1, 1000);
    const auto frame = MakeFrame(Pixels{999, 1000, 65535, 0, 2000});
    node.Process(frame.Get());
    ExpectHandedOn(frame);
    EXPECT_EQ((Pixels{999, 1000, 1000, 0, 2000}), PixelsOf(frame)) << "what lies behind the frame is not touched";

    for (const std::size_t length : {0u, 1u, 7u})
    {
        const Bytes bytes(length, 0xFF);
        const auto shortFrame = MakeFrame(bytes);
        node.Process(shortFrame.Get());
        ExpectHandedOn(shortFrame);
        EXPECT_EQ(bytes, BytesOf(shortFrame));
    }
    const FailingCall failing(1); // of the lock
    node.Process(frame.Get());
    EXPECT_TRUE(failing.HasFailed());
    ExpectHandedOn(frame);
}

class ConfidenceTest : public InPlaceNodesTest
{
  protected:
    static constexpr std::size_t kPixels = 4 * 3;

    // Confidence bytes, the rest of their plane, then depth.
    ComPtr<IMFSample> Frame() const { return MakeFrame(content); }
    static Bytes Map(const ComPtr<IMFSample> &sample) { return BlobOf(sample, ORRIN_SAMPLE_TARN_CONFIDENCE_MAP); }
    void ExpectDepthInFront(const ComPtr<IMFSample> &sample) const
    {
        const Bytes bytes = BytesOf(sample);
        ASSERT_EQ(content.size(), bytes.size());
        EXPECT_TRUE(std::equal(content.begin() + 2 * kPixels, content.end(), bytes.begin()));
        EXPECT_TRUE(std::equal(content.begin() + 2 * kPixels, content.end(), bytes.begin() + 2 * kPixels));
    }

    const Bytes content = AsBytes(RandomPixels(2 * kPixels));
    const std::shared_ptr<ConfidenceMapState> mapState = std::make_shared<ConfidenceMapState>();
    TarnConfidenceMapTopologyNode node{end, 4, 3, mapState};
};

TEST_F(ConfidenceTest, CameraSuppressesTheMapByItsFlagAlone)
{
    mapState->Set(true);
    Bytes suppressing(sizeof(TARN_FRAME_METADATA), 0xFF);
    suppressing[5] = 0x01;
    Bytes silent(sizeof(TARN_FRAME_METADATA), 0xFF);
    silent[5] = 0xFE;
    for (const Bytes &record : {suppressing, silent, Bytes(5, 0xFF)}) // the last one ends before the flag
    {
        const auto frame = Frame();
        AttachMetadata(frame, Item(TARN_FRAME_METADATA_ITEM_ID, record));
        node.Process(frame.Get());
        EXPECT_EQ(record == suppressing, Map(frame).empty());
        ExpectDepthInFront(frame);
    }
}

TEST_F(ConfidenceTest, FrameOneByteShortStaysAndALockFailureDrops)
{
    mapState->Set(true);
    for (const std::size_t length : {std::size_t{0}, kPixels, 2 * kPixels, 4 * kPixels - 1})
    {
        const Bytes bytes(content.begin(), content.begin() + static_cast<std::ptrdiff_t>(length));
        const auto frame = MakeFrame(bytes);
        node.Process(frame.Get());
        ExpectHandedOn(frame);
        EXPECT_EQ(bytes, BytesOf(frame));
        EXPECT_EQ(Bytes{}, Map(frame));
    }
    const auto frame = Frame();
    const FailingCall failing(1);
    node.Process(frame.Get());
    EXPECT_TRUE(end->samples.empty());
    EXPECT_REFS(frame, 1);
}

TEST_F(InPlaceNodesTest, IlluminationIsByte48OfTheRecordWhereThereIsOne)
{
    TarnIrIlluminationTopologyNode node(end);
    Bytes record(sizeof(TARN_FRAME_METADATA), 0xFF);
    record[48] = 0x81;
    for (const std::size_t length : {sizeof(TARN_FRAME_METADATA), std::size_t{48}})
    {
        record.resize(length);
        const auto frame = MakeFrame(Bytes(4));
        const auto store = AttachMetadata(frame, Item(TARN_FRAME_METADATA_ITEM_ID, record));
        node.Process(frame.Get());
        ExpectHandedOn(frame);
        UINT64 illumination = 0;
        EXPECT_HR(length > 48 ? S_OK : MF_E_ATTRIBUTENOTFOUND,
                  store->GetUINT64(MF_CAPTURE_METADATA_FRAME_ILLUMINATION, &illumination));
        EXPECT_EQ(length > 48 ? 0x81u : 0u, illumination);
    }
    const auto bare = MakeFrame(Bytes(4));
    node.Process(bare.Get());
    ExpectHandedOn(bare);
}

TEST_F(InPlaceNodesTest, DepthRangeIsInPixelUnitsAndNeedsOne)
{
    ComPtr<IMFAttributes> attributes;
    ASSERT_HR(S_OK, MFCreateAttributes(&attributes, 1));
    EXPECT_THROW(DepthRangeTopologyNode(end, attributes.Get(), 20, 150), mft_utils::ComException);
    EXPECT_THROW(DepthRangeTopologyNode(end, nullptr, 20, 150), mft_utils::ComException);
    ASSERT_HR(S_OK, attributes->SetUINT64(MF_MT_DEPTH_VALUE_UNIT, 0));
    EXPECT_THROW(DepthRangeTopologyNode(end, attributes.Get(), 20, 150), std::invalid_argument);

    const UINT32 cases[][5] = {{1000, 2, 3, 20000, 30000}, {3, 1, 2, 3333333, 6666666}, {125000, 20, 150, 1600, 12000}};
    for (const auto &[unit, minDepth, maxDepth, expectedMinimum, expectedMaximum] : cases)
    {
        ASSERT_HR(S_OK, attributes->SetUINT64(MF_MT_DEPTH_VALUE_UNIT, unit));
        DepthRangeTopologyNode node(end, attributes.Get(), minDepth, maxDepth);
        const auto frame = MakeFrame(Bytes(4));
        node.Process(frame.Get());
        ExpectHandedOn(frame);

        UINT32 minimum = 0;
        UINT32 maximum = 0;
        EXPECT_HR(S_OK, frame->GetUINT32(MFSampleExtension_Depth_MinReliableDepth, &minimum));
        EXPECT_HR(S_OK, frame->GetUINT32(MFSampleExtension_Depth_MaxReliableDepth, &maximum));
        EXPECT_EQ(expectedMinimum, minimum);
        EXPECT_EQ(expectedMaximum, maximum);
    }
}

} // namespace
