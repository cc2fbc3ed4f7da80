// A pass-through transform whose frames travel over the assigned work queue.
#pragma once

#include <memory>

#include "core/AsyncTopologyNode.h"
#include "core/PassThroughDeviceMft.h"

namespace tarn_bench
{

class AsyncTopology : public mft_core::Topology
{
  public:
    AsyncTopology(const std::shared_ptr<mft_core::InputStream> &input,
                  const std::shared_ptr<mft_core::OutputStream> &output, IMFMediaType *type,
                  const mft_core::WorkQueueParameters &workQueue)
        : Topology("Work queue topology")
    {
        AddConnection(input, std::make_shared<mft_core::AsyncTopologyNode>(AddOutput(output), "Bench", workQueue),
                      type);
    }
};

class AsyncDeviceMft : public mft_core::PassThroughDeviceMft
{
  public:
    AsyncDeviceMft() : Object("Work queue DMFT"), PassThroughDeviceMft("Work queue DMFT") {}

  protected:
    HRESULT BuildTopology(const std::shared_ptr<mft_core::OutputStream> &outputStream, IMFMediaType *nextMediaType,
                          std::shared_ptr<mft_core::Topology> &topology) override
    {
        topology = std::make_shared<AsyncTopology>(InputStreamOf(*outputStream), outputStream, nextMediaType,
                                                   GetWorkQueueParameters());
        return S_OK;
    }
};

} // namespace tarn_bench
