#include "media/IMFSampleUtils.h"

#include <gtest/gtest.h>

namespace
{

TEST(IMFSampleUtilsTest, CopiesAttributesAndTheTimesThereAreButNoBuffers)
{
    using mft_utils::IMFSampleUtils;
    ComPtr<IMFSample> source;
    ComPtr<IMFMediaBuffer> buffer;
    ComPtr<IMFSample> copy;
    LONGLONG value = 0;
    ASSERT_EQ(S_OK, MFCreateSample(source.GetAddressOf()));
    ASSERT_EQ(S_OK, IMFSampleUtils::Copy(copy.GetAddressOf(), source.Get()));
    EXPECT_EQ(MF_E_NO_SAMPLE_TIMESTAMP, copy->GetSampleTime(&value));
    EXPECT_EQ(MF_E_NO_SAMPLE_DURATION, copy->GetSampleDuration(&value));

    ASSERT_EQ(S_OK, MFCreateMemoryBuffer(4, buffer.GetAddressOf()));
    ASSERT_EQ(S_OK, source->AddBuffer(buffer.Get()));
    ASSERT_EQ(S_OK, source->SetSampleTime(123));
    ASSERT_EQ(S_OK, source->SetSampleDuration(456));
    ASSERT_EQ(S_OK, source->SetUINT32(MFSampleExtension_CleanPoint, 1));
    ASSERT_EQ(S_OK, IMFSampleUtils::Copy(copy.ReleaseAndGetAddressOf(), source.Get()));
    DWORD buffers = 1;
    EXPECT_EQ(S_OK, copy->GetSampleTime(&value));
    EXPECT_EQ(123, value);
    EXPECT_EQ(S_OK, copy->GetSampleDuration(&value));
    EXPECT_EQ(456, value);
    EXPECT_EQ(S_OK, copy->GetItem(MFSampleExtension_CleanPoint, nullptr));
    EXPECT_EQ(S_OK, copy->GetBufferCount(&buffers));
    EXPECT_EQ(0u, buffers);

    auto *none = copy.Get();
    EXPECT_EQ(E_POINTER, IMFSampleUtils::Copy(nullptr, source.Get()));
    EXPECT_EQ(E_POINTER, IMFSampleUtils::Copy(&none, nullptr));
    EXPECT_EQ(nullptr, none);
}

} // namespace
