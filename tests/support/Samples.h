// Media types, samples and what is on them.
#pragma once

#include "tests/support/Expect.h"

namespace tarn_test
{

using Bytes = std::vector<BYTE>;

inline ComPtr<IMFMediaType> MakeType(UINT32 width, UINT32 height, UINT32 fps, const GUID &subtype = MFVideoFormat_D16,
                                     UINT32 denominator = 1)
{
    ComPtr<IMFMediaType> type;
    EXPECT_HR(S_OK, MFCreateMediaType(&type));
    EXPECT_HR(S_OK, type->SetGUID(MF_MT_MAJOR_TYPE, MFMediaType_Video));
    EXPECT_HR(S_OK, type->SetGUID(MF_MT_SUBTYPE, subtype));
    EXPECT_HR(S_OK, MFSetAttributeSize(type.Get(), MF_MT_FRAME_SIZE, width, height));
    EXPECT_HR(S_OK, MFSetAttributeRatio(type.Get(), MF_MT_FRAME_RATE, fps, denominator));
    return type;
}

// Holds the bytes and has room for more.
inline ComPtr<IMFMediaBuffer> MakeBuffer(const Bytes &bytes, DWORD unusedBytes = 0)
{
    const auto length = static_cast<DWORD>(bytes.size());
    ComPtr<IMFMediaBuffer> buffer;
    BYTE *data = nullptr;
    EXPECT_HR(S_OK, MFCreateMemoryBuffer(length + unusedBytes, &buffer));
    EXPECT_HR(S_OK, buffer->Lock(&data, nullptr, nullptr));
    std::fill_n(std::copy(bytes.begin(), bytes.end(), data), unusedBytes, BYTE{0xAA});
    EXPECT_HR(S_OK, buffer->Unlock());
    EXPECT_HR(S_OK, buffer->SetCurrentLength(length));
    return buffer;
}

// With one buffer, or none for no bytes.
inline ComPtr<IMFSample> MakeSample(LONGLONG time100ns, const Bytes &bytes = {}, DWORD unusedBytes = 0)
{
    ComPtr<IMFSample> sample;
    EXPECT_HR(S_OK, MFCreateSample(&sample));
    EXPECT_HR(S_OK, sample->SetSampleTime(time100ns));
    if (!bytes.empty())
    {
        EXPECT_HR(S_OK, sample->AddBuffer(MakeBuffer(bytes, unusedBytes).Get()));
    }
    return sample;
}

inline Bytes BytesOf(const ComPtr<IMFMediaBuffer> &buffer)
{
    BYTE *data = nullptr;
    DWORD length = 0;
    EXPECT_HR(S_OK, buffer->Lock(&data, nullptr, &length));
    Bytes bytes(data, data + length);
    EXPECT_HR(S_OK, buffer->Unlock());
    return bytes;
}

inline Bytes BytesOf(const ComPtr<IMFSample> &sample)
{
    ComPtr<IMFMediaBuffer> buffer;
    EXPECT_HR(S_OK, sample->ConvertToContiguousBuffer(&buffer));
    return BytesOf(buffer);
}

// Empty when there is none.
inline Bytes BlobOf(const ComPtr<IMFAttributes> &store, const GUID &key)
{
    UINT32 size = 0;
    if (FAILED(store->GetBlobSize(key, &size)))
    {
        return {};
    }
    Bytes blob(size);
    EXPECT_HR(S_OK, store->GetBlob(key, blob.data(), size, nullptr));
    return blob;
}

inline LONGLONG TimeOf(const ComPtr<IMFSample> &sample)
{
    LONGLONG time = -1;
    EXPECT_HR(S_OK, sample->GetSampleTime(&time));
    return time;
}

} // namespace tarn_test
