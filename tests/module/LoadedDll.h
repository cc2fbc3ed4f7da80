// The built DLL, loaded for the length of a test, and its exports.
#pragma once

#include "platform/MediaFoundation.h"

#include <filesystem>
#include <stdexcept>
#include <string>

namespace tarn_test
{

inline constexpr CLSID kDepthClass = {0x7F9DF308, 0x0F2D, 0x432E, {0x8C, 0x8E, 0xD3, 0x6E, 0xD8, 0xF1, 0x2C, 0x90}};
inline constexpr CLSID kColorClass = {0x01BC2102, 0x6449, 0x429F, {0x8F, 0x62, 0xB8, 0xD2, 0x3D, 0x1D, 0xE6, 0xD3}};

class LoadedDll
{
  public:
    // The file that TARN_MODULE names, or the one beside the test program. Throws std::runtime_error when it cannot be
    // loaded.
    LoadedDll()
    {
        wchar_t text[1024] = {};
        const bool isNamed = GetEnvironmentVariableW(L"TARN_MODULE", text, 1024) != 0;
        if (!isNamed)
        {
            GetModuleFileNameW(nullptr, text, 1024);
        }
        std::filesystem::path file(text);
        path = (isNamed ? file.make_preferred() : file.replace_filename(L"tarn_dmft.dll")).wstring();
        module = LoadLibraryW(path.c_str());
        if (module == nullptr)
        {
            throw std::runtime_error("cannot load " + file.string());
        }
    }
    ~LoadedDll() { FreeLibrary(module); }
    LoadedDll(const LoadedDll &) = delete;
    LoadedDll &operator=(const LoadedDll &) = delete;

    const std::wstring &Path() const { return path; }
    HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void **object) const
    {
        return Export<HRESULT(WINAPI *)(REFCLSID, REFIID, void **)>("DllGetClassObject")(clsid, iid, object);
    }
    HRESULT CanUnloadNow() const { return Export<HRESULT(WINAPI *)()>("DllCanUnloadNow")(); }
    HRESULT RegisterServer() const { return Export<HRESULT(WINAPI *)()>("DllRegisterServer")(); }
    HRESULT UnregisterServer() const { return Export<HRESULT(WINAPI *)()>("DllUnregisterServer")(); }

  private:
    template <class Function>
    Function Export(const char *name) const
    {
        const FARPROC found = GetProcAddress(module, name);
        return found != nullptr ? reinterpret_cast<Function>(reinterpret_cast<void *>(found))
                                : throw std::runtime_error(std::string("no export ") + name);
    }

    std::wstring path;
    HMODULE module = nullptr;
};

} // namespace tarn_test
