// How the pictures of a folder of recorded frames are to be read.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace tarn_sim
{

enum class ConfidenceKind : std::uint8_t
{
    Error, // an error measure: larger is worse, as time-of-flight recordings have it
    Level, // the camera's own 8 bits: larger is better
    Map    // 0 to 15, as the transform attaches it to a sample
};

// Value. What is not known is empty.
struct RecordingNotes
{
    std::optional<double> mmPerUnit; // millimetres per count of the depth pictures
    std::optional<ConfidenceKind> confidence;

    // From the folder's recording.txt; without one the depth unit from its line in ../manifest.csv. Throws
    // std::runtime_error with a one-line text for a recording.txt that cannot be understood.
    static RecordingNotes Of(const std::filesystem::path &folder);
    // Writes recording.txt. Throws std::runtime_error.
    void Save(const std::filesystem::path &folder) const;
};

} // namespace tarn_sim
