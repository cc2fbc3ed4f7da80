// Names of GUIDs for logs.
#pragma once

#include <windows.h>

#include <string>

namespace mft_utils
{

// One table for the module, filled at process attach. Thread-safe.
class GuidTranslator
{
  public:
    // Makes the table with the platform's names; S_FALSE when it exists already. E_OUTOFMEMORY.
    static HRESULT Create() noexcept;
    static void Destroy() noexcept;

    // Adds or replaces a name; the text is copied. E_UNEXPECTED before Create, E_POINTER for a null name,
    // E_OUTOFMEMORY.
    static HRESULT Register(const GUID &guid, const char *name) noexcept;

    // "NAME {guid}"; the GUID alone when unknown, before Create and after Destroy. May throw std::bad_alloc.
    static std::string Name(const GUID &guid);

    // The name alone; empty when unknown. May throw std::bad_alloc.
    static std::string FindName(const GUID &guid);

    // "{00000000-0000-0000-0000-000000000000}", upper case. May throw std::bad_alloc.
    static std::string ToString(const GUID &guid);
};

} // namespace mft_utils
