// Fans each sample out to all of its next nodes.
#pragma once

#include "core/ITopologyNode.h"

namespace mft_core
{

enum class BranchSamples
{
    Shared,  // every branch is given the same sample object
    Separate // every branch has a sample and a capture-metadata store of its own
};

// Pixels are never copied: all branches see the same buffers. With Shared, what a branch writes into the sample is seen
// by the branches after it; that is right where no branch writes before it has made a sample of its own, and where no
// branch writes into the capture-metadata store, which travels from sample to sample by reference. With Separate,
// attributes of one branch never show up in another. Either way a branch that changes pixels in place comes behind a
// node that makes a new sample. Owned by its topology. Immutable after Init.
class SplitterTopologyNode : public ITopologyNode
{
  public:
    explicit SplitterTopologyNode(std::shared_ptr<ITopologyNode> successor,
                                  BranchSamples samples = BranchSamples::Shared,
                                  const char *nodeName = "Splitter topology node");

    // Calls the next nodes in the order in which they were attached; with none it does nothing. A branch for which no
    // sample of its own can be made loses the frame, with an event, and the others go on.
    HRESULT ProcessSample(IMFSample *sample) override;

  private:
    static HRESULT CopyForBranch(IMFSample **branchSample, IMFSample *sample);

    const BranchSamples branchSamples;
};

} // namespace mft_core
