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

// Depth and infrared become grey PNG pictures (16 or 8 bits, values untouched), confidence one of 0 to 15, every other
// format a file of its bytes. recording.txt tells the units, so that the folder can be replayed, and frames.jsonl of
// each frame what the sample carries. Confined.
class FrameWriter
{
  public:
    // Throws UsageError when the folder holds pictures of the same names that no earlier run of this program listed,
    // and HostError when it cannot be read.
    explicit FrameWriter(std::filesystem::path outputFolder);

    // Files are named "<stream>_<number>". The first call removes the pictures that an earlier run listed. Throws
    // HostError when a file cannot be written.
    void Write(const std::string &stream, std::uint64_t number, const FrameFormat &format,
               std::span<const std::byte> pixels, const SampleDetails &details);

  private:
    void Begin();
    void WriteRaw(const std::string &name, std::span<const std::byte> bytes);

    const std::filesystem::path folder;
    std::ofstream lines;
};

} // namespace tarn_host
