// Element access with a range check and a fixed exception text, independent of the runtime library's wording.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <utility>

namespace mft_utils
{

// Throws std::out_of_range("invalid vector<T> subscript") when the index is past the end.
template <class Vector>
decltype(auto) At(Vector &&vector, std::size_t index)
{
    if (index >= vector.size())
    {
        throw std::out_of_range("invalid vector<T> subscript");
    }
    return std::forward<Vector>(vector)[index];
}

} // namespace mft_utils
