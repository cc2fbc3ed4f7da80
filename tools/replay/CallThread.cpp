#include "tools/replay/CallThread.h"

#include <utility>

namespace tarn_replay
{

CallThread::CallThread() : shared(std::make_shared<Shared>()), thread([state = shared] { Run(*state); }) {}

CallThread::~CallThread()
{
    bool isIdle = false;
    {
        const std::scoped_lock hold(shared->lock);
        shared->ending = true;
        isIdle = !shared->call;
        shared->changed.notify_all();
    }
    isIdle ? thread.join() : thread.detach();
}

void CallThread::Start(std::function<void()> call)
{
    const std::scoped_lock hold(shared->lock);
    shared->call = std::move(call);
    shared->changed.notify_all();
}

bool CallThread::Wait(std::chrono::milliseconds limit)
{
    std::unique_lock hold(shared->lock);
    return shared->changed.wait_for(hold, limit, [this] { return !shared->call; });
}

void CallThread::Run(Shared &shared)
{
    std::unique_lock hold(shared.lock);
    for (;;)
    {
        shared.changed.wait(hold, [&] { return shared.call || shared.ending; });
        if (!shared.call)
        {
            return;
        }
        const std::function<void()> call = shared.call;
        hold.unlock();
        call();
        hold.lock();
        shared.call = nullptr;
        shared.changed.notify_all();
    }
}

} // namespace tarn_replay
