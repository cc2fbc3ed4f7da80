// Rescales 16-bit frames to a fixed size, bilinearly.
#pragma once

#include <vector>

#include "kernels/Resize.h"
#include "nodes/FrameSize.h"
#include "nodes/ImageConvertingTopologyNode.h"
#include "base/CriticalSection.h"

namespace mft_core
{

// Weights and work memory are made once; frames that come at the same time take turns at the work memory. Owned by its
// topology. Thread-safe.
class ImageResizeTopologyNode : public ImageConvertingTopologyNode
{
  public:
    // `inputPitchPixels` is from row to row, at least `inputWidth`; 0 without padding. Throws FrameSize's and the
    // resize plan's std::invalid_argument, or std::bad_alloc.
    ImageResizeTopologyNode(std::shared_ptr<ITopologyNode> successor, std::uint32_t inputWidth,
                            std::uint32_t inputHeight, std::uint32_t outputWidth, std::uint32_t outputHeight,
                            std::uint32_t inputPitchPixels = 0);

  private:
    ImageResizeTopologyNode(std::shared_ptr<ITopologyNode> successor, const FrameSize &input, const FrameSize &output,
                            const FrameSize &pitchedInput);
    HRESULT ConvertImage(const std::uint16_t *input, std::uint16_t *output) override;

    const std::ptrdiff_t inputPitchBytes;
    const FrameSize outputSize;
    const mft_kernels::ResizePlan plan;
    user_space_frameworks::CriticalSection lock;
    std::vector<std::byte> scratch TARN_GUARDED_BY(lock);
};

} // namespace mft_core
