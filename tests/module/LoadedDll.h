// The built DLL, loaded for the length of a test, and its exports.
#pragma once

#include "platform/MediaFoundation.h"

#include <string>

namespace tarn_test
{

class LoadedDll
{
  public:
    // Throws std::runtime_error when the DLL beside the test program, or one of its exports, is missing.
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
