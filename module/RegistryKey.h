// One key of the registry and what was changed in it.
#pragma once

#include <windows.h>

#include <string>
#include <utility>
#include <vector>

namespace mft_utils
{

// Closes the key with its scope. Confined.
class RegistryKey
{
  public:
    RegistryKey() = default;
    ~RegistryKey()
    {
        Close();
    }
    RegistryKey(RegistryKey &&other) noexcept
        : key(std::exchange(other.key, nullptr)), created(std::exchange(other.created, false)), parent(other.parent),
          path(std::move(other.path)), formerValues(std::move(other.formerValues))
    {
    }
    RegistryKey &operator=(RegistryKey &&) = delete;
    RegistryKey(const RegistryKey &) = delete;
    RegistryKey &operator=(const RegistryKey &) = delete;

    // Opens the key, or creates it. The parent stays open while this one lives.
    HRESULT Create(HKEY parentKey, const wchar_t *keyPath);

    // A null name is the key's default value.
    HRESULT SetString(const wchar_t *name, const wchar_t *value);

    // Deletes the key if it was created here; else gives back the values that were set.
    void Undo() noexcept;

    HKEY Get() const noexcept
    {
        return key;
    }

  private:
    struct Value
    {
        const wchar_t *name = nullptr; // outlives this object
        DWORD type = REG_NONE;
        std::vector<BYTE> data;
        bool existed = false;
    };

    HRESULT Remember(const wchar_t *name);
    void Close() noexcept;

    HKEY key = nullptr;
    bool created = false;
    HKEY parent = nullptr;
    std::wstring path; // of the key, under the parent
    std::vector<Value> formerValues;
};

} // namespace mft_utils
