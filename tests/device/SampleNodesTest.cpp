// Nodes that write records on samples, and the one that blanks them.

#include "device/nodes/TarnConfidenceMapTopologyNode.h"
#include "device/nodes/TarnDepthMetadataTopologyNode.h"
#include "device/nodes/TarnDepthPrivacyTopologyNode.h"
#include "device/nodes/UvcMetaDataWrapper.h"
#include "tarn/sample_attributes.h"
#include "tarn/tarn_dmft.h"
#include "tests/core/TestParts.h"
#include "tests/device/DepthCamera.h"
#include "tests/ks/FakeFilter.h"
#include "tests/support/Metadata.h"

using namespace mft_core;
using namespace tarn_test;
using std::make_shared;

namespace
{

// The driver's record with these flags.
Bytes Record(std::uint8_t flags)
{
    return RawBytes(FrameRecord(flags));
}

void Attach(IMFSample *sample, const Bytes &record)
{
    AttachItems(sample, MakeBuffer(Item(TARN_FRAME_METADATA_ITEM_ID, record)));
}

// All that the buffer can hold, beyond its current length too.
Bytes Contents(const ComPtr<IMFSample> &sample, DWORD index = 0)
{
    ComPtr<IMFMediaBuffer> buffer;
    EXPECT_HR(S_OK, sample->GetBufferByIndex(index, &buffer));
    BYTE *data = nullptr;
    DWORD capacity = 0;
    EXPECT_HR(S_OK, buffer->Lock(&data, &capacity, nullptr));
    Bytes bytes(data, data + capacity);
    EXPECT_HR(S_OK, buffer->Unlock());
    return bytes;
}

TEST(TarnDepthMetadataTopologyNodeTest, ARecordThatHoldsBecomesABlobAndOthersDoNot)
{
    const auto end = make_shared<RecordingNode>();
    TarnDepthMetadataTopologyNode node(end);
    const auto blobFor = [&](const std::optional<Bytes> &payload) {
        const auto sample = MakeSample(0);
        if (payload)
        {
            Attach(sample.Get(), *payload);
        }
        node.Process(sample.Get());
        return BlobOf(sample, TARN_SAMPLE_FRAME_METADATA);
    };
    const Bytes good = Record(TARN_FRAME_FLAG_HDR);
    EXPECT_EQ(good, blobFor(good));

    Bytes longer = good; // a later version that appends 8 bytes, and 8 bytes that are none of it
    longer.resize(80, 0x55);
    longer[4] = TARN_FRAME_METADATA_VERSION + 1;
    longer[6] = 72;
    EXPECT_EQ(Bytes(longer.begin(), longer.begin() + 72), blobFor(longer));

    EXPECT_TRUE(blobFor(Bytes(good.begin(), good.begin() + 40)).empty());
    for (const auto &[at, value] : {std::pair{0, 0}, std::pair{4, 0}, std::pair{6, 63}, std::pair{6, 72}})
    {
        Bytes bad = good; // magic, version, size below and above what is there
        bad[static_cast<std::size_t>(at)] = static_cast<UINT8>(value);
        EXPECT_TRUE(blobFor(bad).empty()) << at << " " << value;
    }
    EXPECT_TRUE(blobFor(std::nullopt).empty());
    EXPECT_EQ(8u, end->Times().size()) << "every frame goes on";
}

class TarnDepthPrivacyTopologyNodeTest : public testing::Test
{
  protected:
    // Two buffers, the first with unused bytes, and a confidence map.
    ComPtr<IMFSample> Process(const std::optional<Bytes> &record)
    {
        const auto sample = MakeSample(0, {1, 2, 3, 4}, 2);
        EXPECT_HR(S_OK, sample->AddBuffer(MakeBuffer({5, 6}).Get()));
        EXPECT_HR(S_OK, sample->SetBlob(ORRIN_SAMPLE_TARN_CONFIDENCE_MAP, Bytes{9, 9}.data(), 2));
        if (record)
        {
            Attach(sample.Get(), *record);
        }
        TarnDepthPrivacyTopologyNode(end, privacy).Process(sample.Get());
        if (record)
        {
            const UvcMetaDataWrapper metaData(sample.Get());
            EXPECT_EQ(*record, Bytes(metaData.Payload(), metaData.Payload() + metaData.PayloadSize()));
        }
        return sample;
    }
    bool Blanks(const std::optional<Bytes> &record)
    {
        const auto sample = Process(record);
        const bool isBlank = Contents(sample) == Bytes(6) && Contents(sample, 1) == Bytes(2) &&
                             BlobOf(sample, ORRIN_SAMPLE_TARN_CONFIDENCE_MAP).empty();
        const bool isWhole = Contents(sample) == Bytes{1, 2, 3, 4, 0xAA, 0xAA} && Contents(sample, 1) == Bytes{5, 6} &&
                             BlobOf(sample, ORRIN_SAMPLE_TARN_CONFIDENCE_MAP) == Bytes{9, 9};
        EXPECT_NE(isBlank, isWhole);
        return isBlank;
    }

