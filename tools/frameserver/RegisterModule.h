// Registration of the module through the system's own tool, as an installer would do it.
#pragma once

#include <filesystem>

namespace tarn_host
{

// Runs "regsvr32 /s" on the module and waits for it. Throws UsageError when there is no such file and HostError, saying
// what to do, when the tool cannot be started or reports a failure.
void RegisterModule(const std::filesystem::path &module);

// The module beside this program; registered unless the user names another one.
std::filesystem::path DefaultModulePath();

} // namespace tarn_host
