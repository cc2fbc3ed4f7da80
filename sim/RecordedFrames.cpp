#include "sim/RecordedFrames.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tarn_sim
{

namespace
{
constexpr std::uint16_t kInfraredMaximum = 1023;
constexpr std::uint16_t kConfidenceWhereMeasured = 200;

struct ExposureFiles
{
    std::filesystem::path depth;
    std::filesystem::path infrared;
    std::filesystem::path confidence;
};

// The number in "<prefix>NNNN.png", or nothing.
std::optional<std::uint32_t> NumberIn(std::string_view name, std::string_view prefix)
{
    constexpr std::string_view extension = ".png";
    if (name.size() <= prefix.size() + extension.size() || !name.starts_with(prefix) || !name.ends_with(extension))
    {
        return std::nullopt;
    }
    const auto digits = name.substr(prefix.size(), name.size() - prefix.size() - extension.size());
    std::uint32_t number = 0;
    const char *const end = digits.data() + digits.size();
    const auto parsed = std::from_chars(digits.data(), end, number);
    return parsed.ec == std::errc() && parsed.ptr == end ? std::optional(number) : std::nullopt;
}

std::map<std::uint32_t, ExposureFiles> FindExposures(const std::filesystem::path &folder)
{
    std::map<std::uint32_t, ExposureFiles> exposures;
    for (const auto &entry : std::filesystem::directory_iterator(folder))
    {
        const std::string name = entry.path().filename().string();
        if (const auto depth = NumberIn(name, "depth_"))
        {
            exposures[*depth].depth = entry.path();
        }
        else if (const auto infrared = NumberIn(name, "ir_"))
        {
            exposures[*infrared].infrared = entry.path();
        }
        else if (const auto confidence = NumberIn(name, "confidence_"))
        {
            exposures[*confidence].confidence = entry.path();
        }
    }
    std::erase_if(exposures,
                  [](const auto &item) { return item.second.depth.empty() && item.second.infrared.empty(); });
    return exposures;
}

void ConvertDepth(GreyImage &image, double mmPerUnit)
{
    for (auto &pixel : image.pixels)
    {
        pixel = static_cast<std::uint16_t>(std::min(std::round(pixel * mmPerUnit * 8.0), 65535.0));
    }
}

// How far a recording's infrared must be shifted to fit 10 bits; what is close to fitting is clamped instead.
int InfraredShift(std::uint16_t maximum)
{
    int shift = 0;
    if (maximum > 2 * kInfraredMaximum + 1)
    {
        while ((maximum >> shift) > kInfraredMaximum)
        {
            ++shift;
        }
    }
    return shift;
}

// Eight bits become ten by repeating the upper ones, so that the scaling back to eight gives the same.
void ConvertInfrared(GreyImage &image, int shiftRight)
{
    for (auto &pixel : image.pixels)
    {
        const int value = image.bits == 8 ? pixel << 2 | pixel >> 6 : pixel >> shiftRight;
        pixel = static_cast<std::uint16_t>(std::min<int>(value, kInfraredMaximum));
    }
}

// The camera's confidence byte of a level of the map: the middle of those that the transform gives this level.
int ConfidenceOfLevel(int level)
{
    return level == 0 ? 0 : 15 + 8 * std::min(level, 15) + 4;
}

void ConvertConfidence(GreyImage &image, ConfidenceKind kind)
{
    for (auto &pixel : image.pixels)
    {
        const int value = std::min<int>(pixel, 255);
        pixel = static_cast<std::uint16_t>(kind == ConfidenceKind::Error   ? 255 - std::min(value * 8, 255)
                                           : kind == ConfidenceKind::Level ? value
                                                                           : ConfidenceOfLevel(value));
    }
}

// Value of the centred cut (or framing) of the image; 0 outside it.
class CentredView
{
  public:
    CentredView(const GreyImage &source, std::uint32_t width, std::uint32_t height)
        : image(source), offsetX((std::int64_t{source.width} - width) / 2),
          offsetY((std::int64_t{source.height} - height) / 2)
    {
    }

    std::uint16_t At(std::uint32_t x, std::uint32_t y) const
    {
        const std::int64_t sourceX = x + offsetX;
        const std::int64_t sourceY = y + offsetY;
        if (sourceX < 0 || sourceY < 0 || sourceX >= image.width || sourceY >= image.height)
        {
            return 0;
        }
        return image.pixels[static_cast<std::size_t>(sourceY) * image.width + static_cast<std::size_t>(sourceX)];
    }

  private:
    const GreyImage &image;
    std::int64_t offsetX;
    std::int64_t offsetY;
};

std::uint16_t InfraredFromDepth(std::uint16_t depthEighthMm)
{
    return depthEighthMm == 0 ? std::uint16_t{0}
                              : static_cast<std::uint16_t>(std::min<std::uint32_t>(4000000U / depthEighthMm, 1023U));
}
} // namespace

RecordedFrames::RecordedFrames(const std::filesystem::path &folder, const RecordedFrameOptions &options)
{
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error))
    {
        throw std::runtime_error("no such folder: " + folder.string());
    }
    const auto clean = folder.has_filename() ? folder : folder.parent_path(); // a trailing separator hides the name
    const RecordingNotes notes = RecordingNotes::Of(clean);
    const double mmPerUnit = options.mmPerUnit ? *options.mmPerUnit : notes.mmPerUnit.value_or(1.0);
    if (!(mmPerUnit > 0.0))
    {
        throw std::runtime_error("the depth unit must be more than 0 mm");
    }
    Load(clean, mmPerUnit, options.confidence ? *options.confidence : notes.confidence.value_or(ConfidenceKind::Error));
}

