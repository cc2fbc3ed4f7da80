// A folder of its own for a test that writes files.
#pragma once

#include <windows.h>

#include <filesystem>
#include <string>

#include "tools/command/Text.h"

namespace tarn_host_test
{

// Made empty, removed with everything in it when it goes. Confined.
class TemporaryFolder
{
  public:
    TemporaryFolder()
    {
        std::filesystem::remove_all(path); // of a process that did not come to its end
        std::filesystem::create_directories(path);
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    const std::filesystem::path &Path() const noexcept
    {
        return path;
    }
    // UTF-8, as on a command line.
    std::string Text() const
    {
        return tarn_host::ToText(path);
    }

  private:
    static inline unsigned made = 0;
    // The space and the letter beyond ASCII are there to be survived.
    const std::filesystem::path path =
        std::filesystem::temp_directory_path() /
        (L"tarn h\u00f6st " + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(made++));
};

} // namespace tarn_host_test
