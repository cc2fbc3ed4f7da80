// What the pipeline gives a transform to begin with, as a recording holds it.
#pragma once

#include "platform/MediaFoundation.h"

#include "recorder/RecordBuilder.h"

namespace mft_der
{

// Borrows the store for its own life; null is allowed. Confined.
class FilterAttributesDerObject
{
  public:
    explicit FilterAttributesDerObject(IMFAttributes *filterAttributes) noexcept : attributes(filterAttributes) {}

    // May throw std::bad_alloc.
    void AddTo(RecordBuilder &values) const;

  private:
    IMFAttributes *const attributes;
};

} // namespace mft_der
