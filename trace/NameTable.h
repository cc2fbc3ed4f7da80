// Names by key for logs, made at process attach and gone at its end.
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

// Needs no construction or destruction at run time: traces may come before the first and after the last static object.
// Thread-safe.
template <class Key, class Less = std::less<Key>>
class NameTable
{
  public:
    using Names = std::map<Key, std::string, Less>;

    constexpr NameTable() noexcept = default;
    NameTable(const NameTable &) = delete;
    NameTable &operator=(const NameTable &) = delete;

    // `fill` is given the empty names. S_FALSE when the table exists already. E_OUTOFMEMORY.
    template <class Fill>
    HRESULT Create(Fill &&fill) noexcept
    {
        return WithoutBadAlloc([&]() -> HRESULT {
            const std::scoped_lock guard(lock);
            if (names != nullptr)
            {
                return S_FALSE;
            }
            auto made = std::make_unique<Names>();
            fill(*made);
            names = made.release();
            return S_OK;
        });
    }

    void Destroy() noexcept
    {
        const std::scoped_lock guard(lock);
        delete names;
        names = nullptr;
    }

    // E_UNEXPECTED before Create. E_OUTOFMEMORY.
    HRESULT Set(const Key &key, const char *name) noexcept
    {
        return WithoutBadAlloc([&]() -> HRESULT {
            const std::scoped_lock guard(lock);
            if (names == nullptr)
            {
                return E_UNEXPECTED;
            }
            names->insert_or_assign(key, name);
            return S_OK;
        });
    }

    // Empty for a key without a name. May throw std::bad_alloc.
    std::string Find(const Key &key) const
    {
        const user_space_frameworks::SharedGuard guard(lock);
        if (names == nullptr)
        {
            return {};
        }
        const auto found = names->find(key);
        return found == names->end() ? std::string() : found->second;
    }

  private:
    template <class Body>
    static HRESULT WithoutBadAlloc(Body &&body) noexcept
    {
        try
        {
            return body();
        }
        catch (const std::bad_alloc &)
        {
            return E_OUTOFMEMORY;
        }
    }

    mutable user_space_frameworks::SharedLock lock;
    Names *names TARN_GUARDED_BY(lock) TARN_POINTEE_GUARDED_BY(lock) = nullptr;
};

} // namespace mft_utils
