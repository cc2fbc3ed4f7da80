#include "core/RealTimeClient.h"

#include <mutex>

#include "trace/Guard.h"

using mft_utils::EntryPoint;

namespace mft_core
{

RealTimeClient::RealTimeClient() : Object("Real time client") {}

HRESULT RealTimeClient::RegisterThreadsEx(DWORD *, LPCWSTR, LONG lBasePriority)
{
    return EntryPoint(GetName(), [&]() -> HRESULT {
        TRACE_INFO("%s: no threads to register, base priority %ld", GetName(), lBasePriority);
        return S_OK;
    });
}

HRESULT RealTimeClient::UnregisterThreads()
{
    return EntryPoint(GetName(), [&]() -> HRESULT {
        TRACE_INFO("%s: no threads registered", GetName());
        return S_OK;
    });
}

HRESULT RealTimeClient::SetWorkQueueEx(DWORD dwMultithreadedWorkQueueId, LONG lWorkItemBasePriority)
{
    return EntryPoint(GetName(), [&]() -> HRESULT {
        TRACE_INFO("%s: work queue 0x%lX, base priority %ld", GetName(), dwMultithreadedWorkQueueId,
                   lWorkItemBasePriority);
        const std::scoped_lock guard(lock);
        workQueueParameters = {dwMultithreadedWorkQueueId, lWorkItemBasePriority, true};
        return S_OK;
    });
}

WorkQueueParameters RealTimeClient::GetWorkQueueParameters() const
{
    const std::scoped_lock guard(lock);
    return workQueueParameters;
}

} // namespace mft_core
