// What happens in one run, phase by phase: which outputs start and stop and what is switched, then so many frames.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/command/VideoSize.h"
#include "tools/frameserver/TransformKind.h"

namespace tarn_host
{

struct OutputChoice
{
    DWORD outputId = 0;
    std::optional<VideoSize> size; // empty: the first type that the output offers
};

// A change while the frames go on, in this order: stops, modes, starts. Then the frames.
struct Phase
{
    std::string caption;
    std::vector<DWORD> stop;
    std::optional<bool> faceLogin;
    std::optional<bool> confidenceMap;
    std::vector<OutputChoice> start;
    std::uint64_t frames = 0; // that every running output is to be given
    double seconds = 0;       // the phase's length when `frames` is 0; both 0: each picture of the camera's source once
};

// Value.
struct Scenario
{
    std::string title;
    TransformKind transform = TransformKind::Depth;
    std::vector<Phase> phases; // at least one; the first starts an output
};

} // namespace tarn_host
