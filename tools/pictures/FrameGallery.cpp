#include "tools/pictures/FrameGallery.h"

#include <algorithm>

namespace tarn_host
{

FrameGallery::FrameGallery(std::size_t framesToShow) : shown(std::max<std::size_t>(framesToShow, 1)) {}

bool FrameGallery::Wants(std::uint64_t frameNumber) const noexcept
{
    return frameNumber % step == 0;
}

void FrameGallery::Keep(Thumbnail thumbnail)
{
    held.push_back(std::move(thumbnail));
    if (held.size() < shown * 2)
    {
        return;
    }
    step *= 2;
    std::erase_if(held, [this](const Thumbnail &one) { return !Wants(one.frameNumber); });
}

std::vector<Thumbnail> FrameGallery::Selection() const
{
    if (held.size() <= shown || shown == 1)
    {
        return {held.begin(), held.begin() + static_cast<std::ptrdiff_t>(std::min(held.size(), shown))};
    }
    std::vector<Thumbnail> selection;
    for (std::size_t i = 0; i < shown; ++i)
    {
        selection.push_back(held[i * (held.size() - 1) / (shown - 1)]);
    }
    return selection;
}

} // namespace tarn_host
