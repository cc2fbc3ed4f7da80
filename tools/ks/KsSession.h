// A transform over a simulated camera that does not stream, for KS calls.
#pragma once

#include <filesystem>
#include <functional>

#include "tools/ks/KsClient.h"
#include "tools/frameserver/LoadedModule.h"

namespace tarn_host
{

// Value.
struct KsSessionOptions
{
    TransformKind transform = TransformKind::Depth;
    std::filesystem::path module;
    ModuleAccess moduleAccess = ModuleAccess::File;
};

// Has `use` make its calls while camera and transform live, then takes both down. Throws UsageError and HostError, also
// when references are left on the transform, and whatever `use` throws.
void RunOverModule(const KsSessionOptions &options, const std::function<void(const KsClient &)> &use);

} // namespace tarn_host
