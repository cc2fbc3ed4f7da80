#include "trace/GuidTranslator.h"

#include <array>
#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <new>

#include "base/GuidLess.h"
#include "trace/PlatformGuidNames.h"
#include "base/SharedLock.h"

namespace mft_utils
{

namespace
{

using Table = std::map<GUID, std::string, GuidLess>;

constinit user_space_frameworks::SharedLock lock;
// A plain pointer, for it must outlive static destruction.
constinit Table *table TARN_GUARDED_BY(lock) TARN_POINTEE_GUARDED_BY(lock) = nullptr;

} // namespace

HRESULT GuidTranslator::Create() noexcept
{
    try
    {
        const std::scoped_lock guard(lock);
        if (table != nullptr)
        {
            return S_FALSE;
        }
        auto made = std::make_unique<Table>();
        for (const NamedGuid &entry : PlatformGuidNames())
        {
            made->emplace(*entry.guid, entry.name);
        }
        table = made.release();
        return S_OK;
    }
    catch (const std::bad_alloc &)
    {
        return E_OUTOFMEMORY;
    }
}

void GuidTranslator::Destroy() noexcept
{
    const std::scoped_lock guard(lock);
    delete table;
    table = nullptr;
}

HRESULT GuidTranslator::Register(const GUID &guid, const char *name) noexcept
{
    if (name == nullptr)
    {
        return E_POINTER;
    }
    try
    {
        const std::scoped_lock guard(lock);
        if (table == nullptr)
        {
            return E_UNEXPECTED;
        }
        table->insert_or_assign(guid, name);
        return S_OK;
    }
    catch (const std::bad_alloc &)
    {
        return E_OUTOFMEMORY;
    }
}

std::string GuidTranslator::Name(const GUID &guid)
{
    const std::string name = FindName(guid);
    return name.empty() ? ToString(guid) : name + " " + ToString(guid);
}

std::string GuidTranslator::FindName(const GUID &guid)
{
    const user_space_frameworks::SharedGuard guard(lock);
    if (table == nullptr)
    {
        return {};
    }
    const auto found = table->find(guid);
    return found == table->end() ? std::string() : found->second;
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
