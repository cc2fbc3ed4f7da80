// Values of the platform's objects in the encoding of recordings.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstddef>
#include <string_view>

#include "recorder/RecordBuilder.h"

namespace mft_der
{

inline GuidBytes BytesOf(const GUID &guid) noexcept
{
    return GuidBytes(reinterpret_cast<const std::uint8_t *>(&guid), sizeof(guid));
}

// What is left out of an attribute's bytes; their full length is told.
struct BlobRule
{
    std::size_t longest = 65536; // longer ones are left out altogether: they may be pictures
    GUID leftOut{};              // the key of one that is a picture whatever its length
    bool tellsObjects = true;    // stores and media buffers; otherwise only that there is one
};

// Null for a null pointer. A store that changes meanwhile may be told in part. All may throw std::bad_alloc.
void AddAttributes(RecordBuilder &values, std::uint16_t name, IMFAttributes *store, const BlobRule &rule = {});
void AddText(RecordBuilder &values, std::uint16_t name, std::wstring_view text);
// Whether there is an object.
void AddObject(RecordBuilder &values, std::uint16_t name, IUnknown *object);
// By its kind; null for kinds that no event of ours has.
void AddVariant(RecordBuilder &values, std::uint16_t name, const PROPVARIANT *variant);
// Type, extended type, status, value and attributes.
void AddEvent(RecordBuilder &values, MediaEventType type, const GUID &extendedType, HRESULT status,
              const PROPVARIANT *value);
void AddEvent(RecordBuilder &values, IMFMediaEvent *event);

} // namespace mft_der
