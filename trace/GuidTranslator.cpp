#include "trace/GuidTranslator.h"

#include <array>
#include <cstdio>

#include "base/GuidLess.h"
#include "trace/NameTable.h"
#include "trace/PlatformGuidNames.h"

namespace mft_utils
{

namespace
{

constinit NameTable<GUID, GuidLess> table;

} // namespace

HRESULT GuidTranslator::Create() noexcept
{
    return table.Create([](auto &names) {
        for (const NamedGuid &entry : PlatformGuidNames())
        {
            names.emplace(*entry.guid, entry.name);
        }
    });
}

void GuidTranslator::Destroy() noexcept
{
    table.Destroy();
}

HRESULT GuidTranslator::Register(const GUID &guid, const char *name) noexcept
{
    return table.Register(guid, name);
}

std::string GuidTranslator::Name(const GUID &guid)
{
    const std::string name = FindName(guid);
    return name.empty() ? ToString(guid) : name + " " + ToString(guid);
}

std::string GuidTranslator::FindName(const GUID &guid)
{
    return table.Find(guid);
}

std::string GuidTranslator::ToString(const GUID &guid)
{
    std::array<char, 39> text{};
    std::snprintf(text.data(), text.size(), "{%08lX-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                  static_cast<unsigned long>(guid.Data1), guid.Data2, guid.Data3, guid.Data4[0], guid.Data4[1],
                  guid.Data4[2], guid.Data4[3], guid.Data4[4], guid.Data4[5], guid.Data4[6], guid.Data4[7]);
    return text.data();
}

} // namespace mft_utils
