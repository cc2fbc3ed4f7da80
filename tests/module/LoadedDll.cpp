#include "tests/module/LoadedDll.h"

#include <array>
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
    std::array<wchar_t, 1024> own{};
    GetModuleFileNameW(nullptr, own.data(), static_cast<DWORD>(own.size()));
    path = own.data();
    path = path.substr(0, path.find_last_of(L'\\') + 1) + L"tarn_dmft.dll";
    module = LoadLibraryW(path.c_str());
    if (module == nullptr)
    {
        throw std::runtime_error("tarn_dmft.dll is not beside the test program");
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
