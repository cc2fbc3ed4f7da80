// Names for logs, by key.
#pragma once

#include <windows.h>

#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <string>

#include "base/SharedLock.h"

namespace mft_utils
{

// For static storage: empty before Create and after Destroy, and never destroyed by itself, for it must outlive static
// destruction. Thread-safe.
template <class Key, class Less = std::less<Key>>
class NameTable
{
  public:
    using Map = std::map<Key, std::string, Less>;

    // `fill` adds the first names. S_FALSE when the table is there already, E_OUTOFMEMORY.
    template <class Fill>
    HRESULT Create(const Fill &fill) noexcept
    {
        try
        {
            const std::scoped_lock guard(lock);
            if (table != nullptr)
            {
                return S_FALSE;
            }
            auto made = std::make_unique<Map>();
            fill(*made);
            table = made.release();
            return S_OK;
        }
        catch (const std::bad_alloc &)
        {
            return E_OUTOFMEMORY;
        }
    }

    void Destroy() noexcept
    {
        const std::scoped_lock guard(lock);
        delete table;
        table = nullptr;
    }

    // E_POINTER for a null name, E_UNEXPECTED before Create, E_OUTOFMEMORY.
    HRESULT Register(const Key &key, const char *name) noexcept
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
            table->insert_or_assign(key, name);
            return S_OK;
        }
        catch (const std::bad_alloc &)
        {
            return E_OUTOFMEMORY;
        }
    }

    // Empty for what has no name. May throw std::bad_alloc.
    std::string Find(const Key &key) const
    {
        const user_space_frameworks::SharedGuard guard(lock);
        if (table == nullptr)
        {
            return {};
        }
        const auto found = table->find(key);
        return found == table->end() ? std::string() : found->second;
    }

  private:
    mutable user_space_frameworks::SharedLock lock;
    Map *table TARN_GUARDED_BY(lock) TARN_POINTEE_GUARDED_BY(lock) = nullptr;
};

} // namespace mft_utils
