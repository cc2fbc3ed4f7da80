#include "nodes/ConvertingTopologyNode.h"

#include <utility>

#include "nodes/SampleActivity.h"
#include "trace/Check.h"
#include "trace/Guard.h"

namespace mft_core
{

ConvertingTopologyNode::ConvertingTopologyNode(std::shared_ptr<ITopologyNode> successor, std::string nodeName,
                                               const char *functionName)
    : ITopologyNode(std::move(successor), std::move(nodeName)), activityName(functionName)
{
}

HRESULT ConvertingTopologyNode::ProcessSample(IMFSample *sample)
{
    CHECK_POINTER(sample);
    SampleActivity activity(activityName, sample);
    ComPtr<IMFSample> output;
    const HRESULT result = mft_utils::Guarded([&] { return Convert(sample, output.GetAddressOf()); });
    if (FAILED(result))
    {
        activity.Write(mft_utils::TraceLevel::Error, "Failed to convert output sample",
                       {mft_utils::TraceField::Hex32("hr", result)});
        return result;
    }
    HandOn(output.Get());
    return S_OK;
}

void ConvertingTopologyNode::UseBuffers(const std::shared_ptr<mft_utils::BufferPool> &pool)
{
    buffers = pool;
}

HRESULT ConvertingTopologyNode::CheckFrameLength(std::size_t lengthBytes, std::size_t neededBytes) noexcept
{
    return lengthBytes < neededBytes ? MF_E_BUFFERTOOSMALL : S_OK;
}

} // namespace mft_core
