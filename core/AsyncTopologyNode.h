// Moves the rest of the chain onto the work queue that the pipeline assigned.
#pragma once

#include "platform/MediaFoundation.h"

#include <atomic>
#include <cstdint>
#include <list>
#include <memory>
#include <string>

#include "core/ITopologyNode.h"
#include "core/WorkQueueParameters.h"
#include "base/CallbackInFlight.h"
#include "base/CriticalSection.h"

namespace mft_core
{

// Queues each sample as a work item; the items' callbacks continue the chain. The queue may run items in parallel and
// out of order, so samples are handed on by one thread at a time, in the order in which they came; nobody waits for
// that. Items are only counted: each that arrives, whichever it is and whatever became of its state object, lets one
// more sample go. A queued item holds a reference, which keeps the module loaded and the node and the chain behind it
// alive until the item has run.
// Owned by its topology through std::shared_ptr. Thread-safe.
class AsyncTopologyNode : public ITopologyNode,
                          public IMFAsyncCallback,
                          public std::enable_shared_from_this<AsyncTopologyNode>
{
  public:
    static constexpr DWORD kFlushTimeoutMs = 1000;

    AsyncTopologyNode(std::shared_ptr<ITopologyNode> successor, const std::string &ownerName,
                      const WorkQueueParameters &workQueue, DWORD timeoutMs = kFlushTimeoutMs);

    // Drops what has not begun, waits until the queued items have run, then accepts samples again. A wait that ends
    // by its limit is traced and not a failure. Call it without holding a lock that the nodes behind need.
    HRESULT Flush() override;

    // Returns as soon as the item is queued. A sample that cannot be queued is dropped with an event.
    HRESULT ProcessSample(IMFSample *sample) override;

    // Refuses samples for good; what is queued is dropped.
    void Stop() noexcept;

    // References count the queued items; the first takes a share in the node's ownership and the last gives it back.
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void **object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    // The node's work queue; E_NOTIMPL, which stands for the default, when the pipeline has chosen none.
    HRESULT STDMETHODCALLTYPE GetParameters(DWORD *flags, DWORD *queue) override;
    HRESULT STDMETHODCALLTYPE Invoke(IMFAsyncResult *pAsyncResult) override;

  private:
    void HandOnOneMore() noexcept TARN_EXCLUDES(lock);
    void ItemDone();

    const WorkQueueParameters wqParams;
    const DWORD flushTimeoutMs;
    std::atomic<bool> stopping{false};

    user_space_frameworks::CriticalSection lock;
    user_space_frameworks::ConditionVariable idle;
    std::uint32_t queuedItems TARN_GUARDED_BY(lock) = 0;
    std::uint32_t flushing TARN_GUARDED_BY(lock) = 0; // flushes under way
    bool handingOn TARN_GUARDED_BY(lock) = false;     // some thread is in HandOnOneMore
    // In order of arrival; a list: emptying it needs no memory.
    std::list<ComPtr<IMFSample>> pending TARN_GUARDED_BY(lock);
    std::size_t ready TARN_GUARDED_BY(lock) = 0; // of the pending, from the front, those whose item has come

    user_space_frameworks::CriticalSection referenceLock;
    ULONG references TARN_GUARDED_BY(referenceLock) = 0;
    std::shared_ptr<AsyncTopologyNode> self TARN_GUARDED_BY(referenceLock);
    mft_utils::CallbackInFlight inFlight TARN_GUARDED_BY(referenceLock);
};

} // namespace mft_core
