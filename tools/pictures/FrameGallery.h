// A few frames of a stream, spread evenly over however many pass.
#pragma once

#include <cstdint>
#include <vector>

#include "tools/pictures/Thumbnail.h"

namespace tarn_host
{

// Says which frames to keep, so that the others need not be made small. Confined.
class FrameGallery
{
  public:
    // At least 1.
    explicit FrameGallery(std::size_t framesToShow);

    // Asked once for every frame, in order.
    bool Wants(std::uint64_t frameNumber) const noexcept;
    void Keep(Thumbnail thumbnail);

    // At most the asked number of frames, spread over those that were kept, in order. When the laser lit some and not
    // others, half of each.
    std::vector<Thumbnail> Selection() const;

  private:
    std::size_t shown;
    // Threefold whenever three times as many frames are held as are shown: odd, so that of two kinds of frames that
    // alternate both are kept.
    std::uint64_t step = 1;
    std::vector<Thumbnail> held;
};

} // namespace tarn_host
