#include "recorder/AttributeEncoder.h"

#include "platform/CameraAttributes.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "base/LockedBuffer.h"
#include "base/PropVariant.h"
#include "base/WideString.h"
#include "tarn/sample_attributes.h"

namespace mft_der
{

namespace
{
constexpr int kDeepest = 4; // of stores in stores

void AddStore(RecordBuilder &values, IMFAttributes &store, const BlobRule &rule, int depth);

template <class Number>
void AddNumber(RecordBuilder &values, const GUID &key, std::uint16_t kind, Number number)
{
    values.Attribute(BytesOf(key), kind, [&] { values.AppendValue(number); });
}

void AddWithoutBytes(RecordBuilder &values, const GUID &key, std::uint16_t kind)
{
    values.Attribute(BytesOf(key), kind, [] {});
}

// From here on: false when the store has no such value.
bool AddString(RecordBuilder &values, IMFAttributes &store, const GUID &key)
{
    UINT32 length = 0;
    store.GetStringLength(key, &length);
    std::wstring text(length + 1, L'\0');
    if (FAILED(store.GetString(key, text.data(), length + 1, &length)))
    {
        return false;
    }
    text.resize(length);
    const std::string utf8 = mft_utils::Narrow(text);
    values.Attribute(BytesOf(key), TARN_KIND_TEXT, [&] {
        values.Append({reinterpret_cast<const std::uint8_t *>(utf8.data()), utf8.size()});
    });
    return true;
}

bool AddBlob(RecordBuilder &values, IMFAttributes &store, const GUID &key, const BlobRule &rule)
{
    std::array<std::uint8_t, 256> few; // most have fewer bytes, and are asked for once
    UINT32 size = 0;
    const bool mayBeTold = !IsEqualGUID(key, rule.leftOut);
    if (mayBeTold && SUCCEEDED(store.GetBlob(key, few.data(), static_cast<UINT32>(few.size()), &size)) &&
        size <= few.size())
    {
        values.Attribute(BytesOf(key), TARN_KIND_BYTES, [&] { values.Append(Bytes(few).first(size)); });
        return true;
    }
    if (FAILED(store.GetBlobSize(key, &size)))
    {
        return false;
    }
    if (size > rule.longest || !mayBeTold)
    {
        AddWithoutBytes(values, key, TARN_KIND_BYTES);
        values.U64(TARN_VALUE_FULL_LENGTH, size);
        return true;
    }
    values.Attribute(BytesOf(key), TARN_KIND_BYTES, [&] {
        const std::span<std::uint8_t> space = values.Space(size);
        std::ranges::fill(space, std::uint8_t{0}); // should the store have changed
        store.GetBlob(key, space.data(), size, nullptr);
    });
    return true;
}

void AddBuffer(RecordBuilder &values, const GUID &key, IMFMediaBuffer *buffer, const BlobRule &rule)
{
    user_space_frameworks::LockedBuffer bytes;
    const bool isLocked = SUCCEEDED(bytes.Lock(buffer));
    const std::size_t told = isLocked && bytes.length <= rule.longest ? bytes.length : 0;
    values.Attribute(BytesOf(key), TARN_KIND_BUFFER, [&] { values.Append({bytes.data, told}); });
    if (told < bytes.length)
    {
        values.U64(TARN_VALUE_FULL_LENGTH, bytes.length);
    }
}

bool AddUnknown(RecordBuilder &values, IMFAttributes &store, const GUID &key, const BlobRule &rule, int depth)
{
    if (!rule.tellsObjects)
    {
        AddWithoutBytes(values, key, TARN_KIND_OBJECT);
        return true;
    }
    ComPtr<IUnknown> object;
    if (FAILED(store.GetUnknown(key, IID_PPV_ARGS(&object))))
    {
        return false;
    }
    ComPtr<IMFMediaBuffer> buffer;
    ComPtr<IMFAttributes> inner;
    if (!object)
    {
        AddWithoutBytes(values, key, TARN_KIND_NULL);
    }
    else if (SUCCEEDED(object.As(&buffer)))
    {
        AddBuffer(values, key, buffer.Get(), rule);
    }
    else if (depth < kDeepest && SUCCEEDED(object.As(&inner)))
    {
        values.Attribute(BytesOf(key), TARN_KIND_LIST, [&] { AddStore(values, *inner.Get(), rule, depth + 1); });
    }
    else
    {
        AddWithoutBytes(values, key, TARN_KIND_OBJECT);
    }
    return true;
}

bool AddItem(RecordBuilder &values, IMFAttributes &store, const GUID &key, MF_ATTRIBUTE_TYPE type, const BlobRule &rule,
             int depth)
{
    UINT32 number = 0;
    UINT64 longNumber = 0;
    double real = 0;
    GUID guid{};
    const auto told = [&](HRESULT result, std::uint16_t kind, const auto &value) {
        if (SUCCEEDED(result))
        {
            AddNumber(values, key, kind, value);
        }
        return SUCCEEDED(result);
    };
    switch (type)
    {
    case MF_ATTRIBUTE_UINT32:
        return told(store.GetUINT32(key, &number), TARN_KIND_U32, number);
    case MF_ATTRIBUTE_UINT64:
        return told(store.GetUINT64(key, &longNumber), TARN_KIND_U64, longNumber);
    case MF_ATTRIBUTE_DOUBLE:
        return told(store.GetDouble(key, &real), TARN_KIND_F64, real);
    case MF_ATTRIBUTE_GUID:
        return told(store.GetGUID(key, &guid), TARN_KIND_GUID, guid);
    case MF_ATTRIBUTE_STRING:
        return AddString(values, store, key);
    case MF_ATTRIBUTE_BLOB:
        return AddBlob(values, store, key, rule);
    case MF_ATTRIBUTE_IUNKNOWN:
        return AddUnknown(values, store, key, rule, depth);
    default:
        AddWithoutBytes(values, key, TARN_KIND_NULL);
        return true;
    }
}

// Of what samples have as a rule: to ask for the type takes as long as to ask for the value.
std::optional<MF_ATTRIBUTE_TYPE> UsualType(const GUID &key) noexcept
{
    struct Usual
    {
        const GUID &key;
        MF_ATTRIBUTE_TYPE type;
    };
    static constexpr Usual usual[] = {
        {MFSampleExtension_CaptureMetadata, MF_ATTRIBUTE_IUNKNOWN},
        {TARN_SAMPLE_FRAME_METADATA, MF_ATTRIBUTE_BLOB},
        {MFSampleExtension_PinholeCameraIntrinsics, MF_ATTRIBUTE_BLOB},
        {MFSampleExtension_CameraExtrinsics, MF_ATTRIBUTE_BLOB},
        {MFSampleExtension_Depth_MinReliableDepth, MF_ATTRIBUTE_UINT32},
        {MFSampleExtension_Depth_MaxReliableDepth, MF_ATTRIBUTE_UINT32},
    };
    const auto *const found = std::ranges::find_if(usual, [&](const Usual &one) { return IsEqualGUID(key, one.key); });
    return found == std::end(usual) ? std::nullopt : std::optional(found->type);
}

void AddStore(RecordBuilder &values, IMFAttributes &store, const BlobRule &rule, int depth)
{
    UINT32 count = 0;
    store.GetCount(&count);
    for (UINT32 i = 0; i < count; ++i)
    {
        GUID key{};
        if (FAILED(store.GetItemByIndex(i, &key, nullptr)))
        {
            continue;
        }
        const auto usual = UsualType(key);
        if (usual && AddItem(values, store, key, *usual, rule, depth))
        {
            continue;
        }
        MF_ATTRIBUTE_TYPE type = MF_ATTRIBUTE_UINT32;
        if (SUCCEEDED(store.GetItemType(key, &type)))
        {
            AddItem(values, store, key, type, rule, depth);
        }
    }
}
} // namespace

void AddAttributes(RecordBuilder &values, std::uint16_t name, IMFAttributes *store, const BlobRule &rule)
{
    if (store == nullptr)
    {
        values.Null(name);
        return;
    }
    values.List(name, [&] { AddStore(values, *store, rule, 0); });
}

void AddText(RecordBuilder &values, std::uint16_t name, std::wstring_view text)
{
    values.Text(name, mft_utils::Narrow(text));
}

void AddObject(RecordBuilder &values, std::uint16_t name, IUnknown *object)
{
    object == nullptr ? values.Null(name) : values.Object(name);
}

void AddVariant(RecordBuilder &values, std::uint16_t name, const PROPVARIANT *variant)
{
    switch (variant == nullptr ? VT_EMPTY : static_cast<int>(variant->vt))
    {
    case VT_I4:
    case VT_UI4:
        values.U32(name, variant->ulVal);
        break;
    case VT_I8:
        values.I64(name, variant->hVal.QuadPart);
        break;
    case VT_UI8:
        values.U64(name, variant->uhVal.QuadPart);
        break;
    case VT_R8:
        values.F64(name, variant->dblVal);
        break;
    case VT_CLSID:
        values.Guid(name, BytesOf(*variant->puuid));
        break;
    case VT_LPWSTR:
        AddText(values, name, variant->pwszVal);
        break;
    case VT_VECTOR | VT_UI1:
        values.Block(name, {variant->caub.pElems, variant->caub.cElems}, BlobRule().longest);
        break;
    case VT_UNKNOWN:
        AddObject(values, name, variant->punkVal);
        break;
    default:
        values.Null(name);
    }
}

void AddEvent(RecordBuilder &values, MediaEventType type, const GUID &extendedType, HRESULT status,
              const PROPVARIANT *value)
{
    values.U32(TARN_VALUE_EVENT_TYPE, static_cast<std::uint32_t>(type));
    if (!IsEqualGUID(extendedType, GUID{}))
    {
        values.Guid(TARN_VALUE_EXTENDED_TYPE, BytesOf(extendedType));
    }
    values.U32(TARN_VALUE_EVENT_STATUS, static_cast<std::uint32_t>(status));
    if (value != nullptr && value->vt != VT_EMPTY)
    {
        AddVariant(values, TARN_VALUE_EVENT_VALUE, value);
    }
}

void AddEvent(RecordBuilder &values, IMFMediaEvent *event)
{
    if (event == nullptr)
    {
        values.Null(TARN_VALUE_OBJECT);
        return;
    }
    MediaEventType type = MEUnknown;
    GUID extendedType{};
    HRESULT status = S_OK;
    mft_utils::PropVariant value;
    UINT32 count = 0;
    event->GetType(&type);
    event->GetExtendedType(&extendedType);
    event->GetStatus(&status);
    event->GetValue(value.Receive());
    AddEvent(values, type, extendedType, status, &value.Get());
    if (SUCCEEDED(event->GetCount(&count)) && count != 0)
    {
        AddAttributes(values, TARN_VALUE_ATTRIBUTES, event);
    }
}

} // namespace mft_der
