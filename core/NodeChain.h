// Builds a chain of nodes, written down in the order in which a frame travels.
#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "core/ITopologyNode.h"

namespace mft_core
{

// Nodes are made from the end, since each is given its successor: the last that is named is made first. Used once.
// Confined.
class NodeChain
{
  public:
    // The next node on a frame's way: a Node made of its successor and `arguments`, which are copied; pass what cannot
    // be copied by std::ref.
    template <class Node, class... Arguments>
    NodeChain &Then(Arguments... arguments)
    {
        steps.push_back([... given = std::move(arguments)](std::shared_ptr<ITopologyNode> successor) {
            return std::make_shared<Node>(std::move(successor), given...);
        });
        return *this;
    }

    // Makes the nodes in front of `end` and returns the first. What their constructors throw goes through.
    std::shared_ptr<ITopologyNode> EndIn(std::shared_ptr<ITopologyNode> end) const
    {
        for (auto step = steps.rbegin(); step != steps.rend(); ++step)
        {
            end = (*step)(std::move(end));
        }
        return end;
    }

  private:
    using Step = std::function<std::shared_ptr<ITopologyNode>(std::shared_ptr<ITopologyNode> successor)>;

    std::vector<Step> steps;
};

} // namespace mft_core
