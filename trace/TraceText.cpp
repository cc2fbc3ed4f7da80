#include "trace/TraceText.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace mft_utils
{

void TraceText::Append(std::string_view text) noexcept
{
    const std::size_t room = kCapacity - 1 - length;
    const std::size_t copied = std::min(room, text.size());
    if (copied != 0)
    {
        std::memcpy(buffer.data() + length, text.data(), copied);
    }
    length += copied;
    buffer[length] = '\0';
    if (copied < text.size())
    {
        MarkAsCut();
    }
}

void TraceText::AppendFormat(const char *format, ...) noexcept
{
    std::va_list arguments;
    va_start(arguments, format);
    AppendFormatList(format, arguments);
    va_end(arguments);
}

void TraceText::AppendFormatList(const char *format, std::va_list arguments) noexcept
{
    if (format == nullptr)
    {
        return;
    }
    const std::size_t room = kCapacity - length;
    const int wanted = std::vsnprintf(buffer.data() + length, room, format, arguments);
    if (wanted < 0)
    {
        buffer[length] = '\0';
        return;
    }
    if (static_cast<std::size_t>(wanted) < room)
    {
        length += static_cast<std::size_t>(wanted);
        return;
    }
    length = kCapacity - 1;
    MarkAsCut();
}

void TraceText::MarkAsCut() noexcept
{
    std::fill(buffer.begin() + kCapacity - 4, buffer.begin() + kCapacity - 1, '.');
    buffer[kCapacity - 1] = '\0';
}

} // namespace mft_utils
