// Recordings in a folder of the test's own, read back as a user would.
#pragma once

#include <algorithm>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/tools/TemporaryFolder.h"
#include "tools/recording/RecordedSession.h"

namespace tarn_test
{

class RecordingsFolder
{
  public:
    // As the module takes it.
    std::wstring Path() const { return folder.Path().native() + L"\\"; }
    std::filesystem::path File(const wchar_t *name = L"events.bin") const { return folder.Path() / name; }
    std::vector<std::filesystem::path> Files() const
    {
        std::vector<std::filesystem::path> files;
        for (const auto &entry : std::filesystem::directory_iterator(folder.Path()))
        {
            if (entry.path().extension() == ".bin")
            {
                files.push_back(entry.path());
            }
        }
        return files;
    }
    std::vector<tarn_recording::RecordedSession> Sessions() const
    {
        return tarn_recording::RecordedSession::Open(Files());
    }

  private:
    tarn_host_test::TemporaryFolder folder;
};

// The damages but those that an abrupt end may leave.
inline std::string DamageOf(const tarn_recording::RecordedSession &session, bool endedAbruptly = false)
{
    std::string text;
    for (const auto &damage : session.Damages())
    {
        if (!endedAbruptly || damage.kind != tarn_recording::DamageKind::TornRecord)
        {
            text += damage.ToText() + "\n";
        }
    }
    return text;
}

inline std::vector<tarn_recording::Record> RecordsOf(const tarn_recording::RecordedSession &session, std::uint16_t type,
                                                     int subject = -1)
{
    std::vector<tarn_recording::Record> found;
    std::copy_if(session.Records().begin(), session.Records().end(), std::back_inserter(found), [&](const auto &one) {
        return one.header.type == type && (subject < 0 || one.header.subject == subject);
    });
    return found;
}

} // namespace tarn_test
