// Progress on stderr while a run goes on.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace tarn_host
{

// On a terminal one line that renews itself, elsewhere a line per second; nothing when quiet. Each begins with the
// share of the whole, which is several parts of the same length, and the time that is left. Confined.
class ProgressLine
{
  public:
    using Clock = std::chrono::steady_clock;

    ProgressLine(bool quiet, std::size_t partCount);
    // Ends the line on a terminal.
    ~ProgressLine();
    ProgressLine(const ProgressLine &) = delete;
    ProgressLine &operator=(const ProgressLine &) = delete;

    // `shareOfPart` is 0 to 1.
    void Show(double shareOfPart, const std::string &text);
    void EndPart() noexcept;
    // Ends the line on a terminal, so that something else can be written.
    void Pause();

    // "42 %, 12 s left"; without the time as long as nothing tells it.
    static std::string Describe(double share, std::chrono::duration<double> elapsed);

  private:
    enum class Style
    {
        Quiet,
        Renewed,
        Lines
    };

    Style style;
    std::size_t parts;
    std::size_t partsDone = 0;
    Clock::time_point startedAt;
    Clock::time_point nextAt;
    std::size_t shownLength = 0;
};

} // namespace tarn_host
