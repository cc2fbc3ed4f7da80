#include "recorder/AttributeEncoder.h"

#include <array>
#include <string>

#include "base/LockedBuffer.h"
#include "base/PropVariant.h"
#include "base/WideString.h"

namespace mft_der
{

namespace
{
constexpr int kDeepest = 4; // of stores in stores

void AddStore(RecordBuilder &values, IMFAttributes &store, const BlobRule &rule, int depth);

template <class Number>
void AddNumber(RecordBuilder &values, const GUID &key, std::uint16_t kind, Number number)
{
    values.Attribute(BytesOf(key), kind, [&] {
        values.Append({reinterpret_cast<const std::uint8_t *>(&number), sizeof(number)});
    });
}

void AddWithoutBytes(RecordBuilder &values, const GUID &key, std::uint16_t kind)
{
    values.Attribute(BytesOf(key), kind, [] {});
}

void AddString(RecordBuilder &values, IMFAttributes &store, const GUID &key)
{
    UINT32 length = 0;
    store.GetStringLength(key, &length);
    std::wstring text(length + 1, L'\0');
    if (FAILED(store.GetString(key, text.data(), length + 1, &length)))
    {
        return;
    }
    text.resize(length);
    const std::string utf8 = mft_utils::Narrow(text);
    values.Attribute(BytesOf(key), TARN_KIND_TEXT, [&] {
        values.Append({reinterpret_cast<const std::uint8_t *>(utf8.data()), utf8.size()});
    });
}

void AddBlob(RecordBuilder &values, IMFAttributes &store, const GUID &key, const BlobRule &rule)
{
    UINT32 size = 0;
    if (FAILED(store.GetBlobSize(key, &size)))
    {
        return;
    }
    if (size > rule.longest || IsEqualGUID(key, rule.leftOut))
    {
        AddWithoutBytes(values, key, TARN_KIND_BYTES);
        values.U64(TARN_VALUE_FULL_LENGTH, size);
        return;
    }
    values.Attribute(BytesOf(key), TARN_KIND_BYTES, [&] {
        const std::span<std::uint8_t> space = values.Space(size);
        std::ranges::fill(space, std::uint8_t{0}); // should the store have changed
        if (size != 0)
        {
            store.GetBlob(key, space.data(), size, nullptr);
        }
    });
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

void AddUnknown(RecordBuilder &values, IMFAttributes &store, const GUID &key, const BlobRule &rule, int depth)
{
    ComPtr<IUnknown> object;
    if (FAILED(store.GetUnknown(key, IID_PPV_ARGS(&object))) || !object)
    {
        AddWithoutBytes(values, key, TARN_KIND_NULL);
        return;
    }
    ComPtr<IMFMediaBuffer> buffer;
    ComPtr<IMFAttributes> inner;
    if (!rule.tellsObjects)
    {
        AddWithoutBytes(values, key, TARN_KIND_OBJECT);
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
}

void AddItem(RecordBuilder &values, IMFAttributes &store, const GUID &key, const BlobRule &rule, int depth)
{
    MF_ATTRIBUTE_TYPE type = MF_ATTRIBUTE_UINT32;
    UINT32 number = 0;
    UINT64 longNumber = 0;
    double real = 0;
    GUID guid{};
    if (FAILED(store.GetItemType(key, &type)))
    {
        return;
    }
    switch (type)
    {
    case MF_ATTRIBUTE_UINT32:
        store.GetUINT32(key, &number);
        AddNumber(values, key, TARN_KIND_U32, number);
        break;
    case MF_ATTRIBUTE_UINT64:
        store.GetUINT64(key, &longNumber);
        AddNumber(values, key, TARN_KIND_U64, longNumber);
        break;
    case MF_ATTRIBUTE_DOUBLE:
        store.GetDouble(key, &real);
        AddNumber(values, key, TARN_KIND_F64, real);
        break;
    case MF_ATTRIBUTE_GUID:
        store.GetGUID(key, &guid);
        AddNumber(values, key, TARN_KIND_GUID, guid);
        break;
    case MF_ATTRIBUTE_STRING:
        AddString(values, store, key);
        break;
    case MF_ATTRIBUTE_BLOB:
        AddBlob(values, store, key, rule);
        break;
    case MF_ATTRIBUTE_IUNKNOWN:
        AddUnknown(values, store, key, rule, depth);
        break;
    default:
        AddWithoutBytes(values, key, TARN_KIND_NULL);
    }
}

void AddStore(RecordBuilder &values, IMFAttributes &store, const BlobRule &rule, int depth)
{
    UINT32 count = 0;
    store.GetCount(&count);
    for (UINT32 i = 0; i < count; ++i)
    {
        GUID key{};
        if (SUCCEEDED(store.GetItemByIndex(i, &key, nullptr)))
        {
            AddItem(values, store, key, rule, depth);
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
