// The arguments of one IKsControl call, as the caller gave them.
#pragma once

#include "platform/MediaFoundation.h"

namespace mft_core
{

// KSPROPERTY, KSMETHOD and KSEVENT are one structure. Nothing here is checked; borrowed for the length of the call.
struct KsCallArguments
{
    KSIDENTIFIER *request;
    ULONG requestLength;
    void *data;
    ULONG dataLength;
    ULONG *bytesReturned;
};

} // namespace mft_core
