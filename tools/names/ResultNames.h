// Names of result codes, from the toolchain's headers.
#pragma once

#include <cstdint>
#include <string>

namespace tarn_host
{

// "MF_E_SHUTDOWN (0xC00D3E85)"; a wrapped Win32 error as "HRESULT_FROM_WIN32(ERROR_SET_NOT_FOUND) (0x80070492)"; the
// number alone where no name is known. A bare Win32 error, and the status of a crash, are named too.
std::string ResultText(std::uint32_t result);

} // namespace tarn_host
