#include "tests/nodes/FrameMemory.h"

#include <random>

namespace tarn_test
{

namespace
{

constexpr GUID kMark = {0x6A3F7B10, 0x0001, 0x4000, {1, 2, 3, 4, 5, 6, 7, 8}};
constexpr UINT32 kMarkValue = 77;
constexpr LONGLONG kTime100ns = 123456789;
constexpr LONGLONG kDuration100ns = 333333;

ComPtr<IMFMediaBuffer> BufferOf(const Bytes &bytes)
{
    const auto buffer = user_space_frameworks::MakeCom<GuardedBuffer>(static_cast<DWORD>(bytes.size()));
    std::copy(bytes.begin(), bytes.end(), buffer->Data());
    return buffer;
}

} // namespace

ComPtr<IMFSample> MakeFrame(const Bytes &bytes)
{
    const auto sample = MakeSample(kTime100ns);
    EXPECT_HR(S_OK, sample->AddBuffer(BufferOf(bytes).Get()));
    EXPECT_HR(S_OK, sample->SetSampleDuration(kDuration100ns));
    EXPECT_HR(S_OK, sample->SetUINT32(kMark, kMarkValue));
    return sample;
}

ComPtr<IMFSample> MakeFrame(const Pixels &pixels)
{
    return MakeFrame(AsBytes(pixels));
}

void ExpectFrameProperties(const ComPtr<IMFSample> &sample)
{
    LONGLONG duration100ns = 0;
    EXPECT_HR(S_OK, sample->GetSampleDuration(&duration100ns));
    EXPECT_EQ(kDuration100ns, duration100ns);
    EXPECT_EQ(kTime100ns, TimeOf(sample));
    EXPECT_EQ(kMarkValue, MFGetAttributeUINT32(sample.Get(), kMark, 0));
}

ComPtr<IMFAttributes> AttachMetadata(const ComPtr<IMFSample> &sample, const Bytes &items)
{
    return AttachItems(sample.Get(), BufferOf(items));
}

Pixels RandomPixels(std::size_t count, unsigned seed)
{
    std::mt19937 random(seed);
    Pixels pixels(count);
    std::generate(pixels.begin(), pixels.end(), [&] { return static_cast<std::uint16_t>(random()); });
    return pixels;
}

} // namespace tarn_test

// The linker sends the module's calls here.
extern "C"
{
    HRESULT __real_MFCreateSample(IMFSample **sample);
    HRESULT __wrap_MFCreateSample(IMFSample **sample)
    {
        return tarn_test::FailingCall::IsThisOne() ? E_OUTOFMEMORY : __real_MFCreateSample(sample);
    }
    HRESULT __wrap_MFCreateMemoryBuffer(DWORD size, IMFMediaBuffer **buffer)
    {
        if (tarn_test::FailingCall::IsThisOne())
        {
            return E_OUTOFMEMORY;
        }
        *buffer = user_space_frameworks::MakeCom<tarn_test::GuardedBuffer>(size).Detach();
        return S_OK;
    }
    HRESULT __wrap_MFCreateAlignedMemoryBuffer(DWORD size, DWORD, IMFMediaBuffer **buffer)
    {
        return __wrap_MFCreateMemoryBuffer(size, buffer);
    }
}
