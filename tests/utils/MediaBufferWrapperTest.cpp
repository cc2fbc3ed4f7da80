#include "utils/MediaBufferWrapper.h"

#include <gtest/gtest.h>

#include "utils/ComException.h"
#include "utils/ComObject.h"

namespace
{

using mft_utils::ComException;
using mft_utils::MediaBufferWrapper;

// A buffer whose steps can be made to fail, and that counts how often it is locked.
class FakeBuffer : public user_space_frameworks::ComObject<IMFMediaBuffer>
{
  public:
    HRESULT STDMETHODCALLTYPE Lock(BYTE **data, DWORD *maxLength, DWORD *currentLength) noexcept override
    {
        if (FAILED(lockResult))
        {
            return lockResult;
        }
        ++locks;
        *data = hasMemory ? memory : nullptr;
        if (maxLength != nullptr)
        {
            *maxLength = sizeof(memory);
        }
        if (currentLength != nullptr)
        {
            *currentLength = length;
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Unlock() noexcept override
    {
        --locks;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetCurrentLength(DWORD *currentLength) noexcept override
    {
        *currentLength = length;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetCurrentLength(DWORD newLength) noexcept override
    {
        length = newLength;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetMaxLength(DWORD *maxLength) noexcept override
    {
        *maxLength = sizeof(memory);
        return S_OK;
    }

    HRESULT lockResult = S_OK;
    bool hasMemory = true;
    int locks = 0;
    DWORD length = 3;
    BYTE memory[4] = {1, 2, 3, 4};
};

ComPtr<IMFSample> SampleWith(IMFMediaBuffer *buffer)
{
    ComPtr<IMFSample> sample;
    EXPECT_EQ(S_OK, MFCreateSample(sample.GetAddressOf()));
    if (buffer != nullptr)
    {
        EXPECT_EQ(S_OK, sample->AddBuffer(buffer));
    }
    return sample;
}

template <class Argument>
void ExpectFailure(HRESULT result, const char *text, Argument argument)
{
    try
    {
        const MediaBufferWrapper wrapper(argument);
        ADD_FAILURE() << "no exception: " << text;
    }
    catch (const ComException &error)
    {
        EXPECT_STREQ(text, error.what());
        EXPECT_EQ(result, error.Result());
    }
}

TEST(MediaBufferWrapperTest, LocksTheSamplesBufferForAsLongAsItLives)
{
    const auto buffer = user_space_frameworks::MakeCom<FakeBuffer>();
    const ComPtr<IMFSample> sample = SampleWith(buffer.Get());
    {
        const MediaBufferWrapper wrapper(sample.Get());
        EXPECT_EQ(1, buffer->locks);
        EXPECT_EQ(buffer->memory, wrapper.data);
        EXPECT_EQ(3u, wrapper.length);
        EXPECT_EQ(buffer.Get(), wrapper.mediaBuffer.Get());
    }
    EXPECT_EQ(0, buffer->locks);
}

TEST(MediaBufferWrapperTest, AllocatesTheGivenLength)
{
    const MediaBufferWrapper wrapper(DWORD{1000});

    DWORD current = 0;
    EXPECT_EQ(S_OK, wrapper.mediaBuffer->GetCurrentLength(&current));
    EXPECT_EQ(1000u, current);
    EXPECT_EQ(1000u, wrapper.length);
    wrapper.data[999] = 1;
}

TEST(MediaBufferWrapperTest, FailuresCarryTextAndResultAndLeaveNothingLocked)
{
    ExpectFailure(E_INVALIDARG, "length can't be 0", DWORD{0});
    ExpectFailure(E_POINTER, "Sample doesn't have a buffer", static_cast<IMFSample *>(nullptr));
    ExpectFailure(E_UNEXPECTED, "Sample doesn't have a buffer", SampleWith(nullptr).Get());

    const auto buffer = user_space_frameworks::MakeCom<FakeBuffer>();
    const ComPtr<IMFSample> sample = SampleWith(buffer.Get());
    buffer->lockResult = MF_E_INVALIDREQUEST;
    ExpectFailure(MF_E_INVALIDREQUEST, "Failed to lock media buffer", sample.Get());
    buffer->lockResult = S_OK;
    buffer->hasMemory = false;
    ExpectFailure(E_UNEXPECTED, "Failed to lock media buffer", sample.Get());
    EXPECT_EQ(0, buffer->locks);
}

} // namespace
