#include "utils/IMFSampleUtils.h"

#include <gtest/gtest.h>

namespace
{

TEST(IMFSampleUtilsTest, CopiesAttributesTimeAndDurationButNoBuffers)
{
    ComPtr<IMFSample> source;
    ComPtr<IMFMediaBuffer> buffer;
    ASSERT_EQ(S_OK, MFCreateSample(source.GetAddressOf()));
    ASSERT_EQ(S_OK, MFCreateMemoryBuffer(4, buffer.GetAddressOf()));
    ASSERT_EQ(S_OK, source->AddBuffer(buffer.Get()));
    ASSERT_EQ(S_OK, source->SetSampleTime(123));
    ASSERT_EQ(S_OK, source->SetSampleDuration(456));
    ASSERT_EQ(S_OK, source->SetUINT32(MFSampleExtension_CleanPoint, 1));

    ComPtr<IMFSample> copy;
    ASSERT_EQ(S_OK, mft_utils::IMFSampleUtils::Copy(copy.GetAddressOf(), source.Get()));

    LONGLONG time = 0;
    LONGLONG duration = 0;
    UINT32 value = 0;
    DWORD buffers = 1;
    EXPECT_EQ(S_OK, copy->GetSampleTime(&time));
    EXPECT_EQ(123, time);
    EXPECT_EQ(S_OK, copy->GetSampleDuration(&duration));
    EXPECT_EQ(456, duration);
    EXPECT_EQ(S_OK, copy->GetUINT32(MFSampleExtension_CleanPoint, &value));
    EXPECT_EQ(S_OK, copy->GetBufferCount(&buffers));
    EXPECT_EQ(0u, buffers);
}

TEST(IMFSampleUtilsTest, MissingTimesStayMissing)
{
    ComPtr<IMFSample> source;
    ComPtr<IMFSample> copy;
    ASSERT_EQ(S_OK, MFCreateSample(source.GetAddressOf()));
    ASSERT_EQ(S_OK, mft_utils::IMFSampleUtils::Copy(copy.GetAddressOf(), source.Get()));

    LONGLONG time = 0;
    EXPECT_EQ(MF_E_NO_SAMPLE_TIMESTAMP, copy->GetSampleTime(&time));
    EXPECT_EQ(MF_E_NO_SAMPLE_DURATION, copy->GetSampleDuration(&time));
}

TEST(IMFSampleUtilsTest, NullArgumentsAreRefused)
{
    ComPtr<IMFSample> source;
    ASSERT_EQ(S_OK, MFCreateSample(source.GetAddressOf()));
    auto *copy = reinterpret_cast<IMFSample *>(1);

    EXPECT_EQ(E_POINTER, mft_utils::IMFSampleUtils::Copy(nullptr, source.Get()));
    EXPECT_EQ(E_POINTER, mft_utils::IMFSampleUtils::Copy(&copy, nullptr));
    EXPECT_EQ(nullptr, copy);
}

} // namespace
