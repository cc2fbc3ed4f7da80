#include "recorder/RecordingFolder.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace mft_der
{

using user_space_frameworks::UniqueHandle;

namespace
{
// Others may read what is being written, and the file may be moved up meanwhile.
constexpr DWORD kOthersMay = FILE_SHARE_READ | FILE_SHARE_DELETE;

UniqueHandle Open(const std::wstring &path, DWORD access, DWORD creation)
{
    const HANDLE file = CreateFileW(path.c_str(), access, kOthersMay, nullptr, creation,
                                    FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    return UniqueHandle(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

std::wstring OwnStem()
{
    return L"events-" + std::to_wstring(GetCurrentProcessId());
}

// Somebody writes to it. One that cannot be opened for another reason counts as well.
bool IsInUse(const std::wstring &path)
{
    return !Open(path, GENERIC_READ, OPEN_EXISTING) && GetLastError() != ERROR_FILE_NOT_FOUND;
}
} // namespace

RecordingFolder::RecordingFolder(std::wstring path, unsigned keptFiles) : folder(std::move(path)), kept(keptFiles)
{
    if (folder.empty() || folder.back() != L'\\')
    {
        folder += L'\\';
    }
}

bool RecordingFolder::Exists(const std::wstring &path) noexcept
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool RecordingFolder::WantsPictures() const
{
    return GetFileAttributesW((folder + TARN_RECORDING_WISH_FOR_PICTURES).c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::wstring RecordingFolder::NameOf(unsigned number) const
{
    std::wstring name = folder + stem;
    if (number != 0)
    {
        name.append(L".").append(std::to_wstring(number));
    }
    return name.append(L".bin");
}

bool RecordingFolder::ChooseName()
{
    if (!stem.empty())
    {
        return true;
    }
    RemoveOldOfOthers();
    stem = L"events";
    if (IsInUse(NameOf(0)))
    {
        stem = OwnStem();
        return !IsInUse(NameOf(0));
    }
    return true;
}

UniqueHandle RecordingFolder::NewFile()
{
    if (!ChooseName())
    {
        return {};
    }
    constexpr DWORD access = GENERIC_READ | GENERIC_WRITE;
    UniqueHandle file = Open(NameOf(0), access, CREATE_NEW);
    if (!file && GetLastError() == ERROR_FILE_EXISTS)
    {
        if (!MoveUp()) // somebody reads one of them and does not let it go
        {
            stem = OwnStem();
        }
        file = Open(NameOf(0), access, CREATE_NEW);
    }
    return file;
}

void RecordingFolder::RemoveNewest() const
{
    DeleteFileW(NameOf(0).c_str());
}

UniqueHandle RecordingFolder::SameFile() const
{
    return stem.empty() ? UniqueHandle() : Open(NameOf(0), GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING);
}

bool RecordingFolder::MoveUp() const
{
    for (unsigned number = kept; number-- > 0;)
    {
        const std::wstring from = NameOf(number);
        const bool moved = number + 1 >= kept ? DeleteFileW(from.c_str()) != FALSE
                                              : MoveFileExW(from.c_str(), NameOf(number + 1).c_str(),
                                                            MOVEFILE_REPLACE_EXISTING) != FALSE;
        if (!moved && GetLastError() != ERROR_FILE_NOT_FOUND)
        {
            return false;
        }
    }
    return true;
}

// Files that go by a process id have no successor that would move them up: as many as of another name survive.
void RecordingFolder::RemoveOldOfOthers() const
{
    std::vector<std::pair<ULONGLONG, std::wstring>> files;
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW((folder + L"events-*.bin").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
    {
        return;
    }
    do
    {
        const ULONGLONG written =
            ULONGLONG{found.ftLastWriteTime.dwHighDateTime} << 32U | found.ftLastWriteTime.dwLowDateTime;
        files.emplace_back(written, folder + found.cFileName);
    } while (FindNextFileW(search, &found) != FALSE);
    FindClose(search);
    std::sort(files.rbegin(), files.rend());
    for (std::size_t i = kept; i < files.size(); ++i)
    {
        if (!IsInUse(files[i].second))
        {
            DeleteFileW(files[i].second.c_str());
        }
    }
}

} // namespace mft_der
