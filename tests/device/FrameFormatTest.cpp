// Which frames get into a chain, and what is said of the others.

#include "core/InputStream.h"
#include "device/nodes/TarnFrameFormatTopologyNode.h"
#include "tarn/tarn_formats.h"
#include "tests/core/TestParts.h"
#include "tests/device/DepthCamera.h"
#include "tests/support/Metadata.h"

using namespace tarn_test;
using namespace mft_core;
using std::make_shared;

namespace
{

constexpr DWORD kSmall = 320 * 240 * 2;
constexpr DWORD kLarge = 640 * 480 * 2; // bytes of one plane

class TarnFrameFormatTopologyNodeTest : public testing::Test
{
  protected:
    // A node of a topology that is built while the pin runs, or ran last, with frames of that size.
    std::shared_ptr<TarnFrameFormatTopologyNode> NodeFor(std::vector<GUID> subtypes, UINT32 width, UINT32 height,
                                                         const ComPtr<IMFMediaType> &former)
    {
        InputStream pin(0, &generator, device.camera.Get(), {}, "Test");
        pin.SetCurrentMediaType(former.Get());
        return make_shared<TarnFrameFormatTopologyNode>(end, pin, std::move(subtypes), width, height, mapState);
    }
    bool Passes(const std::shared_ptr<TarnFrameFormatTopologyNode> &node, DWORD length,
                const std::optional<TARN_FRAME_METADATA> &record = std::nullopt)
    {
        const auto sample = MakeSample(0, Bytes(length));
        if (record)
        {
            AttachItems(sample.Get(), MakeBuffer(Item(TARN_FRAME_METADATA_ITEM_ID, RawBytes(*record))));
        }
        const std::size_t before = end->Times().size();
        node->Process(sample.Get());
        return end->Times().size() > before;
    }
    bool PassesAll(const std::shared_ptr<TarnFrameFormatTopologyNode> &node, std::initializer_list<DWORD> lengths)
    {
        return std::all_of(lengths.begin(), lengths.end(), [&](DWORD length) { return Passes(node, length); });
    }
    static TARN_FRAME_METADATA Record(const GUID &subtype, std::uint16_t width, std::uint16_t height)
    {
        TARN_FRAME_METADATA record = FrameRecord();
        record.formatFourCc = subtype.Data1;
        record.width = width;
        record.height = height;
        return record;
    }

    const DepthCamera device;
    TestEventGenerator generator;
    const std::shared_ptr<RecordingNode> end = make_shared<RecordingNode>();
    const std::shared_ptr<ConfidenceMapState> mapState = make_shared<ConfidenceMapState>();
    const ComPtr<IMFMediaType> small = MakeType(320, 240, 30, CUSTOM_GUID_KELP_Z);
    const ComPtr<IMFMediaType> large = MakeType(640, 480, 30, CUSTOM_GUID_KELP_Z);
};

TEST_F(TarnFrameFormatTopologyNodeTest, AFrameWithoutARecordIsRefusedForTheLengthOfAFormerFormatOnly)
{
    const auto both = NodeFor({CUSTOM_GUID_KELP_ZI}, 320, 240, large);
    EXPECT_TRUE(PassesAll(both, {2 * kSmall, 2 * kSmall + 1, 2 * kLarge + 1}));
    for (const DWORD refused : {2 * kSmall - 1, kLarge, 2 * kLarge})
    {
        EXPECT_FALSE(Passes(both, refused)) << refused;
    }
    const auto first = NodeFor({CUSTOM_GUID_KELP_ZI}, 320, 240, nullptr); // nothing ran
    EXPECT_TRUE(Passes(first, kLarge));

    const auto depth = NodeFor({CUSTOM_GUID_KELP_Z, CUSTOM_GUID_KELP_ZC}, 640, 480, small);
    EXPECT_TRUE(PassesAll(depth, {kLarge, kLarge + 100, 2 * kLarge, 2 * kLarge + 100}));
    EXPECT_FALSE(Passes(depth, kLarge - 1));
    mapState->Set(true);
    EXPECT_TRUE(PassesAll(depth, {kLarge, 2 * kLarge, 2 * kLarge + 100}));
    EXPECT_FALSE(Passes(depth, 2 * kLarge - 1)) << "its confidence would be taken for depth";
}

TEST_F(TarnFrameFormatTopologyNodeTest, ARecordTellsTheFormatAndRefusalsAreSaidAsAnError)
{
    const auto node = NodeFor({CUSTOM_GUID_KELP_ZI}, 320, 240, large);
    const TraceLines errors(mft_utils::TraceLevel::Error);
    const TARN_FRAME_METADATA ours = Record(CUSTOM_GUID_KELP_ZI, 320, 240);
    EXPECT_TRUE(Passes(node, 2 * kSmall, ours));
    EXPECT_TRUE(Passes(node, kLarge, ours)); // padded to the length of a former format
    EXPECT_TRUE(errors.lines.empty());

    EXPECT_FALSE(Passes(node, 2 * kSmall - 1, ours));
    EXPECT_TRUE(errors.Contains("0 of another format, 1 too short"));
    EXPECT_FALSE(Passes(node, 2 * kSmall, Record(CUSTOM_GUID_KELP_ZC, 320, 240)));
    EXPECT_FALSE(Passes(node, 2 * kSmall, Record(CUSTOM_GUID_KELP_ZI, 240, 320)));
}

TEST(FrameRefusalsTest, TheyAreSaidAtOnceAndThenOnceASecond)
{
    using Reason = FrameRefusals::Reason;
    constexpr LONGLONG kSecond = 10'000'000;
    FrameRefusals refusals;
    EXPECT_TRUE(refusals.Add(Reason::TooShort, 5 * kSecond));
    EXPECT_FALSE(refusals.Add(Reason::TooShort, 5 * kSecond));
    EXPECT_FALSE(refusals.Add(Reason::OtherFormat, 6 * kSecond - 1));
    const auto counts = refusals.Add(Reason::OtherFormat, 6 * kSecond);
    ASSERT_TRUE(counts);
    EXPECT_EQ(2u, counts->otherFormat);
    EXPECT_EQ(2u, counts->tooShort);
    EXPECT_FALSE(refusals.Add(Reason::TooShort, 7 * kSecond - 1));
}

} // namespace
