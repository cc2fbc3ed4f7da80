// Replays a folder of recorded pictures.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "sim/FrameSource.h"
#include "sim/PngImage.h"

namespace tarn_sim
{

struct RecordedFrameOptions
{
    // Millimetres per count of the depth pictures. When absent: the folder's line in ../manifest.csv, else 1.
    std::optional<double> mmPerUnit;
    // The confidence pictures hold an error measure (larger is worse), as time-of-flight recordings do.
    bool confidenceIsError = true;
};

// Plays depth_NNNN.png with ir_NNNN.png and confidence_NNNN.png of the same number, in order, over and over. Pictures
// are cut or framed with zeros around their centre to the size asked for. Without an infrared picture the infrared
// follows from the depth (nearer is brighter); without a confidence picture it is 200 wherever depth is measured.
// Everything is read by the constructor. Immutable; any thread.
class RecordedFrames final : public IFrameSource
{
  public:
    // Throws std::runtime_error with a one-line text: no such folder, no pictures in it, or an unreadable picture.
    explicit RecordedFrames(const std::filesystem::path &folder, const RecordedFrameOptions &options = {});

    void Render(const FrameRequest &request, Plane plane, std::uint8_t *pixels) override;
    std::uint64_t PictureCount() const noexcept override
    {
        return pictures.size();
    }
    double MmPerUnit() const noexcept
    {
        return mmPerUnit;
    }

  private:
    struct Picture
    {
        std::uint32_t number = 0;
        GreyImage depth;      // 1/8 mm; empty when the exposure has none
        GreyImage infrared;   // 10 bits
        GreyImage confidence; // 8 bits
    };

    void Load(const std::filesystem::path &folder, bool confidenceIsError);

    double mmPerUnit = 1.0;
    std::vector<Picture> pictures;
};

} // namespace tarn_sim
