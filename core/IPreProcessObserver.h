// Is told of every sample before a node processes it.
#pragma once

#include "platform/MediaFoundation.h"

namespace mft_core
{

class IPreProcessObserver
{
  public:
    virtual ~IPreProcessObserver() = default;

    // Runs on the thread that delivers the sample; must not block or change the sample.
    virtual void OnSample(IMFSample *sample) = 0;
};

} // namespace mft_core
