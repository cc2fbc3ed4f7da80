// What the demo plays and shows: the camera as applications use it.
#pragma once

#include <cstddef>
#include <vector>

#include "tools/runs/Scenario.h"

namespace tarn_host
{

// One output during one phase, or its confidence map.
struct ShownOutput
{
    std::size_t phase = 0;
    DWORD outputId = kDepthOutput;
    bool isConfidenceMap = false;
};

struct DemoScenario
{
    Scenario scenario;
    std::vector<ShownOutput> shown; // on the contact sheet
};

std::vector<DemoScenario> DemoScenarios();

} // namespace tarn_host
