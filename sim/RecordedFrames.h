// Replays a folder of recorded pictures.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "sim/FrameSource.h"
#include "sim/PngImage.h"
#include "sim/RecordingNotes.h"

namespace tarn_sim
{

// What they say goes before the folder's own notes; without either the depth unit is 1 mm and confidence an error.
using RecordedFrameOptions = RecordingNotes;

// Plays depth_NNNN.png with ir_NNNN.png and confidence_NNNN.png of the same number, in order, over and over. Pictures
// are cut or framed with zeros around their centre to the size asked for. Without an infrared picture the infrared
// follows from the depth (nearer is brighter); without a confidence picture it is 200 wherever depth is measured.
// Everything is read by the constructor. Immutable; any thread.
class RecordedFrames final : public IFrameSource
{
  public:
    // Throws std::runtime_error with a one-line text: no such folder, no pictures in it, an unreadable
    // picture or unreadable notes.
    explicit RecordedFrames(const std::filesystem::path &folder, const RecordedFrameOptions &options = {});

    void Render(const FrameRequest &request, Plane plane, std::uint8_t *pixels) override;
    std::uint64_t PictureCount() const noexcept override
    {
        return pictures.size();
    }

  private:
    struct Picture
    {
        std::uint32_t number = 0;
        GreyImage depth;      // 1/8 mm; empty when the exposure has none
        GreyImage infrared;   // 10 bits
        GreyImage confidence; // 8 bits
    };

    void Load(const std::filesystem::path &folder, double mmPerUnit, ConfidenceKind confidence);

    std::vector<Picture> pictures;
};

} // namespace tarn_sim
