// A line of text built on the stack: no allocation, cut when full.
#pragma once

#include <array>
#include <cstdarg>
#include <cstddef>
#include <string_view>

#include "trace/Trace.h"

namespace mft_utils
{

// Always terminated. A line that is cut ends in "...". Confined.
class TraceText
{
  public:
    static constexpr std::size_t kCapacity = 1024;

    TraceText() noexcept = default;
    explicit TraceText(std::string_view text) noexcept
    {
        Append(text);
    }
    TraceText(const TraceText &) = delete;
    TraceText &operator=(const TraceText &) = delete;

    void Append(std::string_view text) noexcept;
    void AppendFormat(const char *format, ...) noexcept TARN_PRINTF_LIKE(2, 3);
    void AppendFormatList(const char *format, std::va_list arguments) noexcept;

    const char *Text() const noexcept
    {
        return buffer.data();
    }
    std::size_t Length() const noexcept
    {
        return length;
    }

  private:
    void MarkAsCut() noexcept;

    std::array<char, kCapacity> buffer{};
    std::size_t length = 0;
};

} // namespace mft_utils
