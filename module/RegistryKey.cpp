#include "module/RegistryKey.h"

#include <cwchar>

#include "trace/Check.h"
#include "base/HResultFromWin32.h"

namespace mft_utils
{

namespace
{
HRESULT FromStatus(LSTATUS status)
{
    return HResultFromWin32(static_cast<DWORD>(status));
}
} // namespace

HRESULT RegistryKey::Create(HKEY parentKey, const wchar_t *keyPath)
{
    path = keyPath;
    parent = parentKey;
    DWORD disposition = REG_OPENED_EXISTING_KEY;
    CHECK_HR_AS("RegCreateKeyExW(parent, path)",
                FromStatus(RegCreateKeyExW(parentKey, keyPath, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
                                           nullptr, &key, &disposition)));
    created = disposition == REG_CREATED_NEW_KEY;
    return S_OK;
}

HRESULT RegistryKey::SetString(const wchar_t *name, const wchar_t *value)
{
    CHECK_HR(Remember(name));
    const auto bytes = static_cast<DWORD>((std::wcslen(value) + 1) * sizeof(wchar_t));
    CHECK_HR_AS("RegSetValueExW(key, name, value)",
                FromStatus(RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE *>(value), bytes)));
    return S_OK;
}

HRESULT RegistryKey::Remember(const wchar_t *name)
{
    Value former;
    former.name = name;
    DWORD size = 0;
    LSTATUS status = RegQueryValueExW(key, name, nullptr, &former.type, nullptr, &size);
    while (status == ERROR_SUCCESS || status == ERROR_MORE_DATA) // it may grow between the two questions
    {
        former.data.resize(size + 1); // never empty: a null buffer would only be asked for its size
        size = static_cast<DWORD>(former.data.size());
        status = RegQueryValueExW(key, name, nullptr, &former.type, former.data.data(), &size);
        if (status == ERROR_SUCCESS)
        {
            former.data.resize(size);
            former.existed = true;
            break;
        }
    }
    if (status != ERROR_FILE_NOT_FOUND)
    {
        CHECK_HR_AS("RegQueryValueExW(key, name)", FromStatus(status));
    }
    formerValues.push_back(std::move(former));
    return S_OK;
}

void RegistryKey::Undo() noexcept
{
    if (key == nullptr)
    {
        return;
    }
    if (created)
    {
        Close();
        RegDeleteKeyW(parent, path.c_str()); // empty of keys: those below were undone before
        return;
    }
    for (auto value = formerValues.rbegin(); value != formerValues.rend(); ++value)
    {
        if (value->existed)
        {
            RegSetValueExW(key, value->name, 0, value->type, value->data.data(),
                           static_cast<DWORD>(value->data.size()));
        }
        else
        {
            RegDeleteValueW(key, value->name);
        }
    }
}

void RegistryKey::Close() noexcept
{
    if (key != nullptr)
    {
        RegCloseKey(std::exchange(key, nullptr));
    }
}

} // namespace mft_utils
