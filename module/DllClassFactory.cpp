#include "module/DllClassFactory.h"

#include "base/CallbackInFlight.h"
#include "trace/Guard.h"

namespace mft_utils
{

namespace
{
std::atomic<LONG> moduleLockCount{0};
} // namespace

DllClassFactory::DllClassFactory(ClassCreator classCreator) noexcept : creator(classCreator)
{
    ++moduleLockCount;
}

DllClassFactory::~DllClassFactory()
{
    --moduleLockCount;
}

bool DllClassFactory::CanUnloadDll() noexcept
{
    return moduleLockCount == 0 && CallbacksHaveReturned();
}

HRESULT DllClassFactory::QueryInterface(REFIID riid, void **ppv)
{
    if (ppv == nullptr)
    {
        return E_POINTER;
    }
    *ppv = nullptr;
    if (!IsEqualGUID(riid, __uuidof(IUnknown)) && !IsEqualGUID(riid, __uuidof(IClassFactory)))
    {
        return E_NOINTERFACE;
    }
    *ppv = static_cast<IClassFactory *>(this);
    AddRef();
    return S_OK;
}

ULONG DllClassFactory::AddRef()
{
    return static_cast<ULONG>(++references);
}

ULONG DllClassFactory::Release()
{
    const LONG left = --references;
    if (left == 0)
    {
        delete this;
    }
    else if (left < 0)
    {
        TRACE_ERROR("class factory released too often: %ld", left);
    }
    return static_cast<ULONG>(left);
}

HRESULT DllClassFactory::CreateInstance(IUnknown *outer, REFIID riid, void **ppv)
{
    return EntryPoint("DllClassFactory", [&]() -> HRESULT {
        CHECK_POINTER(ppv);
        *ppv = nullptr;
        if (outer != nullptr)
        {
            return CLASS_E_NOAGGREGATION;
        }
        CHECK_HR(creator(riid, ppv));
        return S_OK;
    });
}

HRESULT DllClassFactory::LockServer(BOOL fLock)
{
    if (fLock != FALSE)
    {
        ++moduleLockCount;
    }
    else
    {
        --moduleLockCount;
    }
    return S_OK;
}

} // namespace mft_utils
