// Saves frames as they left the transform: one picture file per plane, and a line of JSON per frame.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>

#include "tools/frameserver/FrameFormat.h"
#include "tools/frameserver/SampleDetails.h"

namespace tarn_host
{

// Depth and infrared become portable grey maps (PGM, 16 or 8 bits, values untouched), confidence one of maximum 15,
// every other format a file of its bytes. frames.jsonl tells of each frame what the sample carries. Confined.
class FrameWriter
{
  public:
    // Starts a new frames.jsonl. Throws HostError.
    explicit FrameWriter(std::filesystem::path outputFolder);

    // Files are named "<stream>-<number>". Throws HostError when a file cannot be written.
    void Write(const std::string &stream, std::uint64_t number, const FrameFormat &format,
               std::span<const std::byte> pixels, const SampleDetails &details);

  private:
    std::string WritePixels(const std::string &name, const FrameFormat &format, std::span<const std::byte> pixels);
    void WriteFile(const std::string &name, const std::string &header, std::span<const std::byte> bytes);

    const std::filesystem::path folder;
    std::ofstream lines;
};

} // namespace tarn_host
