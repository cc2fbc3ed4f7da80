// UTF-8 to the platform's wide strings.
#pragma once

#include <string>

namespace mft_utils
{

// Bytes that are no UTF-8 become replacement characters. May throw std::bad_alloc.
std::wstring Widen(const std::string &utf8);

} // namespace mft_utils
