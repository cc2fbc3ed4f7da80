// Where the lines of the debug sink go: the debugger, standard error or a file.
#pragma once

#include <windows.h>

#include "trace/TraceFile.h"
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
    // The module's own record goes in front of its first line there, and of the first one in each new file.
    void Write(const TraceText &line) noexcept;

  private:
    void WriteLine(const TraceText &line) noexcept;

    TraceFile file;
    HANDLE standardError = nullptr; // null, and no file: lines go to the debugger
    bool moduleRecordDue = false;
};

} // namespace mft_utils
