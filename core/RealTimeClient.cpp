#include "core/RealTimeClient.h"

#include <mutex>

#include "trace/Guard.h"

using namespace mft_der;

namespace mft_core
{

RealTimeClient::RealTimeClient() : Object("Real time client") {}

HRESULT RealTimeClient::RegisterThreadsEx(DWORD *pdwTaskIndex, LPCWSTR wszClassName, LONG lBasePriority)
{
    const auto given = [&](RecordBuilder &values) {
        wszClassName == nullptr ? static_cast<void>(values.Null(TARN_VALUE_TASK_CLASS))
                                : AddText(values, TARN_VALUE_TASK_CLASS, wszClassName);
        values.U32(TARN_VALUE_PRIORITY, static_cast<std::uint32_t>(lBasePriority));
        OutPointer(0, pdwTaskIndex)(values);
    };
    return Recorded(TARN_CALL_REGISTER_THREADS_EX, given, Values(), [&]() -> HRESULT {
        TRACE_INFO("%s: no threads to register, base priority %ld", GetName(), lBasePriority);
        return S_OK;
    });
}

HRESULT RealTimeClient::UnregisterThreads()
{
    return Recorded(TARN_CALL_UNREGISTER_THREADS, Values(), Values(), [&]() -> HRESULT {
        TRACE_INFO("%s: no threads registered", GetName());
        return S_OK;
    });
}

HRESULT RealTimeClient::SetWorkQueueEx(DWORD dwMultithreadedWorkQueueId, LONG lWorkItemBasePriority)
{
    const auto given = Values(Number(TARN_VALUE_WORK_QUEUE, dwMultithreadedWorkQueueId),
                              Number(TARN_VALUE_PRIORITY, static_cast<std::uint32_t>(lWorkItemBasePriority)));
    return Recorded(TARN_CALL_SET_WORK_QUEUE_EX, given, Values(), [&]() -> HRESULT {
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
