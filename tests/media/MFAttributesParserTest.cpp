#include "media/MFAttributesParser.h"

#include "platform/CameraAttributes.h"

#include "tests/support/Samples.h"

namespace
{

TEST(MFAttributesParserTest, CopiesAllButExcludedAndExistingKeys)
{
    using mft_utils::MFAttributesParser;
    const ComPtr<IMFAttributes> source = tarn_test::MakeType(640, 480, 30); // five attributes, and an object
    const ComPtr<IMFAttributes> destination = tarn_test::MakeType(1, 1, 1);
    EXPECT_EQ(S_OK, source->SetUnknown(MF_DEVICEMFT_CONNECTED_FILTER_KSCONTROL, destination.Get()));
    EXPECT_EQ(S_OK, destination->DeleteItem(MF_MT_FRAME_RATE));
    EXPECT_EQ(S_OK, destination->DeleteItem(MF_MT_SUBTYPE));
    const auto size = [&] { return MFGetAttributeUINT64(destination.Get(), MF_MT_FRAME_SIZE, 0); };

    EXPECT_EQ(S_OK, MFAttributesParser::CopyStore(destination.Get(), source.Get(), false, {MF_MT_FRAME_RATE}));
    EXPECT_EQ(S_OK, destination->GetItem(MF_MT_SUBTYPE, nullptr));
    EXPECT_EQ(S_OK, destination->GetItem(MF_DEVICEMFT_CONNECTED_FILTER_KSCONTROL, nullptr));
    EXPECT_EQ(MF_E_ATTRIBUTENOTFOUND, destination->GetItem(MF_MT_FRAME_RATE, nullptr));
    EXPECT_EQ(1ull << 32 | 1, size());
    EXPECT_EQ(S_OK, MFAttributesParser::CopyStore(destination.Get(), source.Get(), true));
    EXPECT_EQ(640ull << 32 | 480, size());
    EXPECT_EQ(S_OK, destination->GetItem(MF_MT_FRAME_RATE, nullptr));

    EXPECT_EQ(E_POINTER, MFAttributesParser::CopyStore(nullptr, source.Get(), true));
    EXPECT_EQ(E_POINTER, MFAttributesParser::CopyStore(destination.Get(), nullptr, true));
    EXPECT_EQ(E_POINTER, MFAttributesParser::Serialize(source.Get(), nullptr));
    EXPECT_EQ(E_POINTER, MFAttributesParser::Deserialize(nullptr, nullptr));
    EXPECT_EQ(S_OK, source->DeleteItem(MF_DEVICEMFT_CONNECTED_FILTER_KSCONTROL)); // it refers back
    EXPECT_EQ(S_OK, MFAttributesParser::CopyStore(source.Get(), source.Get(), true));
    UINT32 count = 0;
    EXPECT_EQ(S_OK, source->GetCount(&count));
    EXPECT_EQ(4u, count);
    EXPECT_EQ(S_OK, destination->DeleteAllItems());
}

} // namespace
