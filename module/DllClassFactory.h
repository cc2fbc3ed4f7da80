// Class factory of the module's transforms, and the count that keeps the module loaded.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include <atomic>

namespace mft_utils
{

// Creates an object and queries it for the interface. E_POINTER for a null out-pointer, E_OUTOFMEMORY.
using ClassCreator = HRESULT (*)(REFIID riid, void **ppv);

// Live factories, server locks and callbacks that the platform has still to make hold the module; live transforms do
// not. Thread-safe.
class DllClassFactory final : public IClassFactory
{
  public:
    explicit DllClassFactory(ClassCreator classCreator) noexcept;
    DllClassFactory(const DllClassFactory &) = delete;
    DllClassFactory &operator=(const DllClassFactory &) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void **ppv) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    // CLASS_E_NOAGGREGATION with an outer object.
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown *outer, REFIID riid, void **ppv) override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL fLock) override;

    // May wait for a callback that is just leaving, 150 ms at most.
    static bool CanUnloadDll() noexcept;

  private:
    ~DllClassFactory();

    std::atomic<LONG> references{1};
    const ClassCreator creator;
};

} // namespace mft_utils
