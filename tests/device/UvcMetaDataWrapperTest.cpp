#include "device/nodes/UvcMetaDataWrapper.h"

#include "tests/nodes/FrameMemory.h"

using mft_core::UvcMetaDataWrapper;
using namespace tarn_test;

namespace
{

constexpr ULONG kCustom = TARN_FRAME_METADATA_ITEM_ID;
constexpr ULONG kOther = 2;

Bytes operator+(Bytes first, const Bytes &second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

TEST(UvcMetaDataWrapperTest, FindsTheRecordBehindOtherItemsAndHoldsItWhileAlive)
{
    const Bytes record{1, 2, 3, 4, 5, 6, 7, 8};
    const auto frame = MakeFrame(Bytes(4));
    AttachMetadata(frame, Item(kOther, Bytes(16)) + Item(kOther, {}) + Item(kCustom, record) + Item(kOther, {}));
    {
        const UvcMetaDataWrapper metaData(frame.Get());
        frame->DeleteAllItems();

        ASSERT_TRUE(metaData.HasMetaData());
        EXPECT_EQ(record, Bytes(metaData.Payload(), metaData.Payload() + metaData.PayloadSize()));
        EXPECT_EQ(BYTE{8}, metaData.ByteAt(7));
        EXPECT_FALSE(metaData.ByteAt(8).has_value());
    }
    EXPECT_REFS(frame, 1);
}

TEST(UvcMetaDataWrapperTest, MalformedItemsCountAsNoMetadata)
{
    const Bytes payload(64, 1);
    const Bytes good = Item(kCustom, payload);
    Bytes truncated = good;
    truncated.resize(40);
    const Bytes cases[] = {
        {},
        Bytes(7),
        Item(kOther, payload),
        truncated,
        Item(kOther, payload, 0) + good,
        Item(kOther, payload, 7) + good,
        Item(kOther, payload, 71) + good,
        Item(kOther, payload, 0xFFFFFFFF) + good,
        Item(kOther, payload, 0xFFFFFFF8) + good,
        Item(kCustom, payload, 80),
        Item(kCustom, payload, 0xFFFFFFF8),
        Item(kOther, payload) + Bytes(4, 0x80),
    };
    for (const Bytes &items : cases)
    {
        const auto frame = MakeFrame(Bytes(4));
        AttachMetadata(frame, items);
        const UvcMetaDataWrapper metaData(frame.Get());
        EXPECT_FALSE(metaData.HasMetaData()) << "case " << &items - cases;
        EXPECT_FALSE(metaData.ByteAt(0).has_value());
    }
}

TEST(UvcMetaDataWrapperTest, MissingPartsCountAsNoMetadata)
{
    EXPECT_FALSE(UvcMetaDataWrapper(nullptr).HasMetaData());
    const auto frame = MakeFrame(Bytes(4));
    EXPECT_FALSE(UvcMetaDataWrapper(frame.Get()).HasMetaData());

    const auto store = AttachMetadata(frame, Item(kCustom, Bytes(64)));
    {
        const FailingCall lockFails(1);
        EXPECT_FALSE(UvcMetaDataWrapper(frame.Get()).HasMetaData());
    }
    EXPECT_TRUE(UvcMetaDataWrapper(frame.Get()).HasMetaData());

    // Objects of other kinds under the two keys.
    EXPECT_HR(S_OK, store->SetUnknown(MF_CAPTURE_METADATA_FRAME_RAWSTREAM, frame.Get()));
    EXPECT_FALSE(UvcMetaDataWrapper(frame.Get()).HasMetaData());
    EXPECT_HR(S_OK, store->DeleteItem(MF_CAPTURE_METADATA_FRAME_RAWSTREAM));
    EXPECT_FALSE(UvcMetaDataWrapper(frame.Get()).HasMetaData());
    EXPECT_HR(S_OK, frame->SetUINT32(MFSampleExtension_CaptureMetadata, 1));
    EXPECT_FALSE(UvcMetaDataWrapper(frame.Get()).HasMetaData());
}

} // namespace
