// Descriptions of media types and attribute stores for logs.
#pragma once

#include <string>

#include "platform/MediaFoundation.h"

namespace mft_utils
{

// The table of attributes that are shown as size or ratio; without it values are spelled plainly. Thread-safe.
class MediaTypeTranslator
{
  public:
    // S_FALSE when the table exists already. E_OUTOFMEMORY.
    static HRESULT Create() noexcept;
    static void Destroy() noexcept;

    // "MFVideoFormat_D16 {guid} 640x480 @ 30/1 fps"; parts that the type lacks are left out, "null" for no type.
    // May throw std::bad_alloc.
    static std::string Describe(IMFMediaType *mediaType);

    // Every attribute as "name = value", one per line. May throw std::bad_alloc.
    static std::string DescribeAll(IMFAttributes *attributes);
};

} // namespace mft_utils
