// What TARN_TRACE asks for.
#pragma once

#include <cstdint>
#include <string_view>

namespace mft_utils
{

// "2", "4", "8" or "error", "info", "verbose", optionally followed by ",file=<path>" or ",file=stderr", and between
// them by ",limit=<MiB>" of a file, 1 to 4096.
struct TraceSetting
{
    enum class Destination : std::uint8_t
    {
        Debugger,
        StandardError,
        File
    };

    std::uint32_t level = 0; // 0: off, also where the setting is not understood
    Destination destination = Destination::Debugger;
    std::uint64_t limitBytes = kDefaultLimit;
    std::string_view path; // of the file, UTF-8; borrows the setting's text

    // With the older file twice as much: ten minutes of frames at the level of information, less at the verbose one.
    static constexpr std::uint64_t kDefaultLimit = std::uint64_t{32} * 1024 * 1024;

    static TraceSetting Parse(std::string_view setting) noexcept;
};

} // namespace mft_utils
