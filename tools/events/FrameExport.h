// The pixels of a recording as a folder of pictures, which every --frames option plays.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "tools/events/RecordViews.h"

namespace tarn_host
{

struct FrameExportResult
{
    std::uint64_t frames = 0;  // with a picture
    std::uint64_t raw = 0;     // without one, saved as their bytes
    std::uint64_t skipped = 0; // cut, or of no known format
};

// Frames are numbered from 0 over all sessions; depth in 1/8 mm, infrared as the camera has it. Throws
// std::runtime_error for a folder that holds something already and for a file that cannot be written.
FrameExportResult ExportFrames(const std::vector<RecordedSession> &sessions, const std::filesystem::path &folder);

} // namespace tarn_host
