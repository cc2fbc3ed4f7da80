// Splits a combined confidence and depth frame into a depth frame and an optional confidence map.
#pragma once

#include "core/ITopologyNode.h"
#include "device/ConfidenceMapState.h"
#include "nodes/FrameSize.h"

namespace mft_core
{

// The buffer holds two planes of 16 bits per pixel: confidence, one byte per pixel in the plane's first half, then
// depth. Works in the buffer it is given. Owned by its topology, shares the state. Immutable after Init.
class TarnConfidenceMapTopologyNode : public ITopologyNode
{
  public:
    // Throws FrameSize's std::invalid_argument for the two planes together, or "confidenceMap is null".
    TarnConfidenceMapTopologyNode(std::shared_ptr<ITopologyNode> successor, std::int32_t width, std::int32_t height,
                                  std::shared_ptr<const ConfidenceMapState> confidenceMap);

    // Moves the depth plane to the front; before that, with the map enabled and not suppressed by the camera, attaches
    // ORRIN_SAMPLE_TARN_CONFIDENCE_MAP. The buffer's length stays, a shorter frame stays as it is. A sample whose
    // buffer cannot be had is dropped: its first plane would be taken for depth.
    HRESULT ProcessSample(IMFSample *sample) override;

  private:
    void ExtractConfidenceMapToMetadata(BYTE *buffer, IMFSample *sample) const noexcept;
    void MoveDepthDataToExpectedLocation(BYTE *buffer) const noexcept;

    const FrameSize size;
    const DWORD planeSize; // bytes
    const std::shared_ptr<const ConfidenceMapState> mapState;
};

} // namespace mft_core
