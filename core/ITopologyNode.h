// Base of every processing node: a chain or tree through which samples travel.
#pragma once

#include "platform/MediaFoundation.h"

#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "core/IPreProcessObserver.h"
#include "base/Object.h"
#include "media/BufferPool.h"

namespace mft_core
{

enum class PropagateOrder : int
{
    CallLambdaAndPropagate = 0,
    PropagateOnly = 1
};

// A node owns the nodes after it; a topology owns the first. Links and observers are immutable after Init;
// samples may come on several threads, so a node that keeps state between samples protects it itself.
class ITopologyNode : public user_space_frameworks::Object
{
  public:
    // Succeeds without effect unless overridden by a node that holds samples.
    virtual HRESULT Flush();

    // Where to take memory for frames from; before the first sample. Nothing unless overridden by a node that needs it.
    virtual void UseBuffers(const std::shared_ptr<mft_utils::BufferPool> &pool);

    // Works on the sample and hands the result on. A failure ends this sample's path.
    virtual HRESULT ProcessSample(IMFSample *sample) = 0;

    // What callers use: tells the observers, then processes. The node's result is logged, not returned. Never throws.
    void Process(IMFSample *sample) noexcept;

    // Visits this node and all after it. Stops at the first failure and returns it.
    // Throws std::invalid_argument("unsupported order") for an order that does not exist.
    HRESULT Propagate(PropagateOrder order, const std::function<HRESULT(ITopologyNode *node)> &lambda);

    // Both before the first sample. Register throws std::length_error("list<T> too long") when the list is full.
    void RegisterPreProcessObserver(IPreProcessObserver &observer);
    void UnregisterPreProcessObserver(IPreProcessObserver &observer);

    // Appends a branch; before the first sample.
    void AddNextNode(std::shared_ptr<ITopologyNode> node);

  protected:
    // `successor` may be null for a node that ends a chain.
    ITopologyNode(std::shared_ptr<ITopologyNode> successor, std::string nodeName);

    // Gives the sample to next node 0. Throws std::out_of_range("invalid vector<T> subscript") when there is none.
    void HandOn(IMFSample *sample);

    const std::vector<std::shared_ptr<ITopologyNode>> &NextNodes() const noexcept
    {
        return nextNodes;
    }

  private:
    std::vector<std::shared_ptr<ITopologyNode>> nextNodes;
    std::list<std::reference_wrapper<IPreProcessObserver>> preProcessObservers;
};

} // namespace mft_core
