#include "nodes/DepthRangeTopologyNode.h"

#include "platform/CameraAttributes.h"

#include <source_location>
#include <stdexcept>
#include <utility>

#include "nodes/SampleActivity.h"
#include "trace/Check.h"
#include "base/ComException.h"

namespace mft_core
{

namespace
{

UINT64 DepthValueUnitOf(IMFAttributes *outputStreamAttributes)
{
    UINT64 depthValueUnit = 0;
    const HRESULT result = outputStreamAttributes == nullptr
                               ? E_POINTER
                               : outputStreamAttributes->GetUINT64(MF_MT_DEPTH_VALUE_UNIT, &depthValueUnit);
    if (FAILED(result))
    {
        constexpr const char *text = "outputStreamAttributes->GetUINT64(MF_MT_DEPTH_VALUE_UNIT, &depthValueUnit)";
        mft_utils::PrintRetOnHResultErrorMessage_LM_DMFT_COMMON(std::source_location::current().function_name(), text,
                                                                result);
        throw mft_utils::ComException(result, text);
    }
    if (depthValueUnit == 0)
    {
        throw std::invalid_argument("depthValueUnit cant be 0");
    }
    return depthValueUnit;
}

// Nanometres. In double precision a large product is rounded: other steps would give other values.
UINT32 ToPixelUnits(std::uint32_t depth, UINT64 depthValueUnit)
{
    const auto tens = static_cast<UINT64>(depth * 1000000.0);
    const auto nanometres = static_cast<UINT64>(static_cast<double>(tens) * 10.0);
    return static_cast<UINT32>(nanometres / depthValueUnit);
}

} // namespace

DepthRangeTopologyNode::DepthRangeTopologyNode(std::shared_ptr<ITopologyNode> successor,
                                               IMFAttributes *outputStreamAttributes, std::uint32_t minDepth,
                                               std::uint32_t maxDepth)
    : ITopologyNode(std::move(successor), "Depth range topology node")
{
    const UINT64 depthValueUnit = DepthValueUnitOf(outputStreamAttributes);
    minReliableDepth = ToPixelUnits(minDepth, depthValueUnit);
    maxReliableDepth = ToPixelUnits(maxDepth, depthValueUnit);
}

HRESULT DepthRangeTopologyNode::ProcessSample(IMFSample *sample)
{
    CHECK_POINTER(sample);
    const SampleActivity activity("mft_core::DepthRangeTopologyNode::ProcessSample", sample);
    // A frame without its range is better than no frame.
    (void)sample->SetUINT32(MFSampleExtension_Depth_MaxReliableDepth, maxReliableDepth);
    (void)sample->SetUINT32(MFSampleExtension_Depth_MinReliableDepth, minReliableDepth);
    HandOn(sample);
    return S_OK;
}

} // namespace mft_core
