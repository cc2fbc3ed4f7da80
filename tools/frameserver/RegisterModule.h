// Registration of the module through the system's own tool, as an installer would do it.
#pragma once

#include <filesystem>

namespace tarn_host
{

// Runs "regsvr32 /s" on the module, an absolute path, and waits for it. Throws HostError, saying what to do, when the
// tool cannot be started or reports a failure.
void RegisterModule(const std::filesystem::path &module);

} // namespace tarn_host
