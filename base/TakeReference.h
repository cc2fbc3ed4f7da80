// Hands a reference that somebody gave away to a smart pointer.
#pragma once

#include <wrl/client.h>

namespace user_space_frameworks
{

// The pointer owns the reference that `owned` carries and lets go of what it held.
// mingw-w64 10's ComPtr::Attach adds a reference of its own, so that the object would never end.
template <class T>
void TakeReference(Microsoft::WRL::ComPtr<T> &pointer, T *owned) noexcept
{
    *pointer.ReleaseAndGetAddressOf() = owned;
}

} // namespace user_space_frameworks
