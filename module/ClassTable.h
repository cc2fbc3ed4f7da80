// The transforms that the module offers.
#pragma once

#include <array>

#include "module/DllClassFactory.h"

namespace mft_utils
{

struct ClassObjectInfo
{
    CLSID pClsid;
    ClassCreator creator;
    const wchar_t *pszDescription;
};

// Both: E_POINTER for a null out-pointer, E_OUTOFMEMORY, E_NOINTERFACE. The object is not initialised yet.
HRESULT CreateTarnDepthDeviceMft(REFIID riid, void **ppv) noexcept;
HRESULT CreateTarnColorDeviceMft(REFIID riid, void **ppv) noexcept;

extern const std::array<ClassObjectInfo, 2> coi;

} // namespace mft_utils
