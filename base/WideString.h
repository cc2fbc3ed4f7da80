// UTF-8 from and to the platform's wide strings.
#pragma once

#include <string>
#include <string_view>

namespace mft_utils
{

// What is not valid in the one encoding becomes replacement characters in the other. May throw std::bad_alloc.
std::wstring Widen(std::string_view utf8);
std::string Narrow(std::wstring_view utf16);

} // namespace mft_utils
