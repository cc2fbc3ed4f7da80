#include "media/MediaBufferWrapper.h"

#include "base/ComException.h"
#include "base/ComObject.h"
#include "tests/support/Expect.h"

namespace
{

using mft_utils::MediaBufferWrapper;

// A buffer whose lock can be made to fail, and that counts how often it is locked.
class FakeBuffer : public user_space_frameworks::ComObject<IMFMediaBuffer>
{
  public:
    HRESULT STDMETHODCALLTYPE Lock(BYTE **data, DWORD *, DWORD *currentLength) noexcept override
    {
        if (FAILED(lockResult))
        {
            return lockResult;
        }
        ++locks;
        *data = hasMemory ? memory : nullptr;
        *currentLength = 3;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Unlock() noexcept override
    {
        --locks;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetCurrentLength(DWORD *) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetCurrentLength(DWORD) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetMaxLength(DWORD *) noexcept override { return E_NOTIMPL; }

    HRESULT lockResult = S_OK;
    bool hasMemory = true;
    int locks = 0;
    BYTE memory[4] = {};
};

void ExpectFailure(HRESULT result, const char *text, auto argument)
{
    try
    {
        const MediaBufferWrapper wrapper(argument);
        ADD_FAILURE() << "no exception: " << text;
    }
    catch (const mft_utils::ComException &error)
    {
        EXPECT_STREQ(text, error.what());
        EXPECT_EQ(result, error.Result());
    }
}

TEST(MediaBufferWrapperTest, LocksForAsLongAsItLivesAndLeavesNothingLocked)
{
    ComPtr<IMFSample> sample;
    ASSERT_EQ(S_OK, MFCreateSample(sample.GetAddressOf()));
    ExpectFailure(E_INVALIDARG, "length can't be 0", DWORD{0});
    ExpectFailure(E_POINTER, "Sample doesn't have a buffer", static_cast<IMFSample *>(nullptr));
    ExpectFailure(E_UNEXPECTED, "Sample doesn't have a buffer", sample.Get());

    const auto buffer = user_space_frameworks::MakeCom<FakeBuffer>();
    ASSERT_EQ(S_OK, sample->AddBuffer(buffer.Get()));
    {
        const MediaBufferWrapper wrapper(sample.Get());
        EXPECT_EQ(1, buffer->locks);
        EXPECT_EQ(buffer->memory, wrapper.data);
        EXPECT_EQ(3u, wrapper.length);
    }
    buffer->lockResult = MF_E_INVALIDREQUEST;
    ExpectFailure(MF_E_INVALIDREQUEST, "Failed to lock media buffer", sample.Get());
    buffer->lockResult = S_OK;
    buffer->hasMemory = false;
    ExpectFailure(E_UNEXPECTED, "Failed to lock media buffer", sample.Get());
    EXPECT_EQ(0, buffer->locks);

    const MediaBufferWrapper allocated(DWORD{1000});
    DWORD current = 0;
    EXPECT_EQ(S_OK, allocated.mediaBuffer->GetCurrentLength(&current));
    EXPECT_EQ(1000u, current);
    EXPECT_EQ(1000u, allocated.length);
    allocated.data[999] = 1;
}

} // namespace
