// One picture with a few frames of each output: depth in false colour with a scale, infrared in grey, captions.
#pragma once

#include <string>
#include <vector>

#include "tools/pictures/Picture.h"
#include "tools/pictures/Thumbnail.h"

namespace tarn_host
{

struct ContactSheetSection
{
    std::string title;
    std::vector<Thumbnail> frames; // All of one stream.
};

// Lays the sections out below each other; all frames of a section share one range of depths or grey levels.
Picture DrawContactSheet(const std::string &title, const std::vector<ContactSheetSection> &sections);

inline constexpr std::size_t kThumbnailsPerSection = 12;

} // namespace tarn_host
