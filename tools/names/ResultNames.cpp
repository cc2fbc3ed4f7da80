#include "tools/names/ResultNames.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace tarn_host
{

namespace
{

struct NamedResult
{
    std::uint32_t code;
    const char *name;
};

constexpr auto kNames = std::to_array<NamedResult>({
#include "ResultTable.inc"
});
static_assert(std::is_sorted(kNames.begin(), kNames.end(),
                             [](const NamedResult &a, const NamedResult &b) { return a.code < b.code; }));

constexpr std::uint32_t kWin32Failure = 0x80070000;

// Null where none is known.
const char *NameOf(std::uint32_t code) noexcept
{
    const auto *const found =
        std::lower_bound(kNames.begin(), kNames.end(), code,
                         [](const NamedResult &entry, std::uint32_t wanted) { return entry.code < wanted; });
    return found == kNames.end() || found->code != code ? nullptr : found->name;
}

std::string NameOfResult(std::uint32_t result)
{
    if (const char *const name = NameOf(result))
    {
        return name;
    }
    const std::uint32_t error = result & 0xFFFF;
    const char *const wrapped = (result & 0xFFFF0000u) == kWin32Failure && error > 1 ? NameOf(error) : nullptr;
    // Number 1 is a success of its own as a bare number.
    const char *const name = result == (kWin32Failure | 1) ? "ERROR_INVALID_FUNCTION" : wrapped;
    return name == nullptr ? std::string() : std::string("HRESULT_FROM_WIN32(") + name + ")";
}

} // namespace

std::string ResultText(std::uint32_t result)
{
    std::array<char, 11> number{};
    std::snprintf(number.data(), number.size(), "0x%08lX", static_cast<unsigned long>(result));
    const std::string name = NameOfResult(result);
    return name.empty() ? number.data() : name + " (" + number.data() + ")";
}

} // namespace tarn_host
