#include "module/Registration.h"

#include <objbase.h>

#include <array>
#include <cwchar>
#include <utility>

#include "trace/Check.h"
#include "base/HResultFromWin32.h"

namespace mft_utils
{

namespace
{
constexpr std::size_t kMaxPath = 260; // characters, the terminator included
using PathBuffer = std::array<wchar_t, kMaxPath>;

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
} // namespace

Registration::~Registration()
{
    while (!kept && !keys.empty())
    {
        keys.back().Undo();
        keys.pop_back();
    }
}

HRESULT Registration::RegisterObject(HMODULE module, const CLSID &clsid, const wchar_t *description,
                                     const wchar_t *threadingModel)
{
    CHECK_POINTER(description);
    CHECK_POINTER(threadingModel);
    PathBuffer keyPath{};
    CHECK_HR(FormatKeyPath(clsid, keyPath));
    PathBuffer modulePath{};
    CHECK_HR(GetModulePath(module, modulePath));
    CHECK_HR(WriteKeys(keyPath.data(), modulePath.data(), description, threadingModel));
    return S_OK;
}

HRESULT Registration::WriteKeys(const wchar_t *keyPath, const wchar_t *modulePath, const wchar_t *description,
                                const wchar_t *threadingModel)
{
    keys.reserve(keys.size() + 2); // the second names the first as its parent
    RegistryKey &classKey = keys.emplace_back();
    CHECK_HR(classKey.Create(HKEY_LOCAL_MACHINE, keyPath));
    CHECK_HR(classKey.SetString(nullptr, description));
    RegistryKey &serverKey = keys.emplace_back();
    CHECK_HR(serverKey.Create(classKey.Get(), L"InProcServer32"));
    CHECK_HR(serverKey.SetString(nullptr, modulePath));
    CHECK_HR(serverKey.SetString(L"ThreadingModel", threadingModel));
    return S_OK;
}

void Registration::Keep() noexcept
{
    kept = true;
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
