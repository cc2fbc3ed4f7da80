// A folder of its own for a test that writes files.
#pragma once

#include <filesystem>
#include <string>

namespace tarn_host_test
{

// Made empty, removed with everything in it when it goes. Confined.
class TemporaryFolder
{
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    const std::filesystem::path &Path() const noexcept
    {
        return path;
    }
    // UTF-8, as on a command line.
    std::string Text() const;

  private:
    std::filesystem::path path;
};

} // namespace tarn_host_test
