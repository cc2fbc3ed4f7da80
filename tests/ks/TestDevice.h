// A transform that is nothing but its KS dispatcher.
#pragma once

#include "platform/MediaFoundation.h"

#include <atomic>

#include "ks/KsControlsDispatcher.h"

namespace tarn_test
{

// Owned by a ComPtr (see MakeCom).
class TestDevice : public mft_core::KsControlsDispatcher
{
  public:
    TestDevice() : Object("Test device") {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void **object) override
    {
        const bool known = IsEqualGUID(iid, __uuidof(IUnknown)) || IsEqualGUID(iid, __uuidof(IKsControl));
        *object = known ? static_cast<IKsControl *>(this) : nullptr;
        if (known)
        {
            AddRef();
        }
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override
    {
        return ++references;
    }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = --references;
        if (left == 0)
        {
            delete this;
        }
        return left;
    }

  private:
    std::atomic<ULONG> references{1};
};

} // namespace tarn_test
