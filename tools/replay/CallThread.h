// A thread that makes one call at a time for somebody who wants to go on, or to give up waiting.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace tarn_replay
{

// Confined. A call that never returns keeps the thread; it is left behind then.
class CallThread
{
  public:
    CallThread();
    ~CallThread();
    CallThread(const CallThread &) = delete;
    CallThread &operator=(const CallThread &) = delete;

    // The one before has to have ended.
    void Start(std::function<void()> call);
    // False when it still runs.
    bool Wait(std::chrono::milliseconds limit);

  private:
    struct Shared
    {
        std::mutex lock;
        std::condition_variable changed;
        std::function<void()> call; // guarded by lock, as the others; empty when none runs
        bool ending = false;
    };
    static void Run(Shared &shared);

    const std::shared_ptr<Shared> shared;
    std::thread thread;
};

} // namespace tarn_replay
