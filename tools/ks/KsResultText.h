// Results of KS calls for people.
#pragma once

#include <windows.h>

#include <string>

namespace tarn_host
{

// "0x80070057 (E_INVALIDARG)"; the number alone where no name is known.
std::string DescribeResult(HRESULT result);

} // namespace tarn_host
