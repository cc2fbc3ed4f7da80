// Capture metadata items as the driver frames them ("KSCAMERA_METADATA_ITEMHEADER structure (ksmedia.h)").
#pragma once

#include "platform/MediaFoundation.h"

// A metadata buffer is a sequence of items; Size counts this header too, and each item is aligned to 8 bytes.
struct KSCAMERA_METADATA_ITEMHEADER
{
    ULONG MetadataId;
    ULONG Size;
};
static_assert(sizeof(KSCAMERA_METADATA_ITEMHEADER) == 8);

// Ids from here on belong to the device's maker.
inline constexpr ULONG MetadataId_Custom_Start = 0x80000000;
