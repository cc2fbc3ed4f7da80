// Progress on stderr while a run goes on.
#pragma once

#include <chrono>
#include <string>

namespace tarn_host
{

// On a terminal one line that renews itself, elsewhere a line per second; nothing when quiet. Confined.
class ProgressLine
{
  public:
    explicit ProgressLine(bool quiet);
    // Ends the line on a terminal.
    ~ProgressLine();
    ProgressLine(const ProgressLine &) = delete;
    ProgressLine &operator=(const ProgressLine &) = delete;

    void Show(const std::string &text);

  private:
    enum class Style
    {
        Quiet,
        Renewed,
        Lines
    };

    Style style;
    std::chrono::steady_clock::time_point nextAt;
    std::size_t shownLength = 0;
};

} // namespace tarn_host
