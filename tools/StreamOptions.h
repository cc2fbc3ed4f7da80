// What the user asked of "tarn-host stream".
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "tools/DeviceTransformSession.h"
#include "tools/VideoSize.h"

namespace tarn_host
{

enum class TransformKind
{
    Depth,
    Color
};

enum class Pace
{
    RealTime,
    Fast
};

// Value.
struct StreamOptions
{
    TransformKind transform = TransformKind::Depth;
    std::filesystem::path module;
    bool registerModule = true;
    std::filesystem::path frames; // Empty: the built-in scene.
    std::uint64_t count = 0;      // 0: each picture of the source once.
    double seconds = 0;           // 0: limited by count.
    std::optional<VideoSize> size;
    std::string format; // Name of a subtype; empty: whatever an output offers first.
    Pace pace = Pace::RealTime;
    InputReference inputReference = InputReference::Keep;
    std::filesystem::path outFolder; // Empty: no pictures.
    bool json = false;
    bool quiet = false;
};

} // namespace tarn_host
