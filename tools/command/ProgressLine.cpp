#include "tools/command/ProgressLine.h"

#include <io.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace tarn_host
{

namespace
{

constexpr double kLeastShare = 0.01; // Before that much is done the time left is anybody's guess.

std::string DurationText(double seconds)
{
    const auto whole = static_cast<long long>(std::ceil(seconds));
    if (whole < 120)
    {
        return std::to_string(whole) + " s";
    }
    const long long minutes = (whole + 59) / 60;
    return minutes < 120 ? std::to_string(minutes) + " min" : std::to_string((minutes + 59) / 60) + " h";
}

} // namespace

ProgressLine::ProgressLine(bool quiet, std::size_t partCount)
    : style(quiet                           ? Style::Quiet
            : _isatty(_fileno(stderr)) != 0 ? Style::Renewed
                                            : Style::Lines),
      parts(std::max<std::size_t>(partCount, 1)), startedAt(Clock::now()), nextAt(startedAt)
{
}

ProgressLine::~ProgressLine()
{
    Pause();
}

void ProgressLine::Show(double shareOfPart, const std::string &text)
{
    const auto now = Clock::now();
    if (style == Style::Quiet || now < nextAt)
    {
        return;
    }
    nextAt = now + std::chrono::milliseconds(style == Style::Renewed ? 100 : 1000);
    const double done = static_cast<double>(partsDone) + std::clamp(shareOfPart, 0.0, 1.0);
    const std::string line = Describe(done / static_cast<double>(parts), now - startedAt) + "   " + text;
    if (style == Style::Lines)
    {
        std::fprintf(stderr, "%s\n", line.c_str());
        std::fflush(stderr);
        return;
    }
    // Spaces wipe what a longer text left behind.
    const std::size_t width = std::max(shownLength, line.size());
    std::fprintf(stderr, "\r%-*s", static_cast<int>(width), line.c_str());
    std::fflush(stderr);
    shownLength = line.size();
}

void ProgressLine::EndPart() noexcept
{
    ++partsDone;
}

void ProgressLine::Pause()
{
    if (style == Style::Renewed && shownLength > 0)
    {
        std::fputc('\n', stderr);
        shownLength = 0;
    }
}

std::string ProgressLine::Describe(double share, std::chrono::duration<double> elapsed)
{
    std::string text = std::to_string(static_cast<int>(share * 100)) + " %";
    if (share >= kLeastShare)
    {
        text += ", " + DurationText(elapsed.count() * (1 - share) / share) + " left";
    }
    return text;
}

} // namespace tarn_host
