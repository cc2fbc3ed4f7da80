// The folder that recordings go to, and the names of the files in it.
#pragma once

#include <windows.h>

#include <string>

#include "base/UniqueHandle.h"
#include "tarn/event_recording.h"

namespace mft_der
{

// Where the module records when the folder is there. It is never created.
inline constexpr wchar_t kRecordingFolder[] = TARN_RECORDING_FOLDER;

// "events.bin" is the newest recording; earlier ones are "events.1.bin" and so on. A process that finds it in use takes
// "events-<process id>.bin". Confined.
class RecordingFolder
{
  public:
    // `keptFiles` of each name survive, the newest included.
    RecordingFolder(std::wstring path, unsigned keptFiles);

    static bool Exists(const std::wstring &path) noexcept;
    // Whether the user asks for pixels.
    bool WantsPictures() const;

    // Makes an empty newest file; earlier ones move up. On failure the result is null and GetLastError() tells why;
    // where a file could not be moved, some may have been already.
    user_space_frameworks::UniqueHandle NewFile();
    // One that turned out to be of no use.
    void RemoveNewest() const;
    // The newest file again, once it was closed.
    user_space_frameworks::UniqueHandle SameFile() const;

  private:
    std::wstring NameOf(unsigned number) const; // 0: the newest
    bool ChooseName();
    bool MoveUp() const;
    void RemoveOldOfOthers() const;

    std::wstring folder; // with a backslash at the end
    std::wstring stem;   // empty until a name was chosen
    unsigned kept;
};

} // namespace mft_der
