#include "tools/replay/ComValues.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "base/LockedBuffer.h"
#include "base/PropVariant.h"
#include "base/WideString.h"
#include "tools/command/ExitCode.h"

namespace tarn_replay
{

using tarn_host::ThrowIfFailed;
using tarn_recording::Bytes;
using tarn_recording::Value;
using tarn_recording::ValueList;

namespace
{
constexpr std::size_t kLongestBlob = 64U << 20U; // a damaged recording must not take all memory

ComPtr<IMFMediaBuffer> MakeBuffer(Bytes bytes)
{
    const auto length = static_cast<DWORD>(bytes.size());
    ComPtr<IMFMediaBuffer> buffer;
    ThrowIfFailed(MFCreateMemoryBuffer(length, &buffer), "MFCreateMemoryBuffer");
    {
        user_space_frameworks::LockedBuffer locked;
        ThrowIfFailed(locked.Lock(buffer.Get()), "locking a buffer");
        std::ranges::copy(bytes, locked.data);
    }
    ThrowIfFailed(buffer->SetCurrentLength(length), "SetCurrentLength");
    return buffer;
}

HRESULT Set(IMFAttributes &store, const GUID &key, const Value &value)
{
    const Bytes bytes = value.Payload();
    switch (value.Kind())
    {
    case TARN_KIND_U32:
        return store.SetUINT32(key, static_cast<UINT32>(value.Unsigned().value_or(0)));
    case TARN_KIND_U64:
        return store.SetUINT64(key, value.Unsigned().value_or(0));
    case TARN_KIND_F64:
        return store.SetDouble(key, value.Real().value_or(0));
    case TARN_KIND_GUID:
        return store.SetGUID(key, ToGuid(value.AsGuid().value_or(tarn_recording::Guid{})));
    case TARN_KIND_TEXT:
        return store.SetString(key, mft_utils::Widen(value.Text().value_or("")).c_str());
    case TARN_KIND_BYTES:
        return store.SetBlob(key, bytes.data(), static_cast<UINT32>(bytes.size()));
    case TARN_KIND_LIST:
        return store.SetUnknown(key, MakeAttributes(value.Items()).Get());
    case TARN_KIND_BUFFER:
        return store.SetUnknown(key, MakeBuffer(bytes).Get());
    default:
        return S_OK;
    }
}

void PutItems(ValueWriter &values, IMFAttributes &store);

void PutBuffer(ValueWriter &values, const GUID &key, IMFMediaBuffer *buffer)
{
    user_space_frameworks::LockedBuffer locked;
    ThrowIfFailed(locked.Lock(buffer), "locking a buffer");
    values.Attribute(&key, TARN_KIND_BUFFER, locked.data, locked.length);
}

void PutObject(ValueWriter &values, const GUID &key, IUnknown *object)
{
    ComPtr<IMFAttributes> store;
    ComPtr<IMFMediaBuffer> buffer;
    if (object != nullptr && SUCCEEDED(object->QueryInterface(IID_PPV_ARGS(&store))))
    {
        const std::size_t begun = values.BeginAttribute(&key, TARN_KIND_LIST);
        PutItems(values, *store.Get());
        values.End(begun);
    }
    else if (object != nullptr && SUCCEEDED(object->QueryInterface(IID_PPV_ARGS(&buffer))))
    {
        PutBuffer(values, key, buffer.Get());
    }
    else
    {
        values.Attribute(&key, TARN_KIND_NULL, nullptr, 0);
    }
}

void PutItem(ValueWriter &values, const GUID &key, const PROPVARIANT &value)
{
    switch (static_cast<int>(value.vt))
    {
    case VT_UI4:
        return values.Attribute(&key, TARN_KIND_U32, &value.ulVal, sizeof value.ulVal);
    case VT_UI8:
        return values.Attribute(&key, TARN_KIND_U64, &value.uhVal, sizeof value.uhVal);
    case VT_R8:
        return values.Attribute(&key, TARN_KIND_F64, &value.dblVal, sizeof value.dblVal);
    case VT_CLSID:
        return values.Attribute(&key, TARN_KIND_GUID, value.puuid, sizeof(GUID));
    case VT_LPWSTR: {
        const std::string text = mft_utils::Narrow(value.pwszVal);
        return values.Attribute(&key, TARN_KIND_TEXT, text.data(), text.size());
    }
    case VT_VECTOR | VT_UI1:
        return values.Attribute(&key, TARN_KIND_BYTES, value.caub.pElems, value.caub.cElems);
    case VT_UNKNOWN:
        return PutObject(values, key, value.punkVal);
    default:
        return;
    }
}

void PutItems(ValueWriter &values, IMFAttributes &store)
{
    UINT32 count = 0;
    ThrowIfFailed(store.GetCount(&count), "GetCount");
    for (UINT32 index = 0; index < count; ++index)
    {
        GUID key{};
        mft_utils::PropVariant value;
        ThrowIfFailed(store.GetItemByIndex(index, &key, value.Receive()), "GetItemByIndex");
        PutItem(values, key, value.Get());
    }
}
} // namespace

GUID ToGuid(const tarn_recording::Guid &guid)
{
    GUID made{};
    static_assert(sizeof made == sizeof guid.bytes);
    std::memcpy(&made, guid.bytes.data(), sizeof made);
    return made;
}

void Fill(IMFAttributes &store, ValueList attributes)
{
    for (auto at = attributes.begin(); at != attributes.end();)
    {
        const auto attribute = at->AsAttribute();
        ++at;
        if (!attribute)
        {
            continue;
        }
        const GUID key = ToGuid(attribute->key);
        const bool isCut = at != attributes.end() && at->Name() == TARN_VALUE_FULL_LENGTH;
        if (isCut && attribute->value.Kind() == TARN_KIND_BYTES)
        {
            std::vector<std::uint8_t> bytes(attribute->value.Payload().begin(), attribute->value.Payload().end());
            bytes.resize(std::min<std::size_t>(at->Unsigned().value_or(0), kLongestBlob));
            ThrowIfFailed(store.SetBlob(key, bytes.data(), static_cast<UINT32>(bytes.size())), "SetBlob");
        }
        else
        {
            ThrowIfFailed(Set(store, key, attribute->value), "setting an attribute");
        }
    }
}

ComPtr<IMFAttributes> MakeAttributes(ValueList attributes)
{
    ComPtr<IMFAttributes> store;
    ThrowIfFailed(MFCreateAttributes(&store, 8), "MFCreateAttributes");
    Fill(*store.Get(), attributes);
    return store;
}

ComPtr<IMFMediaType> MakeMediaType(const std::optional<Value> &recorded)
{
    ComPtr<IMFMediaType> type;
    if (recorded && recorded->Kind() == TARN_KIND_LIST)
    {
        ThrowIfFailed(MFCreateMediaType(&type), "MFCreateMediaType");
        Fill(*type.Get(), recorded->Items());
    }
    return type;
}

ComPtr<IMFSample> MakeSample(ValueList recorded, std::span<const std::uint8_t> pixels)
{
    ComPtr<IMFSample> sample;
    ThrowIfFailed(MFCreateSample(&sample), "MFCreateSample");
    if (const auto time = recorded.Signed(TARN_VALUE_TIME))
    {
        ThrowIfFailed(sample->SetSampleTime(*time), "SetSampleTime");
    }
    if (const auto duration = recorded.Signed(TARN_VALUE_DURATION))
    {
        ThrowIfFailed(sample->SetSampleDuration(*duration), "SetSampleDuration");
    }
    Fill(*sample.Get(), recorded.Items(TARN_VALUE_ATTRIBUTES));
    if (!pixels.empty())
    {
        ThrowIfFailed(sample->AddBuffer(MakeBuffer(pixels).Get()), "AddBuffer");
    }
    return sample;
}

void Put(ValueWriter &values, std::uint16_t name, IMFAttributes *store)
{
    if (store == nullptr)
    {
        values.Null(name);
        return;
    }
    const std::size_t begun = values.BeginList(name);
    PutItems(values, *store);
    values.End(begun);
}

void Put(ValueWriter &values, std::uint16_t name, IMFSample *sample, std::uint64_t number)
{
    if (sample == nullptr)
    {
        values.Null(name);
        return;
    }
    const std::size_t begun = values.BeginList(name);
    LONGLONG time = 0;
    LONGLONG duration = 0;
    DWORD length = 0;
    values.U64(TARN_VALUE_NUMBER, number);
    if (SUCCEEDED(sample->GetSampleTime(&time)))
    {
        values.I64(TARN_VALUE_TIME, time);
    }
    if (SUCCEEDED(sample->GetSampleDuration(&duration)))
    {
        values.I64(TARN_VALUE_DURATION, duration);
    }
    if (SUCCEEDED(sample->GetTotalLength(&length)))
    {
        values.U64(TARN_VALUE_LENGTH, length);
    }
    Put(values, TARN_VALUE_ATTRIBUTES, sample);
    values.End(begun);
}

void Put(ValueWriter &values, std::uint16_t name, const PROPVARIANT &value)
{
    switch (static_cast<int>(value.vt))
    {
    case VT_UI4:
        return values.U32(name, value.ulVal);
    case VT_UI8:
        return values.U64(name, value.uhVal.QuadPart);
    case VT_I8:
        return values.I64(name, value.hVal.QuadPart);
    case VT_UNKNOWN:
        return values.Put(name, TARN_KIND_OBJECT, nullptr, 0);
    default:
        return values.Null(name);
    }
}

std::uint64_t HashOf(IMFSample &sample)
{
    std::uint64_t hash = 0xCBF29CE484222325;
    DWORD count = 0;
    ThrowIfFailed(sample.GetBufferCount(&count), "GetBufferCount");
    for (DWORD index = 0; index < count; ++index)
    {
        ComPtr<IMFMediaBuffer> buffer;
        ThrowIfFailed(sample.GetBufferByIndex(index, &buffer), "GetBufferByIndex");
        user_space_frameworks::LockedBuffer locked;
        ThrowIfFailed(locked.Lock(buffer.Get()), "locking a frame");
        for (const BYTE byte : std::span(locked.data, locked.length))
        {
            hash = (hash ^ byte) * 0x100000001B3;
        }
    }
    return hash;
}

} // namespace tarn_replay
