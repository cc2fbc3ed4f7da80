// IMarshal for objects that any apartment may call directly.
#pragma once

#include "platform/MediaFoundation.h"

#include <atomic>

namespace user_space_frameworks
{

// A member of the object that it marshals, on which it holds no reference. Made at the first query. Thread-safe.
class FreeThreadedMarshaler
{
  public:
    FreeThreadedMarshaler() = default;
    ~FreeThreadedMarshaler();
    FreeThreadedMarshaler(const FreeThreadedMarshaler &) = delete;
    FreeThreadedMarshaler &operator=(const FreeThreadedMarshaler &) = delete;

    // IMarshal with a reference on `outer`, whose identity is given. Fails as CoCreateFreeThreadedMarshaler does.
    HRESULT Query(IUnknown *outer, void **object) noexcept;

  private:
    std::atomic<IUnknown *> marshaler{nullptr};
};

} // namespace user_space_frameworks
