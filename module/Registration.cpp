#include "module/Registration.h"

#include <objbase.h>

#include <array>
#include <cwchar>

#include "trace/Check.h"
#include "base/HResultFromWin32.h"

namespace mft_utils
{

namespace
{
constexpr std::size_t kMaxPath = 260; // characters, the terminator included
using PathBuffer = std::array<wchar_t, kMaxPath>;

// Closes the key with its scope.
class RegistryKey
{
  public:
    RegistryKey() = default;
    ~RegistryKey()
    {
        if (key != nullptr)
        {
            RegCloseKey(key);
        }
    }
    RegistryKey(const RegistryKey &) = delete;
    RegistryKey &operator=(const RegistryKey &) = delete;

    HRESULT Create(HKEY parent, const wchar_t *path)
    {
        return HResultFromWin32(static_cast<DWORD>(RegCreateKeyExW(parent, path, 0, nullptr, REG_OPTION_NON_VOLATILE,
                                                                   KEY_ALL_ACCESS, nullptr, &key, nullptr)));
    }

    // A null name is the key's default value.
    HRESULT SetString(const wchar_t *name, const wchar_t *value)
    {
        const auto bytes = static_cast<DWORD>((std::wcslen(value) + 1) * sizeof(wchar_t));
        return HResultFromWin32(
            static_cast<DWORD>(RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE *>(value), bytes)));
    }

    HKEY Get() const noexcept
    {
        return key;
    }

  private:
    HKEY key = nullptr;
};

HRESULT FormatKeyPath(const CLSID &clsid, PathBuffer &path)
{
    std::array<wchar_t, 40> text{};
    if (StringFromGUID2(clsid, text.data(), static_cast<int>(text.size())) == 0 ||
        std::swprintf(path.data(), path.size(), L"Software\\Classes\\CLSID\\%ls", text.data()) < 0)
    {
        return E_UNEXPECTED;
    }
    return S_OK;
}

HRESULT GetModulePath(HMODULE module, PathBuffer &path)
{
    const DWORD length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    if (length == 0)
    {
        return HResultFromWin32(GetLastError());
    }
    // A path that does not fit is cut: registered, it would name another file or none.
    return length < path.size() ? S_OK : HResultFromWin32(ERROR_INSUFFICIENT_BUFFER);
}

HRESULT WriteKeys(const wchar_t *keyPath, const wchar_t *modulePath, const wchar_t *description,
                  const wchar_t *threadingModel)
{
    RegistryKey classKey;
    CHECK_HR(classKey.Create(HKEY_LOCAL_MACHINE, keyPath));
    CHECK_HR(classKey.SetString(nullptr, description));
    RegistryKey serverKey;
    CHECK_HR(serverKey.Create(classKey.Get(), L"InProcServer32"));
    CHECK_HR(serverKey.SetString(nullptr, modulePath));
    CHECK_HR(serverKey.SetString(L"ThreadingModel", threadingModel));
    return S_OK;
}
} // namespace

HRESULT RegisterObject(HMODULE module, const CLSID &clsid, const wchar_t *description, const wchar_t *threadingModel)
{
    CHECK_POINTER(description);
    CHECK_POINTER(threadingModel);
    PathBuffer keyPath{};
    CHECK_HR(FormatKeyPath(clsid, keyPath));
    PathBuffer modulePath{};
    CHECK_HR(GetModulePath(module, modulePath));
    const HRESULT written = WriteKeys(keyPath.data(), modulePath.data(), description, threadingModel);
    if (FAILED(written))
    {
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, keyPath.data());
    }
    return written;
}

HRESULT UnregisterObject(const CLSID &clsid)
{
    PathBuffer keyPath{};
    CHECK_HR(FormatKeyPath(clsid, keyPath));
    const auto deleted = static_cast<DWORD>(RegDeleteTreeW(HKEY_LOCAL_MACHINE, keyPath.data()));
    CHECK_HR_AS("RegDeleteTreeW(HKEY_LOCAL_MACHINE, keyPath)", HResultFromWin32(deleted));
    return S_OK;
}

} // namespace mft_utils
