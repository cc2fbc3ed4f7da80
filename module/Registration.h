// COM registration of one class in the registry.
#pragma once

#include <windows.h>

namespace mft_utils
{

// Writes "Software\Classes\CLSID\{...}" with its "InProcServer32" under HKEY_LOCAL_MACHINE. A module path that does not
// fit into 260 characters is refused; whatever fails, no half-written key is left.
HRESULT RegisterObject(HMODULE module, const CLSID &clsid, const wchar_t *description, const wchar_t *threadingModel);

// Deletes the class's key with all below it. Fails when there is none.
HRESULT UnregisterObject(const CLSID &clsid);

} // namespace mft_utils
