#include "sim/FaultInjector.h"

#include <thread>

namespace tarn_sim
{

namespace
{
bool IsEvery(std::uint32_t period, std::uint32_t number)
{
    return period != 0 && number % period == 0;
}
} // namespace

void FaultInjector::SetPlan(const FaultPlan &newPlan)
{
    const std::scoped_lock guard(lock);
    plan = newPlan;
    ksCalls = 0;
    transformCalls = 0;
    topologyCalls = 0;
    commands = 0;
    frames = 0;
}

HRESULT FaultInjector::Strike(const FailingCall &fault, std::uint32_t number)
{
    const bool hit = fault.number != 0 && (number == fault.number || (fault.allFollowing && number > fault.number));
    return hit ? fault.result : S_OK;
}

HRESULT FaultInjector::OnKsCall()
{
    std::chrono::milliseconds delay{0};
    HRESULT result = S_OK;
    {
        const std::scoped_lock guard(lock);
        ++ksCalls;
        result = Strike(plan.ksCall, ksCalls);
        if (plan.ksDelayedCall == 0 || plan.ksDelayedCall == ksCalls)
        {
            delay = plan.ksDelay;
        }
    }
    if (delay.count() > 0)
    {
        std::this_thread::sleep_for(delay);
    }
    return result;
}

HRESULT FaultInjector::OnTransformCall()
{
    const std::scoped_lock guard(lock);
    return Strike(plan.transformCall, ++transformCalls);
}

HRESULT FaultInjector::OnTopologyCall()
{
    const std::scoped_lock guard(lock);
    return Strike(plan.topologyCall, ++topologyCalls);
}

AnswerFault FaultInjector::OnFirmwareCommand()
{
    const std::scoped_lock guard(lock);
    ++commands;
    if (plan.answerOfCommand != 0 && plan.answerOfCommand != commands)
    {
        return {};
    }
    return {plan.answerLength, plan.answerEcho};
}

FrameFault FaultInjector::OnFrame()
{
    const std::scoped_lock guard(lock);
    ++frames;
    return {IsEvery(plan.shortEvery, frames), IsEvery(plan.duplicateEvery, frames), plan.metadata};
}

bool FaultInjector::FrameAfterStop() const
{
    const std::scoped_lock guard(lock);
    return plan.frameAfterStop;
}

} // namespace tarn_sim
