// Has the module record what this process does with it.
#pragma once

#include <filesystem>
#include <string>

#include "tools/runs/RunOptions.h"

namespace tarn_host
{

// While it lives the folder that the module looks for is there. What it made it removes; what others record there
// stays. Does nothing without RunOptions::record. Confined.
class RecordedRuns
{
  public:
    // Before the transform is created. Throws HostError.
    explicit RecordedRuns(const RunOptions &options);
    ~RecordedRuns();
    RecordedRuns(const RecordedRuns &) = delete;
    RecordedRuns &operator=(const RecordedRuns &) = delete;

    // Moves this process's recordings to the folder of the options, or one inside it. Once the transform is gone.
    // Throws HostError when there is none.
    void Collect(const std::string &subfolder = "") const;

  private:
    const std::filesystem::path destination;
    bool madeFolder = false;
    bool madeWish = false; // for pixels
};

} // namespace tarn_host
