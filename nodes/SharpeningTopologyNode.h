// Sharpens 16-bit frames: unsharp mask with a 9-tap Gaussian.
#pragma once

#include <vector>

#include "kernels/Sharpen.h"
#include "nodes/FrameSize.h"
#include "nodes/ImageConvertingTopologyNode.h"
#include "base/CriticalSection.h"

namespace mft_core
{

// The border of 4 pixels, which the filter leaves out, is 0. Frames that come at the same time take turns at the work
// memory. Owned by its topology. Thread-safe.
class SharpeningTopologyNode : public ImageConvertingTopologyNode
{
  public:
    // Chooses the filter for this processor. Throws FrameSize's std::invalid_argument, also where the work memory of 4
    // bytes per pixel does not fit 32 bits, or std::bad_alloc.
    SharpeningTopologyNode(std::shared_ptr<ITopologyNode> successor, std::int32_t width, std::int32_t height);

  private:
    SharpeningTopologyNode(std::shared_ptr<ITopologyNode> successor, const FrameSize &frameSize);
    HRESULT ConvertImage(const std::uint16_t *input, std::uint16_t *output) override;
    void ClearBorder(std::uint16_t *output) const noexcept;

    const FrameSize size;
    const mft_kernels::SharpenFunction kernel;
    user_space_frameworks::CriticalSection lock;
    std::vector<float> scratch TARN_GUARDED_BY(lock);
};

} // namespace mft_core
