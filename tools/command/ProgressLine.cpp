#include "tools/command/ProgressLine.h"

#include <io.h>

#include <algorithm>
#include <cstdio>

namespace tarn_host
{

ProgressLine::ProgressLine(bool quiet)
    : style(quiet                           ? Style::Quiet
            : _isatty(_fileno(stderr)) != 0 ? Style::Renewed
                                            : Style::Lines),
      nextAt(std::chrono::steady_clock::now())
{
}

ProgressLine::~ProgressLine()
{
    if (style == Style::Renewed && shownLength > 0)
    {
        std::fputc('\n', stderr);
    }
}

void ProgressLine::Show(const std::string &text)
{
    const auto now = std::chrono::steady_clock::now();
    if (style == Style::Quiet || now < nextAt)
    {
        return;
    }
    nextAt = now + std::chrono::milliseconds(style == Style::Renewed ? 100 : 1000);
    if (style == Style::Lines)
    {
        std::fprintf(stderr, "%s\n", text.c_str());
        return;
    }
    // Spaces wipe what a longer text left behind.
    const std::size_t width = std::max(shownLength, text.size());
    std::fprintf(stderr, "\r%-*s", static_cast<int>(width), text.c_str());
    std::fflush(stderr);
    shownLength = text.size();
}

} // namespace tarn_host
