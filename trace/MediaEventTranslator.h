// Names of media events for logs.
#pragma once

#include "platform/MediaFoundation.h"

namespace mft_utils
{

// Holds no state. Thread-safe.
class MediaEventTranslator
{
  public:
    // The SDK's name, "Unknown event" for any other value.
    static const char *Name(MediaEventType type) noexcept;
};

} // namespace mft_utils
