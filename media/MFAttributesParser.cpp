#include "media/MFAttributesParser.h"

#include <algorithm>

#include "trace/Check.h"
#include "base/PropVariant.h"

namespace mft_utils
{

namespace
{

// Pointers are left out: a marshalled reference that nobody reads back would never be released.
constexpr DWORD kWithoutPointers = 0;

} // namespace

HRESULT MFAttributesParser::CopyStore(IMFAttributes *destination, IMFAttributes *source, bool overwrite,
                                      std::initializer_list<GUID> excludedKeys) noexcept
{
    CHECK_POINTER(destination);
    CHECK_POINTER(source);
    if (destination == source)
    {
        return S_OK;
    }
    UINT32 count = 0;
    CHECK_HR(source->GetCount(&count));
    for (UINT32 i = 0; i < count; ++i)
    {
        GUID key{};
        PropVariant value;
        CHECK_HR(source->GetItemByIndex(i, &key, value.Receive()));
        const bool isExcluded = std::find(excludedKeys.begin(), excludedKeys.end(), key) != excludedKeys.end();
        const bool isKept = !overwrite && SUCCEEDED(destination->GetItem(key, nullptr));
        if (!isExcluded && !isKept)
        {
            CHECK_HR(destination->SetItem(key, value.Get()));
        }
    }
    return S_OK;
}

HRESULT MFAttributesParser::Serialize(IMFAttributes *source, IStream *stream) noexcept
{
    CHECK_POINTER(source);
    CHECK_POINTER(stream);
    CHECK_HR(MFSerializeAttributesToStream(source, kWithoutPointers, stream));
    return S_OK;
}

HRESULT MFAttributesParser::Deserialize(IMFAttributes *destination, IStream *stream) noexcept
{
    CHECK_POINTER(destination);
    CHECK_POINTER(stream);
    CHECK_HR(MFDeserializeAttributesFromStream(destination, kWithoutPointers, stream));
    return S_OK;
}

} // namespace mft_utils
