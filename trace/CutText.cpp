#include "trace/CutText.h"

#include <cstring>

namespace mft_utils
{

std::size_t CutLength(const char *text, std::size_t limit) noexcept
{
    std::size_t length = strnlen(text, limit + 1);
    if (length <= limit)
    {
        return length;
    }
    length = limit;
    while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80)
    {
        --length;
    }
    return length;
}

TextCutter::Piece TextCutter::Fit(const char *text) noexcept
{
    const std::size_t length = CutLength(text, kMaxBytes - 1);
    if (text[length] == '\0')
    {
        return {text, length + 1};
    }
    if (used)
    {
        return {"...", sizeof("...")};
    }
    used = true;
    std::memcpy(cut.data(), text, length);
    cut[length] = '\0';
    return {cut.data(), length + 1};
}

} // namespace mft_utils
