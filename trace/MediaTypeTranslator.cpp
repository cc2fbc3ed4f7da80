#include "trace/MediaTypeTranslator.h"

#include <array>
#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <new>

#include "base/GuidLess.h"
#include "trace/GuidTranslator.h"
#include "base/PropVariant.h"
#include "base/SharedLock.h"

namespace mft_utils
{

namespace
{

// What stands between the two numbers that one 64-bit attribute holds.
using Table = std::map<GUID, char, GuidLess>;

constinit user_space_frameworks::SharedLock lock;
// A plain pointer, for it must outlive static destruction.
constinit Table *table TARN_GUARDED_BY(lock) TARN_POINTEE_GUARDED_BY(lock) = nullptr;

// 0 for an attribute that is a single number.
char SeparatorOf(const GUID &key)
{
    const user_space_frameworks::SharedGuard guard(lock);
    if (table == nullptr)
    {
        return 0;
    }
    const auto found = table->find(key);
    return found == table->end() ? char{0} : found->second;
}

std::string PairToString(UINT32 high, UINT32 low, char separator)
{
    return std::to_string(high) + separator + std::to_string(low);
}

std::string UInt64ToString(const GUID &key, ULONGLONG value)
{
    const char separator = SeparatorOf(key);
    return separator == 0 ? std::to_string(value)
                          : PairToString(static_cast<UINT32>(value >> 32), static_cast<UINT32>(value), separator);
}

std::string WideToString(const wchar_t *text)
{
    if (text == nullptr)
    {
        return "null";
    }
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    if (size <= 1)
    {
        return "\"\"";
    }
    std::string converted(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, converted.data(), size, nullptr, nullptr);
    converted.pop_back();
    return std::string("\"").append(converted).append("\"");
}

// Size and the first bytes: enough to tell one blob from another.
std::string BlobToString(const UCHAR *bytes, ULONG size)
{
    constexpr ULONG kShownBytes = 16;
    std::string text = std::to_string(size) + " bytes";
    for (ULONG i = 0; i < size && i < kShownBytes; ++i)
    {
        std::array<char, 4> byte{};
        std::snprintf(byte.data(), byte.size(), " %02X", bytes[i]);
        text += byte.data();
    }
    return size > kShownBytes ? text + " ..." : text;
}

std::string ValueToString(const GUID &key, const PROPVARIANT &value)
{
    switch (value.vt)
    {
    case VT_UI4:
        return std::to_string(value.ulVal);
    case VT_UI8:
        return UInt64ToString(key, value.uhVal.QuadPart);
    case VT_R8:
        return std::to_string(value.dblVal);
    case VT_CLSID:
        return value.puuid == nullptr ? "null" : GuidTranslator::Name(*value.puuid);
    case VT_LPWSTR:
        return WideToString(value.pwszVal);
    case VT_VECTOR | VT_UI1:
        return BlobToString(value.caub.pElems, value.caub.cElems);
    case VT_UNKNOWN:
        return value.punkVal == nullptr ? "null object" : "object";
    default:
        return std::string("value of type ").append(std::to_string(value.vt));
    }
}

} // namespace

HRESULT MediaTypeTranslator::Create() noexcept
{
    try
    {
        const std::scoped_lock guard(lock);
        if (table != nullptr)
        {
            return S_FALSE;
        }
        auto made = std::make_unique<Table>();
        made->emplace(MF_MT_FRAME_SIZE, 'x');
        made->emplace(MF_MT_FRAME_RATE, '/');
        made->emplace(MF_MT_FRAME_RATE_RANGE_MIN, '/');
        made->emplace(MF_MT_FRAME_RATE_RANGE_MAX, '/');
        made->emplace(MF_MT_PIXEL_ASPECT_RATIO, ':');
        table = made.release();
        return S_OK;
    }
    catch (const std::bad_alloc &)
    {
        return E_OUTOFMEMORY;
    }
}

void MediaTypeTranslator::Destroy() noexcept
{
    const std::scoped_lock guard(lock);
    delete table;
    table = nullptr;
}

std::string MediaTypeTranslator::Describe(IMFMediaType *mediaType)
{
    if (mediaType == nullptr)
    {
        return "null";
    }
    std::string text = "no subtype";
    GUID subtype{};
    if (SUCCEEDED(mediaType->GetGUID(MF_MT_SUBTYPE, &subtype)))
    {
        text = GuidTranslator::Name(subtype);
    }
    UINT32 first = 0;
    UINT32 second = 0;
    if (SUCCEEDED(MFGetAttributeSize(mediaType, MF_MT_FRAME_SIZE, &first, &second)))
    {
        text.append(" ").append(PairToString(first, second, 'x'));
    }
    if (SUCCEEDED(MFGetAttributeRatio(mediaType, MF_MT_FRAME_RATE, &first, &second)))
    {
        text.append(" @ ").append(PairToString(first, second, '/')).append(" fps");
    }
    return text;
}

std::string MediaTypeTranslator::DescribeAll(IMFAttributes *attributes)
{
    UINT32 count = 0;
    if (attributes == nullptr || FAILED(attributes->GetCount(&count)))
    {
        return "null";
    }
    std::string text;
    for (UINT32 i = 0; i < count; ++i)
    {
        GUID key{};
        PropVariant value;
        // The store may shrink meanwhile: what is gone is left out.
        if (FAILED(attributes->GetItemByIndex(i, &key, value.Receive())))
        {
            break;
        }
        const std::string name = GuidTranslator::FindName(key);
        text += text.empty() ? "" : "\n";
        text += (name.empty() ? GuidTranslator::ToString(key) : name) + " = " + ValueToString(key, value.Get());
    }
    return text;
}

} // namespace mft_utils
