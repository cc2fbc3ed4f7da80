#include "TemporaryFolder.h"

#include <windows.h>

#include <atomic>

#include "tools/command/Text.h"

namespace tarn_host_test
{

TemporaryFolder::TemporaryFolder()
{
    static std::atomic<unsigned> next{0};
    // The space and the letter beyond ASCII are there to be survived.
    path = std::filesystem::temp_directory_path() /
           (L"tarn h\u00f6st " + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(next++));
    std::filesystem::remove_all(path);
    std::filesystem::create_directories(path);
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

std::string TemporaryFolder::Text() const
{
    return tarn_host::ToText(path);
}

} // namespace tarn_host_test