    const Bytes isOn = Record(TARN_FRAME_FLAG_PRIVACY);
    const Bytes isOff = Record(TARN_FRAME_FLAG_HDR);
    std::shared_ptr<RecordingNode> end = make_shared<RecordingNode>();
    std::shared_ptr<FramePrivacy> privacy = make_shared<FramePrivacy>("Test"); // a new node for each frame shares it
};

TEST_F(TarnDepthPrivacyTopologyNodeTest, NothingOfAPrivateFrameIsLeftAndWhatOneTellsHoldsForTheNext)
{
    EXPECT_FALSE(Blanks(std::nullopt));
    EXPECT_TRUE(Blanks(isOn));
    EXPECT_TRUE(Blanks(std::nullopt));
    EXPECT_FALSE(Blanks(isOff));
    EXPECT_FALSE(Blanks(std::nullopt));
    for (const bool known : {false, true})
    {
        privacy->Tell(known);
        Bytes bad = known ? isOff : isOn; // tells nothing: its size is below what is read, or more than is there
        bad[6] = 7;
        EXPECT_EQ(known, Blanks(bad));
        bad[6] = 65;
        EXPECT_EQ(known, Blanks(bad));
    }
    EXPECT_EQ(9u, end->Times().size());
}

TEST_F(TarnDepthPrivacyTopologyNodeTest, NoPictureStaysInAPoolOnceAPrivateFrameHasCome)
{
    const auto pool = make_shared<mft_utils::BufferPool>();
    ComPtr<IMFMediaBuffer> picture; // that a node in front has written
    ASSERT_HR(S_OK, pool->Take(100, &picture));
    TarnDepthPrivacyTopologyNode node(end, privacy);
    node.UseBuffers(pool);
    for (const bool isPrivate : {false, true})
    {
        const auto sample = MakeSample(0, {1, 2});
        Attach(sample.Get(), isPrivate ? isOn : isOff);
        node.Process(sample.Get());
        EXPECT_REFS(picture, isPrivate ? 1 : 2);
    }
}

TEST_F(TarnDepthPrivacyTopologyNodeTest, AConfidenceMapThatIsMadeBehindItShowsNothing)
{
    const auto mapState = make_shared<ConfidenceMapState>();
    mapState->Set(true);
    TarnDepthPrivacyTopologyNode before(make_shared<TarnConfidenceMapTopologyNode>(end, 2, 1, mapState), privacy);
    for (const Bytes &record : {isOff, isOn})
    {
        const auto sample = MakeSample(0, {200, 200, 0, 0, 7, 7, 7, 7}); // confidence, then depth
        Attach(sample.Get(), record);
        before.Process(sample.Get());
        EXPECT_EQ(record == isOn, BlobOf(sample, ORRIN_SAMPLE_TARN_CONFIDENCE_MAP) == Bytes(4));
    }
}

TEST(FramePrivacyTest, TheCameraIsAskedWhenItAnnouncesThePrivacyControl)
{
    using State = FramePrivacy::State;
    for (const bool announced : {false, true})
    {
        auto configuration = tarn_sim::CameraConfiguration::TarnDepth();
        configuration.privacyControl = announced;
        const DepthCamera device(configuration);
        FramePrivacy privacy("Test");
        const auto ask = [&] {
            privacy.AskCamera(device.camera.Get());
            return privacy.Now();
        };
        device.camera->Controls().privacy = true;
        device.FailKsCall(1, true);
        EXPECT_EQ(State::Unknown, ask());
        device.camera->Faults().SetPlan({});
        EXPECT_EQ(announced ? State::On : State::Unknown, ask());
        device.camera->Controls().privacy = false;
        privacy.Tell(true);
        device.FailKsCall(2); // announced, but not answered
        EXPECT_EQ(State::On, ask());
        device.camera->Faults().SetPlan({});
        EXPECT_EQ(announced ? State::Off : State::On, ask());
    }
}

TEST(FramePrivacyTest, AnAnswerDoesNotOpenWhatAFrameHasClosedMeanwhile)
{
    const DepthCamera device;
    FramePrivacy privacy("Test");
    const auto busy = user_space_frameworks::MakeCom<FakeFilter>(); // its frames tell while it is being asked
    busy->answer = [&](FilterCall call) {
        const HRESULT result = device.camera->KsProperty(&call.request.Property, call.requestLength, call.data,
                                                         call.dataLength, call.bytesReturned);
        if (call.request.Property.Flags == KSPROPERTY_TYPE_GET)
        {
            privacy.Tell(true);
        }
        return result;
    };
    privacy.AskCamera(busy.Get());
    EXPECT_EQ(FramePrivacy::State::On, privacy.Now());
}

} // namespace
