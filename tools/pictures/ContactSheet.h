// One picture with a few frames of each output: depth in false colour, infrared in grey, scales and captions.
#pragma once

#include <filesystem>
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

// Lays the sections out below each other. All frames of a kind share one scale, drawn at the top.
Picture DrawContactSheet(const std::string &title, const std::vector<ContactSheetSection> &sections);

// Draws the sheet, puts it in the place of an earlier one in the folder and tells its path on stderr. Throws HostError
// and leaves the earlier one when it cannot be written.
void SaveContactSheet(const std::filesystem::path &folder, const std::string &title,
                      const std::vector<ContactSheetSection> &sections);

inline constexpr std::size_t kThumbnailsPerSection = 12;

inline constexpr const char *kPictureName = "contact-sheet.png";

} // namespace tarn_host
