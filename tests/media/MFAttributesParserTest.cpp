#include "media/MFAttributesParser.h"

#include <gtest/gtest.h>

#include "platform/CameraAttributes.h"

namespace
{

TEST(MFAttributesParserTest, CopiesAllButExcludedAndExistingKeys)
{
    using mft_utils::MFAttributesParser;
    ComPtr<IMFAttributes> source;
    ComPtr<IMFAttributes> destination;
    ComPtr<IMFAttributes> object;
    ASSERT_EQ(S_OK, MFCreateAttributes(source.GetAddressOf(), 4));
    ASSERT_EQ(S_OK, MFCreateAttributes(destination.GetAddressOf(), 4));
    ASSERT_EQ(S_OK, MFCreateAttributes(object.GetAddressOf(), 4));
    ASSERT_EQ(S_OK, source->SetUINT32(MF_TRANSFORM_ASYNC, 1));
    ASSERT_EQ(S_OK, source->SetUINT32(MF_SA_D3D11_SHARED_WITHOUT_MUTEX, 1));
    ASSERT_EQ(S_OK, source->SetString(MFT_ENUM_HARDWARE_URL_Attribute, L"camera"));
    ASSERT_EQ(S_OK, source->SetUnknown(MF_DEVICEMFT_CONNECTED_FILTER_KSCONTROL, object.Get()));
    ASSERT_EQ(S_OK, destination->SetUINT32(MF_TRANSFORM_ASYNC, 0));

    ASSERT_EQ(S_OK, MFAttributesParser::CopyStore(destination.Get(), source.Get(), false,
                                                  {MF_SA_D3D11_SHARED_WITHOUT_MUTEX}));
    UINT32 count = 0;
    ComPtr<IUnknown> unknown;
    EXPECT_EQ(S_OK, destination->GetCount(&count));
    EXPECT_EQ(3u, count);
    EXPECT_EQ(0u, MFGetAttributeUINT32(destination.Get(), MF_TRANSFORM_ASYNC, 99));
    EXPECT_EQ(S_OK, destination->GetUnknown(MF_DEVICEMFT_CONNECTED_FILTER_KSCONTROL, IID_PPV_ARGS(&unknown)));

    ASSERT_EQ(S_OK, MFAttributesParser::CopyStore(destination.Get(), source.Get(), true));
    EXPECT_EQ(1u, MFGetAttributeUINT32(destination.Get(), MF_TRANSFORM_ASYNC, 99));
    EXPECT_EQ(S_OK, destination->GetItem(MF_SA_D3D11_SHARED_WITHOUT_MUTEX, nullptr));

    EXPECT_EQ(E_POINTER, MFAttributesParser::CopyStore(nullptr, source.Get(), true));
    EXPECT_EQ(E_POINTER, MFAttributesParser::CopyStore(destination.Get(), nullptr, true));
    EXPECT_EQ(E_POINTER, MFAttributesParser::Serialize(source.Get(), nullptr));
    EXPECT_EQ(E_POINTER, MFAttributesParser::Deserialize(nullptr, nullptr));
    EXPECT_EQ(S_OK, MFAttributesParser::CopyStore(source.Get(), source.Get(), true));
    EXPECT_EQ(S_OK, source->GetCount(&count));
    EXPECT_EQ(4u, count);
}

} // namespace
