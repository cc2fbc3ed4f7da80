#include "core/ITopologyNode.h"

#include <stdexcept>
#include <utility>

#include "base/Checked.h"
#include "trace/Guard.h"

namespace mft_core
{

namespace
{
void NotifyObserversOnSample(IMFSample *sample, const std::list<std::reference_wrapper<IPreProcessObserver>> &observers)
{
    for (IPreProcessObserver &observer : observers)
    {
        observer.OnSample(sample);
    }
}
} // namespace

ITopologyNode::ITopologyNode(std::shared_ptr<ITopologyNode> successor, std::string nodeName)
    : Object(std::move(nodeName))
{
    if (successor)
    {
        nextNodes.push_back(std::move(successor));
    }
}

HRESULT ITopologyNode::Flush()
{
    TRACE_VERBOSE("%s: nothing to flush", GetName());
    return S_OK;
}

void ITopologyNode::UseBuffers(const std::shared_ptr<mft_utils::BufferPool> & /*pool*/) {}

void ITopologyNode::Process(IMFSample *sample) noexcept
{
    const mft_utils::EntryExitTrace trace(GetName());
    const HRESULT result = mft_utils::Guarded([&]() -> HRESULT {
        NotifyObserversOnSample(sample, preProcessObservers);
        return ProcessSample(sample);
    });
    if (FAILED(result))
    {
        TRACE_ERROR("%s: sample dropped, hr 0x%08lX", GetName(), static_cast<unsigned long>(result));
    }
}

HRESULT ITopologyNode::Propagate(PropagateOrder order, const std::function<HRESULT(ITopologyNode *node)> &lambda)
{
    switch (order)
    {
    case PropagateOrder::CallLambdaAndPropagate:
        CHECK_HR(lambda(this));
        for (const auto &node : nextNodes)
        {
            CHECK_HR(node->Propagate(order, lambda));
        }
        return S_OK;
    case PropagateOrder::PropagateOnly:
        for (const auto &node : nextNodes)
        {
            CHECK_HR(node->Propagate(order, lambda));
        }
        TRACE_VERBOSE("%s: propagated", GetName());
        return S_OK;
    }
    throw std::invalid_argument("unsupported order");
}

void ITopologyNode::RegisterPreProcessObserver(IPreProcessObserver &observer)
{
    if (preProcessObservers.size() == preProcessObservers.max_size())
    {
        throw std::length_error("list<T> too long");
    }
    preProcessObservers.emplace_back(observer);
}

void ITopologyNode::UnregisterPreProcessObserver(IPreProcessObserver &observer)
{
    preProcessObservers.remove_if(
        [&](const std::reference_wrapper<IPreProcessObserver> &entry) { return &entry.get() == &observer; });
}

void ITopologyNode::AddNextNode(std::shared_ptr<ITopologyNode> node)
{
    nextNodes.push_back(std::move(node));
}

void ITopologyNode::HandOn(IMFSample *sample)
{
    mft_utils::At(nextNodes, 0)->Process(sample);
}

} // namespace mft_core
