// A work queue that runs what is put on it only when it is told to.
#pragma once

#include "platform/MediaFoundation.h"

#include <chrono>
#include <cstdint>
#include <memory>

namespace tarn_replay
{

// Stands in for the pipeline's work queue, so that the recording decides when a frame is processed, and not the
// machine: gates lie between the items and hold the queue's one thread. Thread-safe.
class HeldWorkQueue
{
  public:
    // Items have to have this priority. Throws HostError.
    explicit HeldWorkQueue(LONG itemPriority);
    // Lets everything run.
    ~HeldWorkQueue();
    HeldWorkQueue(const HeldWorkQueue &) = delete;
    HeldWorkQueue &operator=(const HeldWorkQueue &) = delete;

    DWORD Id() const noexcept
    {
        return id;
    }

    // Puts a gate behind what is on the queue and returns its number: 1, 2, ...
    std::uint64_t PutGate();
    // Opens the gates before this one; true when what lies between has ended, false when the time is over.
    bool RunUpTo(std::uint64_t gate, std::chrono::milliseconds limit);
    // Lets run what is on the queue now.
    void RunAll();
    // Holds nothing any more.
    void OpenAll();

  private:
    struct Gates;
    class GateItem;

    const LONG priority;
    const std::shared_ptr<Gates> gates;
    DWORD id = 0;
};

} // namespace tarn_replay
