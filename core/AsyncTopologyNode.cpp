#include "core/AsyncTopologyNode.h"

#include <mutex>
#include <optional>
#include <utility>

#include "trace/Guard.h"
#include "trace/TraceLogging.h"

using mft_utils::TraceField;
using mft_utils::TraceLevel;
using mft_utils::TraceLoggingActivity;

namespace mft_core
{

AsyncTopologyNode::AsyncTopologyNode(std::shared_ptr<ITopologyNode> successor, const std::string &ownerName,
                                     const WorkQueueParameters &workQueue, DWORD timeoutMs)
    : ITopologyNode(std::move(successor), ownerName + " Work queue topology node"), wqParams(workQueue),
      flushTimeoutMs(timeoutMs)
{
}

HRESULT AsyncTopologyNode::ProcessSample(IMFSample *sample)
{
    CHECK_POINTER(sample);
    // Names are part of the interface.
    TraceLoggingActivity activity("Tracelogging Activity Wrapper",
                                  {TraceField::String("ActivityTopoNodeId", GetName())});

    // The item is put under the lock, so that the order of the list is the order of the items and a flush sees both
    // or neither. The call only hands the item over: it runs no callback and waits for none.
    const std::scoped_lock guard(lock);
    if (stopping || flushing > 0)
    {
        activity.Write(TraceLevel::Information, "mft_core::AsyncTopologyNode::ProcessSample- Stopping or Flushing");
        return S_OK;
    }
    if (!wqParams.isSet)
    {
        activity.Write(TraceLevel::Error, "mft_core::AsyncTopologyNode::ProcessSample- Workqueue params not set");
        return S_OK;
    }
    pending.emplace_back(sample);
    const HRESULT result = MFPutWorkItem2(wqParams.workQueueId, wqParams.workItemBasePriority, this, sample);
    if (FAILED(result))
    {
        pending.pop_back();
        // Spelling is part of the interface.
        activity.Write(TraceLevel::Error, "mft_core::AsyncTopologyNode::ProcessSample- faild to queue workitem",
                       {TraceField::Hex32("hr", result)});
        return S_OK;
    }
    ++queuedItems;
    return S_OK;
}

HRESULT AsyncTopologyNode::GetParameters(DWORD *flags, DWORD *queue)
{
    CHECK_POINTER(flags);
    CHECK_POINTER(queue);
    if (!wqParams.isSet)
    {
        return E_NOTIMPL; // the platform's default
    }
    *flags = 0;
    *queue = wqParams.workQueueId;
    return S_OK;
}

HRESULT AsyncTopologyNode::Invoke(IMFAsyncResult *pAsyncResult)
{
    const TraceLoggingActivity activity("mft_core::AsyncTopologyNode::Invoke");
    const HRESULT result = mft_utils::Guarded([&]() -> HRESULT {
        CHECK_POINTER(pAsyncResult);
        ComPtr<IUnknown> unk;
        CHECK_HR(pAsyncResult->GetState(unk.GetAddressOf()));
        return S_OK;
    });
    HandOnOneMore(); // in any case: the samples behind wait for it
    ItemDone();
    return result;
}

void AsyncTopologyNode::HandOnOneMore() noexcept
{
    user_space_frameworks::UniqueLock guard(lock);
    if (ready < pending.size()) // a flush may have dropped it
    {
        ++ready;
    }
    if (handingOn)
    {
        return; // the thread that hands on takes this sample too
    }
    handingOn = true;
    while (ready > 0)
    {
        ComPtr<IMFSample> sample = std::move(pending.front());
        pending.pop_front();
        --ready;
        guard.unlock();
        for (const auto &node : NextNodes())
        {
            if (!stopping)
            {
                node->Process(sample.Get());
            }
        }
        sample.Reset(); // may be the last reference: not under the lock
        guard.lock();
    }
    handingOn = false;
    idle.NotifyAll();
}

void AsyncTopologyNode::ItemDone()
{
    const std::scoped_lock guard(lock);
    if (queuedItems > 0)
    {
        --queuedItems;
    }
    idle.NotifyAll();
}

HRESULT AsyncTopologyNode::Flush()
{
    std::list<ComPtr<IMFSample>> dropped; // released outside the lock
    user_space_frameworks::UniqueLock guard(lock);
    ++flushing;
    dropped.swap(pending);
    ready = 0;
    const bool ran = idle.WaitFor(lock, flushTimeoutMs, [&] {
        lock.AssertHeld();
        return queuedItems == 0 && !handingOn;
    });
    --flushing;
    const std::uint32_t left = queuedItems;
    guard.unlock();
    if (!ran)
    {
        TRACE_ERROR("%s: flush gave up after %lu ms with %u items queued", GetName(), flushTimeoutMs, left);
    }
    return S_OK;
}

void AsyncTopologyNode::Stop() noexcept
{
    stopping = true;
}

HRESULT AsyncTopologyNode::QueryInterface(REFIID iid, void **object)
{
    CHECK_POINTER(object);
    *object = nullptr;
    if (!IsEqualGUID(iid, __uuidof(IUnknown)) && !IsEqualGUID(iid, __uuidof(IMFAsyncCallback)))
    {
        return E_NOINTERFACE;
    }
    *object = static_cast<IMFAsyncCallback *>(this);
    AddRef();
    return S_OK;
}

ULONG AsyncTopologyNode::AddRef()
{
    const std::scoped_lock guard(referenceLock);
    if (references == 0)
    {
        self = shared_from_this();
        inFlight.Begin();
    }
    return ++references;
}

ULONG AsyncTopologyNode::Release()
{
    // Both outlive the lock, in this order: the share may be what keeps the node and the chain alive, and the module
    // stays until they are gone.
    std::optional<mft_utils::CallbackInFlight> ended;
    std::shared_ptr<AsyncTopologyNode> last;
    const std::scoped_lock guard(referenceLock);
    if (--references == 0)
    {
        last = std::move(self);
        ended.emplace(std::move(inFlight));
    }
    return references;
}

} // namespace mft_core
