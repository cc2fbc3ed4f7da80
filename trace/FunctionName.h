// The qualified name inside the compiler's spelling of a function.
#pragma once

#include <string_view>

namespace mft_utils
{

// "virtual HRESULT ns::Class::Method(int)::<lambda()>" becomes "ns::Class::Method"; a part of the given text.
// A null pointer gives an empty name. Thread-safe.
std::string_view QualifiedFunctionName(const char *prettyFunction) noexcept;

} // namespace mft_utils
