// Names of kernel-streaming properties, events and methods for logs.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstdint>
#include <string>

namespace mft_utils
{

// How an identifier is meant: the same set and id read differently as property, event or method.
enum class KsIdentifierKind : std::uint8_t
{
    Property = 0,
    Event = 1,
    Method = 2
};

// One table of ids for the module, filled at process attach; set names come from the GuidTranslator. Thread-safe.
class KsIdentifierTranslator
{
  public:
    // Makes the table with the platform's ids; S_FALSE when it exists already. E_OUTOFMEMORY.
    static HRESULT Create() noexcept;
    static void Destroy() noexcept;

    // Adds or replaces the name of one id of a set; the text is copied.
    // E_UNEXPECTED before Create, E_POINTER for a null name, E_OUTOFMEMORY.
    static HRESULT Register(KsIdentifierKind kind, const GUID &set, ULONG id, const char *name) noexcept;

    // "KSPROPERTYSETID_ExtendedCameraControl {guid} property WARMSTART (4) GET"; numbers where a name is unknown,
    // "null" for a null identifier. Reads 24 bytes. May throw std::bad_alloc.
    static std::string Name(const KSIDENTIFIER *identifier, KsIdentifierKind kind);
};

} // namespace mft_utils
