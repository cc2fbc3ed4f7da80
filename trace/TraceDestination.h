// Where the lines of the debug sink go: the debugger, standard error or a file.
#pragma once

#include <windows.h>

#include "trace/TraceSetting.h"
#include "trace/TraceText.h"

namespace mft_utils
{

// Needs no destruction at the end of the process. Confined.
class TraceDestination
{
  public:
    // Closes what was open before. False when the file cannot be opened; lines then go to the debugger.
    bool Open(const TraceSetting &setting) noexcept;
    void Close() noexcept;
    void Write(const TraceText &line) noexcept;

  private:
    HANDLE file = nullptr;    // null sends lines to the debugger
    bool fileIsOwned = false; // standard error is not
};

} // namespace mft_utils
