// Nodes that write records on samples, and the one that blanks them.
#include <cstring>
#include <vector>

#include "platform/CameraAttributes.h"
#include "platform/CaptureMetadata.h"

#include "core/OutputStream.h"
#include "device/nodes/TarnCalibrationTopologyNode.h"
#include "device/nodes/TarnConfidenceMapTopologyNode.h"
#include "device/nodes/TarnDepthMetadataTopologyNode.h"
#include "device/nodes/TarnDepthPrivacyTopologyNode.h"
#include "device/nodes/UvcMetaDataWrapper.h"
#include "tarn/frame_metadata.h"
#include "tarn/sample_attributes.h"
#include "tarn/tarn_dmft.h"
#include "tests/core/TestParts.h"
#include "tests/device/DepthCamera.h"

using namespace mft_core;
using std::make_shared;

namespace
{

using Bytes = std::vector<UINT8>;

class EndNode : public ITopologyNode
{
  public:
    EndNode() : ITopologyNode(nullptr, "End node") {}
    HRESULT ProcessSample(IMFSample *) override
    {
        ++samples;
        return S_OK;
    }
    int samples = 0;
};

TARN_FRAME_METADATA Record(std::uint8_t flags)
{
    TARN_FRAME_METADATA record{};
    record.magic = TARN_FRAME_METADATA_MAGIC;
    record.version = TARN_FRAME_METADATA_VERSION;
    record.size = sizeof(record);
    record.flags = flags;
    record.frameCounter = 77;
    return record;
}

ComPtr<IMFMediaBuffer> Buffer(const Bytes &bytes, DWORD unusedBytes = 0)
{
    ComPtr<IMFMediaBuffer> buffer;
    const auto size = static_cast<DWORD>(bytes.size());
    EXPECT_HR(S_OK, MFCreateMemoryBuffer(size + unusedBytes, &buffer));
    BYTE *data = nullptr;
    EXPECT_HR(S_OK, buffer->Lock(&data, nullptr, nullptr));
    std::memset(data, 0xAA, size + unusedBytes);
    std::memcpy(data, bytes.data(), size);
    EXPECT_HR(S_OK, buffer->Unlock());
    EXPECT_HR(S_OK, buffer->SetCurrentLength(size));
    return buffer;
}

void Attach(IMFSample *sample, const Bytes &payload)
{
    const KSCAMERA_METADATA_ITEMHEADER header{TARN_FRAME_METADATA_ITEM_ID,
                                              static_cast<ULONG>(sizeof(header) + payload.size())};
    Bytes item(sizeof(header));
    std::memcpy(item.data(), &header, sizeof(header));
    item.insert(item.end(), payload.begin(), payload.end());
    ComPtr<IMFAttributes> store;
    EXPECT_HR(S_OK, MFCreateAttributes(&store, 1));
    EXPECT_HR(S_OK, store->SetUnknown(MF_CAPTURE_METADATA_FRAME_RAWSTREAM, Buffer(item).Get()));
    EXPECT_HR(S_OK, sample->SetUnknown(MFSampleExtension_CaptureMetadata, store.Get()));
}

Bytes BytesOf(const TARN_FRAME_METADATA &record)
{
    Bytes bytes(sizeof(record));
    std::memcpy(bytes.data(), &record, sizeof(record));
    return bytes;
}

ComPtr<IMFSample> Picture(const Bytes &pixels, DWORD unusedBytes = 0)
{
    ComPtr<IMFSample> sample = tarn_test::MakeSample(0);
    EXPECT_HR(S_OK, sample->AddBuffer(Buffer(pixels, unusedBytes).Get()));
    return sample;
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

Bytes BlobOf(const ComPtr<IMFSample> &sample, const GUID &key)
{
    UINT32 size = 0;
    if (FAILED(sample->GetBlobSize(key, &size)))
    {
        return {};
    }
    Bytes blob(size);
    EXPECT_HR(S_OK, sample->GetBlob(key, blob.data(), size, nullptr));
    return blob;
}

// The bytes of our item.
Bytes PayloadOf(const ComPtr<IMFSample> &sample)
{
    const UvcMetaDataWrapper metaData(sample.Get());
    return {metaData.Payload(), metaData.Payload() + metaData.PayloadSize()};
}

TEST(TarnCalibrationTopologyNodeTest, SamplesCarryTheirOwnIntrinsicsAndTheStreamsExtrinsics)
{
    tarn_test::TestEventGenerator generator;
    OutputStreamConfiguration configuration;
    configuration.mtList->push_back(tarn_test::MakeType(64, 48, 30));
    const auto end = make_shared<EndNode>();
    const ComPtr<IMFSample> plain = Picture({1});
    TarnCalibrationTopologyNode(end, OutputStream(0, &generator, configuration), {}).Process(plain.Get());
    EXPECT_TRUE(BlobOf(plain, MFSampleExtension_PinholeCameraIntrinsics).empty());
    EXPECT_TRUE(BlobOf(plain, MFSampleExtension_CameraExtrinsics).empty());

    const std::shared_ptr<UINT8[]> three(new UINT8[3]{1, 2, 3});
    const std::shared_ptr<UINT8[]> two(new UINT8[2]{4, 5});
    configuration.intrinsics = {two, 2}; // of the whole stream: not for samples
    configuration.extrinsics = {two, 2};
    const ComPtr<IMFSample> calibrated = Picture({1});
    TarnCalibrationTopologyNode(end, OutputStream(0, &generator, configuration), {three, 3}).Process(calibrated.Get());
    EXPECT_EQ((Bytes{1, 2, 3}), BlobOf(calibrated, MFSampleExtension_PinholeCameraIntrinsics));
    EXPECT_EQ((Bytes{4, 5}), BlobOf(calibrated, MFSampleExtension_CameraExtrinsics));
    EXPECT_EQ(2, end->samples);
}

TEST(TarnDepthMetadataTopologyNodeTest, ARecordThatHoldsBecomesABlobAndOthersDoNot)
{
    const auto end = make_shared<EndNode>();
    TarnDepthMetadataTopologyNode node(end);
    const auto blobFor = [&](const Bytes &payload) {
        const ComPtr<IMFSample> sample = Picture({1});
        Attach(sample.Get(), payload);
        node.Process(sample.Get());
        return BlobOf(sample, TARN_SAMPLE_FRAME_METADATA);
    };
    const Bytes good = BytesOf(Record(TARN_FRAME_FLAG_HDR));
    EXPECT_EQ(good, blobFor(good));

    Bytes longer = good; // a later version that appends 8 bytes, and 8 bytes that are none of it
    longer.resize(80, 0x55);
    longer[4] = TARN_FRAME_METADATA_VERSION + 1;
    longer[6] = 72;
    EXPECT_EQ(Bytes(longer.begin(), longer.begin() + 72), blobFor(longer));

    Bytes cut(good.begin(), good.begin() + 40);
    EXPECT_TRUE(blobFor(cut).empty());
    for (const auto &[at, value] : {std::pair{0, 0}, std::pair{4, 0}, std::pair{6, 63}, std::pair{6, 72}})
    {
        Bytes bad = good; // magic, version, size below and above what is there
        bad[static_cast<std::size_t>(at)] = static_cast<UINT8>(value);
        EXPECT_TRUE(blobFor(bad).empty()) << at << " " << value;
    }
    const ComPtr<IMFSample> bare = Picture({1});
    node.Process(bare.Get());
    EXPECT_TRUE(BlobOf(bare, TARN_SAMPLE_FRAME_METADATA).empty());
    EXPECT_EQ(8, end->samples) << "every frame goes on";
}

class TarnDepthPrivacyTopologyNodeTest : public testing::Test
{
  protected:
    ComPtr<IMFSample> Process(std::optional<std::uint8_t> flags, DWORD unusedBytes = 0)
    {
        const ComPtr<IMFSample> sample = Picture({1, 2, 3, 4}, unusedBytes);
        EXPECT_HR(S_OK, sample->AddBuffer(Buffer({5, 6}).Get()));
        EXPECT_HR(S_OK, sample->SetBlob(ORRIN_SAMPLE_TARN_CONFIDENCE_MAP, Bytes{9, 9}.data(), 2));
        if (flags)
        {
            Attach(sample.Get(), BytesOf(Record(*flags)));
        }
        TarnDepthPrivacyTopologyNode(end, privacy).Process(sample.Get());
        return sample;
    }
    bool BlanksFrameWith(const Bytes &payload)
    {
        const ComPtr<IMFSample> sample = Picture({1, 2});
        Attach(sample.Get(), payload);
        TarnDepthPrivacyTopologyNode(end, privacy).Process(sample.Get());
        EXPECT_EQ(payload, PayloadOf(sample)) << "the driver's bytes stay";
        return Contents(sample) == Bytes(2);
    }
    static bool IsBlank(const ComPtr<IMFSample> &sample)
    {
        const Bytes first = Contents(sample);
        return first == Bytes(first.size()) && Contents(sample, 1) == Bytes(2) &&
               BlobOf(sample, ORRIN_SAMPLE_TARN_CONFIDENCE_MAP).empty();
    }

    std::shared_ptr<EndNode> end = make_shared<EndNode>();
    std::shared_ptr<FramePrivacy> privacy = make_shared<FramePrivacy>("Test"); // a new node for each frame shares it
};

TEST_F(TarnDepthPrivacyTopologyNodeTest, AFrameWithoutPrivacyIsUntouched)
{
    const ComPtr<IMFSample> sample = Process(std::uint8_t{TARN_FRAME_FLAG_HDR});

    EXPECT_EQ((Bytes{1, 2, 3, 4}), Contents(sample));
    EXPECT_EQ((Bytes{5, 6}), Contents(sample, 1));
    EXPECT_EQ((Bytes{9, 9}), BlobOf(sample, ORRIN_SAMPLE_TARN_CONFIDENCE_MAP));
}

TEST_F(TarnDepthPrivacyTopologyNodeTest, NothingOfAPrivateFrameIsLeft)
{
    EXPECT_TRUE(IsBlank(Process(std::uint8_t{TARN_FRAME_FLAG_PRIVACY}, 32)));
    EXPECT_EQ(1, end->samples);
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
        const ComPtr<IMFSample> sample = Picture({1, 2});
        Attach(sample.Get(), BytesOf(Record(isPrivate ? TARN_FRAME_FLAG_PRIVACY : 0)));
        node.Process(sample.Get());
        EXPECT_REFS(picture, isPrivate ? 1 : 2);
    }
}

TEST_F(TarnDepthPrivacyTopologyNodeTest, AFrameThatDoesNotTellIsTreatedByWhatIsKnown)
{
    EXPECT_FALSE(IsBlank(Process(std::nullopt)));
    EXPECT_TRUE(IsBlank(Process(std::uint8_t{TARN_FRAME_FLAG_PRIVACY})));
    EXPECT_TRUE(IsBlank(Process(std::nullopt)));
    EXPECT_FALSE(IsBlank(Process(std::uint8_t{0})));
    EXPECT_FALSE(IsBlank(Process(std::nullopt)));
}

TEST_F(TarnDepthPrivacyTopologyNodeTest, OnlyARecordThatHoldsDecides)
{
    const Bytes isOn = BytesOf(Record(TARN_FRAME_FLAG_PRIVACY));
    const Bytes isOff = BytesOf(Record(0));
    EXPECT_TRUE(BlanksFrameWith(isOn));
    EXPECT_FALSE(BlanksFrameWith(isOff));
    for (const bool known : {false, true})
    {
        privacy->Tell(known);
        Bytes cut = known ? isOff : isOn;
        cut.resize(16); // shorter than its size says
        EXPECT_EQ(known, BlanksFrameWith(cut));
        for (const auto &[at, value] : {std::pair{0, 0}, std::pair{4, 0}, std::pair{6, 7}, std::pair{6, 65}})
        {
            Bytes bad = known ? isOff : isOn; // magic, version, size below what is read and above what is there
            bad[static_cast<std::size_t>(at)] = static_cast<UINT8>(value);
            EXPECT_EQ(known, BlanksFrameWith(bad)) << at << " " << value;
        }
    }
}

TEST_F(TarnDepthPrivacyTopologyNodeTest, AConfidenceMapThatIsMadeBehindItShowsNothing)
{
    const auto mapState = make_shared<ConfidenceMapState>();
    mapState->Set(true);
    TarnDepthPrivacyTopologyNode before(make_shared<TarnConfidenceMapTopologyNode>(end, 2, 1, mapState), privacy);
    for (const std::uint8_t flags : {std::uint8_t{0}, std::uint8_t{TARN_FRAME_FLAG_PRIVACY}})
    {
        const ComPtr<IMFSample> sample = Picture({200, 200, 0, 0, 7, 7, 7, 7}); // confidence, then depth
        Attach(sample.Get(), BytesOf(Record(flags)));
        before.Process(sample.Get());
        EXPECT_EQ(flags != 0, BlobOf(sample, ORRIN_SAMPLE_TARN_CONFIDENCE_MAP) == Bytes(4));
    }
}

TEST(FramePrivacyTest, TheCameraIsAskedWhenItAnnouncesThePrivacyControl)
{
    using State = FramePrivacy::State;
    for (const bool announced : {false, true})
    {
        auto configuration = tarn_sim::CameraConfiguration::TarnDepth();
        configuration.privacyControl = announced;
        const tarn_test::DepthCamera device(configuration);
        FramePrivacy privacy("Test");
        device.camera->Controls().privacy = true;
        device.FailKsCall(1, true);
        privacy.AskCamera(device.camera.Get());
        EXPECT_EQ(State::Unknown, privacy.Now());
        device.camera->Faults().SetPlan({});
        privacy.AskCamera(device.camera.Get());
        EXPECT_EQ(announced ? State::On : State::Unknown, privacy.Now());

        device.camera->Controls().privacy = false;
        privacy.Tell(true);
        device.FailKsCall(2); // announced, but not answered
        privacy.AskCamera(device.camera.Get());
        EXPECT_EQ(State::On, privacy.Now());
        device.camera->Faults().SetPlan({});
        privacy.AskCamera(device.camera.Get());
        EXPECT_EQ(announced ? State::Off : State::On, privacy.Now());
    }
}

// A camera whose frames tell while it is being asked.
class BusyCamera final : public user_space_frameworks::ComObject<IKsControl>
{
  public:
    BusyCamera(ComPtr<IKsControl> busyControl, FramePrivacy &framePrivacy)
        : control(std::move(busyControl)), privacy(framePrivacy)
    {
    }
    HRESULT STDMETHODCALLTYPE KsProperty(PKSPROPERTY property, ULONG length, void *data, ULONG dataLength,
                                         ULONG *returned) noexcept override
    {
        const HRESULT result = control->KsProperty(property, length, data, dataLength, returned);
        if (property->Flags == KSPROPERTY_TYPE_GET)
        {
            privacy.Tell(true);
        }
        return result;
    }
    HRESULT STDMETHODCALLTYPE KsMethod(PKSMETHOD, ULONG, void *, ULONG, ULONG *) noexcept override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE KsEvent(PKSEVENT, ULONG, void *, ULONG, ULONG *) noexcept override
    {
        return E_NOTIMPL;
    }

  private:
    const ComPtr<IKsControl> control;
    FramePrivacy &privacy;
};

TEST(FramePrivacyTest, AnAnswerDoesNotOpenWhatAFrameHasClosedMeanwhile)
{
    const tarn_test::DepthCamera device;
    FramePrivacy privacy("Test");
    const auto busy = user_space_frameworks::MakeCom<BusyCamera>(ComPtr<IKsControl>(device.camera.Get()), privacy);
    privacy.AskCamera(busy.Get());
    EXPECT_EQ(FramePrivacy::State::On, privacy.Now());
}

} // namespace
