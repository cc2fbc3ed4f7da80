// The built DLL, loaded for the length of a test, and its exports.
#pragma once

#include "platform/MediaFoundation.h"

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
    LoadedDll();
    ~LoadedDll();
    LoadedDll(const LoadedDll &) = delete;
    LoadedDll &operator=(const LoadedDll &) = delete;

    const std::wstring &Path() const;
    HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void **object) const;
    HRESULT CanUnloadNow() const;
    HRESULT RegisterServer() const;
    HRESULT UnregisterServer() const;

  private:
    HRESULT Call(const char *name) const;

    std::wstring path;
    HMODULE module = nullptr;
};

} // namespace tarn_test
