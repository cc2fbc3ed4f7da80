// The platform's GUIDs that appear in this module's logs, with their names.
#pragma once

#include <windows.h>

#include <span>

namespace mft_utils
{

struct NamedGuid
{
    const GUID *guid;
    const char *name;
};

// Media types, video formats, attribute keys, kernel-streaming sets and categories. Thread-safe.
std::span<const NamedGuid> PlatformGuidNames() noexcept;

} // namespace mft_utils
