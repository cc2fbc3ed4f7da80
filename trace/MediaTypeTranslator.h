// Descriptions of media types for logs.
#pragma once

#include "platform/MediaFoundation.h"

#include <string>

namespace mft_utils
{

// Until it is created subtypes are spelled as plain GUIDs. Thread-safe.
class MediaTypeTranslator
{
  public:
    // S_FALSE when it is created already.
    static HRESULT Create() noexcept;
    static void Destroy() noexcept;

    // "MFVideoFormat_D16 {guid} 640x480 @ 30/1 fps"; parts that the type lacks are left out, "null" for no type.
    // May throw std::bad_alloc.
    static std::string Describe(IMFMediaType *mediaType);
};

} // namespace mft_utils
