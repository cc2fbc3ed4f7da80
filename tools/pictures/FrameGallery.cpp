#include "tools/pictures/FrameGallery.h"

#include <algorithm>

namespace tarn_host
{

namespace
{

// The first and the last and what lies evenly between.
std::vector<Thumbnail> Spread(const std::vector<Thumbnail> &frames, std::size_t count)
{
    if (frames.size() <= count || count <= 1)
    {
        return {frames.begin(), frames.begin() + static_cast<std::ptrdiff_t>(std::min(frames.size(), count))};
    }
    std::vector<Thumbnail> selection;
    for (std::size_t i = 0; i < count; ++i)
    {
        selection.push_back(frames[i * (frames.size() - 1) / (count - 1)]);
    }
    return selection;
}

} // namespace

FrameGallery::FrameGallery(std::size_t framesToShow) : shown(std::max<std::size_t>(framesToShow, 1)) {}

bool FrameGallery::Wants(std::uint64_t frameNumber) const noexcept
{
    return frameNumber % step == 0;
}

void FrameGallery::Keep(Thumbnail thumbnail)
{
    held.push_back(std::move(thumbnail));
    if (held.size() < shown * 3)
    {
        return;
    }
    step *= 3;
    std::erase_if(held, [this](const Thumbnail &one) { return !Wants(one.frameNumber); });
}

std::vector<Thumbnail> FrameGallery::Selection() const
{
    std::vector<Thumbnail> unlit;
    std::vector<Thumbnail> others;
    for (const Thumbnail &one : held)
    {
        (one.isLit.value_or(true) ? others : unlit).push_back(one);
    }
    if (unlit.empty() || others.empty() || shown == 1)
    {
        return Spread(held, shown);
    }
    std::vector<Thumbnail> selection = Spread(others, shown - shown / 2);
    const std::vector<Thumbnail> half = Spread(unlit, shown / 2);
    selection.insert(selection.end(), half.begin(), half.end());
    std::ranges::sort(selection, {}, &Thumbnail::frameNumber);
    return selection;
}

} // namespace tarn_host
