#include "recorder/EventRecording.h"

#include <atomic>
#include <thread>

#include "recorder/RecordingShare.h"
#include "tests/recorder/Recordings.h"
#include "tests/support/Expect.h"

using mft_der::RecordBuilder;
using mft_der::RecordingLimits;
using mft_der::RecordingShare;
using tarn_test::RecordingsFolder;

namespace
{

constexpr std::uint16_t kOwnType = 200;
constexpr RecordingLimits kSmall{65536, 131072, 131072, 524288, 4};

std::uint64_t WriteOne(mft_der::EventRecording &recording, std::uint64_t number, std::size_t size)
{
    RecordBuilder values;
    values.U64(TARN_VALUE_NUMBER, number);
    values.Block(TARN_VALUE_DATA, std::vector<std::uint8_t>(size, static_cast<std::uint8_t>(number)));
    return recording.Write({.type = kOwnType}, values);
}

// Every record of the session is in a file or counted as dropped, none twice, and the values are those written.
void ExpectNothingLost(const tarn_recording::RecordedSession &session, std::uint64_t written)
{
    std::uint64_t found = 0;
    for (const auto &record : tarn_test::RecordsOf(session, kOwnType))
    {
        const auto values = record.Values();
        const auto data = values.Find(TARN_VALUE_DATA)->Payload();
        const auto number = static_cast<std::uint8_t>(*values.Unsigned(TARN_VALUE_NUMBER));
        EXPECT_EQ(static_cast<std::ptrdiff_t>(data.size()), std::count(data.begin(), data.end(), number));
        ++found;
    }
    std::uint64_t dropped = 0;
    for (const auto &record : tarn_test::RecordsOf(session, TARN_RECORD_DROPPED))
    {
        dropped += *record.Values().Unsigned(TARN_VALUE_RECORDS);
    }
    std::uint64_t counted = 0;
    for (const auto &file : session.Files())
    {
        counted += file.header.droppedRecords;
        EXPECT_EQ(file.header.usedBytes, file.size);
    }
    EXPECT_EQ(counted, dropped);
    EXPECT_EQ(written, found + dropped);
}

TEST(EventRecordingTest, ManyThreadsFillFilesAndNothingIsLostUncounted)
{
    const RecordingsFolder folder;
    std::atomic<std::uint64_t> written{0};
    {
        const auto share = RecordingShare::In(folder.Path(), kSmall);
        ASSERT_NE(nullptr, share);
        std::vector<std::thread> writers;
        for (std::uint64_t thread = 0; thread < 4; ++thread)
        {
            writers.emplace_back([&, thread] {
                for (std::uint64_t i = 0; !std::filesystem::exists(folder.File(L"events.2.bin")); ++i)
                {
                    WriteOne(share->Recording(), i, i % 100 == 99 ? 70'000 : 300 + 7 * thread + i % 37);
                    ++written;
                }
            });
        }
        for (std::thread &writer : writers)
        {
            writer.join();
        }
    }
    const auto sessions = folder.Sessions();
    ASSERT_EQ(1u, sessions.size());
    EXPECT_EQ("", tarn_test::DamageOf(sessions.front()));
    EXPECT_EQ(3u, sessions.front().Files().size());
    ExpectNothingLost(sessions.front(), written);
}

TEST(EventRecordingTest, TheNewestFilesSurviveAndTheirSizeIsBounded)
{
    const RecordingsFolder folder;
    std::uint64_t last = 0;
    {
        const auto share = RecordingShare::In(folder.Path(), kSmall);
        ASSERT_NE(nullptr, share);
        for (std::uint64_t i = 0; last == 0 || !std::filesystem::exists(folder.File(L"events.3.bin")) || i < 6000; ++i)
        {
            last = WriteOne(share->Recording(), i, 1000);
        }
    }
    ASSERT_EQ(4u, folder.Files().size());
    for (const auto &file : folder.Files())
    {
        EXPECT_LE(std::filesystem::file_size(file), kSmall.fileBytes);
    }
    const auto session = tarn_recording::RecordedSession::Open({folder.File()});
    const auto &newest = session.front();
    EXPECT_LE(last, newest.Records().back().header.sequence + newest.Files().back().header.droppedRecords + 1);
}

TEST(EventRecordingTest, TheNextTransformGoesOnInTheSameFileAndAnotherSessionMovesItUp)
{
    const RecordingsFolder folder;
    for (std::uint64_t i = 0; i < 3; ++i)
    {
        const auto share = RecordingShare::In(folder.Path(), kSmall);
        ASSERT_NE(nullptr, share);
        EXPECT_EQ(i + 1, share->Recording().NewTransform());
        WriteOne(share->Recording(), i, 60'000); // into another stretch
    }
    ASSERT_EQ(1u, folder.Files().size());
    ExpectNothingLost(folder.Sessions().front(), 3);
    EXPECT_EQ("", tarn_test::DamageOf(folder.Sessions().front()));

    RecordingShare::ForgetSessions(); // as when the module is unloaded
    RecordingShare::In(folder.Path(), kSmall).reset();
    EXPECT_EQ(2u, folder.Sessions().size());
    ExpectNothingLost(tarn_recording::RecordedSession::Open({folder.File(L"events.1.bin")}).front(), 3);
}

TEST(EventRecordingTest, WhatCannotBeWrittenIsOffAndAFileInUseIsLeftAlone)
{
    EXPECT_EQ(nullptr, RecordingShare::In(L"c:\\no such folder\\"));
    for (const DWORD othersMay : {DWORD{0}, DWORD{FILE_SHARE_READ}}) // a writer, and a reader that lets nobody move it
    {
        const RecordingsFolder folder;
        user_space_frameworks::UniqueHandle locked(CreateFileW(folder.File().c_str(), GENERIC_READ, othersMay, nullptr,
                                                               CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
        const std::wstring own = L"events-" + std::to_wstring(GetCurrentProcessId()) + L".bin";
        {
            const auto share = RecordingShare::In(folder.Path(), kSmall);
            ASSERT_NE(nullptr, share);
            WriteOne(share->Recording(), 0, 10);
        }
        locked.Reset();
        EXPECT_EQ(0u, std::filesystem::file_size(folder.File()));
        ExpectNothingLost(tarn_recording::RecordedSession::Open({folder.File(own.c_str())}).front(), 1);
    }
}

} // namespace