void RecordedFrames::Load(const std::filesystem::path &folder, double mmPerUnit, ConfidenceKind confidence)
{
    std::uint16_t infraredMaximum = 0;
    for (const auto &[number, files] : FindExposures(folder))
    {
        Picture picture;
        picture.number = number;
        if (!files.depth.empty())
        {
            picture.depth = ReadGreyPng(files.depth);
            ConvertDepth(picture.depth, mmPerUnit);
        }
        if (!files.infrared.empty())
        {
            picture.infrared = ReadGreyPng(files.infrared);
            infraredMaximum = std::max(infraredMaximum, *std::ranges::max_element(picture.infrared.pixels));
        }
        if (!files.confidence.empty())
        {
            picture.confidence = ReadGreyPng(files.confidence);
            ConvertConfidence(picture.confidence, confidence);
        }
        pictures.push_back(std::move(picture));
    }
    if (pictures.empty())
    {
        throw std::runtime_error("no depth_NNNN.png or ir_NNNN.png pictures in " + folder.string());
    }
    for (auto &picture : pictures)
    {
        ConvertInfrared(picture.infrared, InfraredShift(infraredMaximum));
    }
}

void RecordedFrames::Render(const FrameRequest &request, Plane plane, std::uint8_t *pixels)
{
    const Picture &picture = pictures[static_cast<std::size_t>(request.number % pictures.size())];
    const CentredView depth(picture.depth, request.width, request.height);
    const CentredView infrared(picture.infrared, request.width, request.height);
    const CentredView confidence(picture.confidence, request.width, request.height);
    const bool hasInfrared = !picture.infrared.pixels.empty();
    const bool hasConfidence = !picture.confidence.pixels.empty();

    const auto infraredAt = [&](std::uint32_t x, std::uint32_t y) {
        const std::uint16_t value = hasInfrared ? infrared.At(x, y) : InfraredFromDepth(depth.At(x, y));
        return static_cast<std::uint16_t>(request.illuminated ? value : value / 8);
    };
    std::size_t index = 0;
    for (std::uint32_t y = 0; y < request.height; ++y)
    {
        for (std::uint32_t x = 0; x < request.width; ++x, ++index)
        {
            std::uint16_t value = 0;
            switch (plane)
            {
            case Plane::DepthEighthMm:
                value = depth.At(x, y);
                break;
            case Plane::Infrared:
                value = infraredAt(x, y);
                break;
            case Plane::Confidence:
                value = hasConfidence ? confidence.At(x, y) : depth.At(x, y) != 0 ? kConfidenceWhereMeasured : 0;
                break;
            case Plane::Yuy2:
                value = static_cast<std::uint16_t>(0x8000 | (infraredAt(x, y) / 4)); // grey
                break;
            }
            if (plane == Plane::Confidence)
            {
                pixels[index] = static_cast<std::uint8_t>(value);
            }
            else
            {
                std::memcpy(pixels + 2 * index, &value, sizeof(value));
            }
        }
    }
}

} // namespace tarn_sim
