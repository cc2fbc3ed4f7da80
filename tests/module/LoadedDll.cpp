#include "tests/module/LoadedDll.h"

#include <array>
#include <filesystem>
#include <stdexcept>

namespace tarn_test
{

namespace
{
template <class Function>
Function Export(HMODULE module, const char *name)
{
    const FARPROC found = GetProcAddress(module, name);
    if (found == nullptr)
    {
        throw std::runtime_error(std::string("no export ") + name);
    }
    return reinterpret_cast<Function>(reinterpret_cast<void *>(found));
}
} // namespace

LoadedDll::LoadedDll()
{
    std::array<wchar_t, 1024> text{};
    if (GetEnvironmentVariableW(L"TARN_MODULE", text.data(), static_cast<DWORD>(text.size())) != 0)
    {
        path = std::filesystem::path(text.data()).make_preferred().wstring();
    }
    else
    {
        GetModuleFileNameW(nullptr, text.data(), static_cast<DWORD>(text.size()));
        path = std::filesystem::path(text.data()).replace_filename(L"tarn_dmft.dll").wstring();
    }
    module = LoadLibraryW(path.c_str());
    if (module == nullptr)
    {
        throw std::runtime_error("cannot load " + std::filesystem::path(path).string());
    }
}

LoadedDll::~LoadedDll()
{
    FreeLibrary(module);
}

const std::wstring &LoadedDll::Path() const
{
    return path;
}

HRESULT LoadedDll::GetClassObject(REFCLSID clsid, REFIID iid, void **object) const
{
    return Export<HRESULT(WINAPI *)(REFCLSID, REFIID, void **)>(module, "DllGetClassObject")(clsid, iid, object);
}

HRESULT LoadedDll::Call(const char *name) const
{
    return Export<HRESULT(WINAPI *)()>(module, name)();
}

HRESULT LoadedDll::CanUnloadNow() const
{
    return Call("DllCanUnloadNow");
}

HRESULT LoadedDll::RegisterServer() const
{
    return Call("DllRegisterServer");
}

HRESULT LoadedDll::UnregisterServer() const
{
    return Call("DllUnregisterServer");
}

} // namespace tarn_test
