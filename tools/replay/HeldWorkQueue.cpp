#include "tools/replay/HeldWorkQueue.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>

#include "base/ComObject.h"
#include "tools/command/ExitCode.h"

namespace tarn_replay
{

struct HeldWorkQueue::Gates
{
    std::mutex lock;
    std::condition_variable changed;
    std::uint64_t put = 0;     // guarded by lock, as the others
    std::uint64_t reached = 0; // the last one that the queue's thread came to
    std::uint64_t opened = 0;  // all up to this one are open
};

class HeldWorkQueue::GateItem : public user_space_frameworks::ComObject<IMFAsyncCallback>
{
  public:
    GateItem(std::shared_ptr<Gates> allGates, std::uint64_t gateNumber) : gates(std::move(allGates)), number(gateNumber)
    {
    }

    HRESULT STDMETHODCALLTYPE GetParameters(DWORD *, DWORD *) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(IMFAsyncResult *) override
    {
        std::unique_lock hold(gates->lock);
        gates->reached = std::max(gates->reached, number);
        gates->changed.notify_all();
        gates->changed.wait(hold, [this] { return gates->opened >= number; });
        return S_OK;
    }

  private:
    const std::shared_ptr<Gates> gates;
    const std::uint64_t number;
};

HeldWorkQueue::HeldWorkQueue(LONG itemPriority) : priority(itemPriority), gates(std::make_shared<Gates>())
{
    tarn_host::ThrowIfFailed(MFAllocateWorkQueue(&id), "MFAllocateWorkQueue"); // its items run one after the other
    PutGate();
}

HeldWorkQueue::~HeldWorkQueue()
{
    OpenAll();
    MFUnlockWorkQueue(id);
}

std::uint64_t HeldWorkQueue::PutGate()
{
    std::uint64_t number = 0;
    {
        const std::scoped_lock hold(gates->lock);
        number = ++gates->put;
    }
    const auto gate = user_space_frameworks::MakeCom<GateItem>(gates, number);
    tarn_host::ThrowIfFailed(MFPutWorkItem2(id, priority, gate.Get(), nullptr), "MFPutWorkItem2");
    return number;
}

bool HeldWorkQueue::RunUpTo(std::uint64_t gate, std::chrono::milliseconds limit)
{
    std::unique_lock hold(gates->lock);
    gates->opened = std::max(gates->opened, gate - 1);
    gates->changed.notify_all();
    return gates->changed.wait_for(hold, limit, [&] { return gates->reached >= gate; });
}

void HeldWorkQueue::RunAll()
{
    const std::uint64_t last = PutGate();
    const std::scoped_lock hold(gates->lock);
    gates->opened = std::max(gates->opened, last - 1);
    gates->changed.notify_all();
}

void HeldWorkQueue::OpenAll()
{
    const std::scoped_lock hold(gates->lock);
    gates->opened = UINT64_MAX;
    gates->changed.notify_all();
}

} // namespace tarn_replay
