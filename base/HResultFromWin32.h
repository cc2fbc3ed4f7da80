// Win32 error codes as result codes.
#pragma once

#include <windows.h>

namespace mft_utils
{

// The rule of HRESULT_FROM_WIN32: 0 and what is a failing HRESULT already stay as they are.
constexpr HRESULT HResultFromWin32(DWORD error) noexcept
{
    const auto value = static_cast<HRESULT>(error);
    return value <= 0
               ? value
               : static_cast<HRESULT>((error & 0xFFFFu) | (static_cast<DWORD>(FACILITY_WIN32) << 16) | 0x80000000u);
}

// The calling thread's last error; E_FAIL where the failed call left none, so that a failure never reads as success.
inline HRESULT HResultFromLastError() noexcept
{
    const DWORD error = GetLastError();
    return error == ERROR_SUCCESS ? E_FAIL : HResultFromWin32(error);
}

} // namespace mft_utils
