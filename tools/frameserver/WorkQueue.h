// A multithreaded Media Foundation work queue, as the frame server gives one to each device transform.
#pragma once

#include "platform/MediaFoundation.h"

namespace tarn_host
{

// Owns one lock on the queue. Immutable after Init.
class WorkQueue
{
  public:
    // Throws HostError.
    WorkQueue();
    ~WorkQueue();
    WorkQueue(const WorkQueue &) = delete;
    WorkQueue &operator=(const WorkQueue &) = delete;

    DWORD Id() const noexcept
    {
        return id;
    }

  private:
    DWORD id = 0;
};

} // namespace tarn_host
