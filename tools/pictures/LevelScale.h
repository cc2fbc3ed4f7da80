// How the levels of one kind of frame are drawn, and the bar that says so.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/pictures/LevelRange.h"
#include "tools/pictures/Picture.h"
#include "tools/pictures/Thumbnail.h"

namespace tarn_host
{

// False colour for depth, grey for everything else. Immutable after Init.
class LevelScale
{
  public:
    // The range of these frames, all of the kind `scaledPixels`.
    LevelScale(PixelKind scaledPixels, const std::vector<Thumbnail> &frames);

    // Levels beyond the range take the colour of its end.
    Rgb ColourOf(std::uint16_t level) const noexcept;
    // Bar, ticks and their labels, and what they mean; kHeight pixels high.
    void Draw(Picture &sheet, std::size_t left, std::size_t top) const;
    const LevelRange &Range() const noexcept
    {
        return range;
    }

    static constexpr std::size_t kHeight = 56;

  private:
    std::string Label(std::uint32_t level) const;

    const PixelKind pixels;
    const LevelRange range;
};

} // namespace tarn_host
