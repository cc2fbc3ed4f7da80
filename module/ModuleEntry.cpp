// The module's boundary: process attach and detach, and the four exported COM entry points.
#include <windows.h>

#include <objbase.h>

#include <new>

#include "module/ClassTable.h"
#include "module/ModuleHandle.h"
#include "module/ProcessAttach.h"
#include "module/Registration.h"
#include "trace/Guard.h"

using namespace mft_utils;

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID processIsEnding)
{
    if (reason == DLL_PROCESS_ATTACH)
    {
        OnDllProcessAttach(instance);
    }
    else if (reason == DLL_PROCESS_DETACH && processIsEnding == nullptr) // else other threads died where they stood
    {
        OnDllProcessDetach();
    }
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID rclsid, REFIID riid, void **ppv)
{
    return EntryPoint("DllGetClassObject", [&]() -> HRESULT {
        CHECK_POINTER(ppv);
        *ppv = nullptr;
        for (const ClassObjectInfo &entry : coi)
        {
            if (IsEqualGUID(rclsid, entry.pClsid))
            {
                auto *const factory = new (std::nothrow) DllClassFactory(entry.creator);
                if (factory == nullptr)
                {
                    return E_OUTOFMEMORY;
                }
                const HRESULT result = factory->QueryInterface(riid, ppv);
                factory->Release();
                return result;
            }
        }
        return CLASS_E_CLASSNOTAVAILABLE;
    });
}

STDAPI DllCanUnloadNow()
{
    return EntryPoint("DllCanUnloadNow", []() -> HRESULT { return DllClassFactory::CanUnloadDll() ? S_OK : S_FALSE; });
}

STDAPI DllRegisterServer()
{
    return EntryPoint("DllRegisterServer", []() -> HRESULT {
        Registration registration;
        for (std::size_t i = 0; i < coi.size(); ++i)
        {
            CHECK_HR_AS("RegisterObject(DllModuleHandle(), coi[i].pClsid, coi[i].pszDescription, L\"Both\")",
                        registration.RegisterObject(DllModuleHandle(), coi[i].pClsid, coi[i].pszDescription, L"Both"));
        }
        registration.Keep();
        return S_OK;
    });
}

STDAPI DllUnregisterServer()
{
    return EntryPoint("DllUnregisterServer", []() -> HRESULT {
        HRESULT first = S_OK;
        for (std::size_t i = 0; i < coi.size(); ++i)
        {
            const HRESULT unregistered = [i]() -> HRESULT {
                CHECK_HR(UnregisterObject(coi[i].pClsid));
                return S_OK;
            }();
            first = FAILED(first) ? first : unregistered;
        }
        return first;
    });
}
