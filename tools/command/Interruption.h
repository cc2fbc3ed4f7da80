// Ctrl-C: a run ends early and tells its results, everything else ends at once.
#pragma once

namespace tarn_host
{

// While one lives, the first Ctrl-C only asks the run to end. One at a time. Thread-safe.
class Interruption
{
  public:
    Interruption() noexcept;
    ~Interruption();
    Interruption(const Interruption &) = delete;
    Interruption &operator=(const Interruption &) = delete;

    // From here on Ctrl-C, and Ctrl-Break, end the process with ExitCode::Interrupted; call once.
    static void Install() noexcept;
    // What Ctrl-C does.
    static void Ask() noexcept;
    // Since the latest one was made.
    static bool IsAsked() noexcept;
};

} // namespace tarn_host
