// The controls of the cameras' extension units, by name.
#pragma once

#include "platform/MediaFoundation.h"

#include <string>
#include <vector>

#include "tools/frameserver/TransformKind.h"

namespace tarn_host
{

// Value.
struct ExtensionControl
{
    std::string name;
    GUID set;
    ULONG id;
};

// In the order of their ids.
std::vector<ExtensionControl> ExtensionControlsOf(TransformKind transform);

} // namespace tarn_host
