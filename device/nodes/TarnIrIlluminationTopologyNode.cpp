#include "device/nodes/TarnIrIlluminationTopologyNode.h"

#include "platform/CameraAttributes.h"

#include <utility>

#include "device/nodes/FrameMetadataReader.h"
#include "nodes/SampleActivity.h"
#include "trace/Check.h"

namespace mft_core
{

TarnIrIlluminationTopologyNode::TarnIrIlluminationTopologyNode(std::shared_ptr<ITopologyNode> successor)
    : ITopologyNode(std::move(successor), "Tarn IR Illumination Topology Node")
{
}

HRESULT TarnIrIlluminationTopologyNode::ProcessSample(IMFSample *sample)
{
    CHECK_POINTER(sample);
    const SampleActivity activity("mft_core::TarnIrIlluminationTopologyNode::ProcessSample", sample);
    {
        const FrameMetadataReader metaData(sample);
        if (const auto illumination = metaData.Illumination())
        {
            // A frame without its state is better than no frame.
            (void)metaData.Store()->SetUINT64(MF_CAPTURE_METADATA_FRAME_ILLUMINATION, *illumination);
        }
    }
    HandOn(sample);
    return S_OK;
}

} // namespace mft_core
