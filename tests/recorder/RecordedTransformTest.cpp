#include "recorder/DeviceEventRecorder.h"

#include <fstream>

#include "device/TarnDepthDeviceMft.h"
#include "tests/device/DepthServer.h"
#include "tests/recorder/Recordings.h"
#include "tests/support/HandleCount.h"

using tarn_recording::Record;
using tarn_recording::RecordedSession;
using tarn_test::DepthFrameServer;
using tarn_test::kDepth;
using tarn_test::kInfrared;
using tarn_test::RecordingsFolder;
using tarn_test::RecordsOf;
using user_space_frameworks::MakeCom;

namespace
{

constexpr wchar_t kFolderVariable[] = L"TARN_TEST_RECORDINGS";

ComPtr<IMFDeviceTransform> RecordedTransform(const std::wstring &folder)
{
    return MakeCom<mft_core::TarnDepthDeviceMft>(folder.c_str());
}

// A session whose frames are stepped; `play` runs with the server.
template <class Play>
std::vector<RecordedSession> RecordSession(const RecordingsFolder &folder, Play &&play)
{
    {
        DepthFrameServer server(RecordedTransform(folder.Path()),
                                MakeCom<tarn_sim::SimulatedCamera>(tarn_test::DepthServer::SteppedTarnDepth()));
        play(server);
    }
    return folder.Sessions();
}

const Record *EndOf(const RecordedSession &session, const Record &call)
{
    return session.EndOf(*session.Find(call.header.sequence));
}

tarn_recording::ValueList SampleOf(const Record &record)
{
    const auto buffer = record.Values().Items(TARN_VALUE_BUFFER);
    return (buffer.Find(TARN_VALUE_SAMPLE) ? buffer : record.Values()).Items(TARN_VALUE_SAMPLE);
}

TEST(RecordedTransformTest, ASessionIsToldCallByCallAndEachIsJoinedWithWhatItCaused)
{
    const RecordingsFolder folder;
    const auto sessions = RecordSession(folder, [](DepthFrameServer &server) {
        ASSERT_HR(S_OK, server.Run(kDepth, 640, 480, 30));
        ASSERT_HR(S_OK, server.Run(kInfrared, 640, 480, 30));
        server.StepAndCollect(kDepth, 3);
        server.WaitForSamples(kInfrared, 3);
        EXPECT_HR(S_OK, server.SetProperty(KSPROPERTY_TARN_DMFT_CONTROL_DEPTH_PRESETS, 1));
        // The handler asks the camera what is wrong.
        const auto asked = server.camera->Ks().Traffic().size();
        EXPECT_EQ(1u, server.camera->Ks().SignalAutoUpdate());
        EXPECT_TRUE(tarn_test::WaitUntil([&] { return server.camera->Ks().Traffic().size() > asked; }));
        EXPECT_HR(E_POINTER, server.transform->GetStreamCount(nullptr, nullptr));
    });
    ASSERT_EQ(1u, sessions.size());
    const RecordedSession &session = sessions.front();
    EXPECT_EQ("", tarn_test::DamageOf(session));
    EXPECT_FALSE(session.HoldsPictures());

    for (const Record &call : session.Records())
    {
        if (call.header.type == TARN_RECORD_CALL || call.header.type == TARN_RECORD_KS_CALL)
        {
            ASSERT_NE(nullptr, session.EndOf(call)) << call.header.sequence;
            EXPECT_EQ(call.header.subject, session.EndOf(call)->header.subject);
            EXPECT_EQ(call.header.thread, session.EndOf(call)->header.thread);
        }
    }
    const auto subjects = [&](std::uint16_t subject) { return RecordsOf(session, TARN_RECORD_CALL, subject); };
    EXPECT_EQ(1u, subjects(TARN_CALL_INITIALIZE_TRANSFORM).size()); // though the base has a part in it
    EXPECT_HR(E_POINTER, EndOf(session, subjects(TARN_CALL_GET_STREAM_COUNT).at(0))->header.result);

    // Frames: what went in, in order, and each output's samples.
    const auto inputs = subjects(TARN_CALL_PROCESS_INPUT);
    ASSERT_EQ(3u, inputs.size());
    std::map<std::uint64_t, std::uint64_t> numbers; // by output
    for (const Record &output : subjects(TARN_CALL_PROCESS_OUTPUT))
    {
        const Record &end = *EndOf(session, output);
        if (end.header.result == S_OK)
        {
            const auto number = SampleOf(end).Unsigned(TARN_VALUE_NUMBER).value_or(0);
            EXPECT_EQ(++numbers[*end.Values().Items(TARN_VALUE_BUFFER).Unsigned(TARN_VALUE_STREAM)], number);
            EXPECT_EQ(SampleOf(inputs.at(number - 1)).Signed(TARN_VALUE_TIME), SampleOf(end).Signed(TARN_VALUE_TIME));
            EXPECT_FALSE(SampleOf(end).Items(TARN_VALUE_ATTRIBUTES).begin() == std::default_sentinel);
        }
    }
    EXPECT_EQ((std::map<std::uint64_t, std::uint64_t>{{kDepth, 3}, {kInfrared, 3}}), numbers);
    const auto events = RecordsOf(session, TARN_RECORD_EVENT);
    EXPECT_EQ(6, std::count_if(events.begin(), events.end(), [](const Record &event) {
                  return event.Values().Unsigned(TARN_VALUE_EVENT_TYPE) == std::uint64_t{METransformHaveOutput};
              }));

    // What the camera is asked belongs to what it is asked for.
    std::map<std::uint16_t, int> causes;
    for (const Record &call : RecordsOf(session, TARN_RECORD_KS_CALL, TARN_KS_TO_CAMERA | TARN_KS_PROPERTY))
    {
        const Record *const cause = session.Find(call.header.entry);
        ASSERT_NE(nullptr, cause) << call.header.sequence;
        ++causes[cause->header.type];
    }
    EXPECT_LT(0, causes[TARN_RECORD_CALL]);         // the start
    EXPECT_LT(0, causes[TARN_RECORD_KS_CALL]);      // the application's preset
    EXPECT_LT(0, causes[TARN_RECORD_DEVICE_EVENT]); // the camera's news
    EXPECT_EQ(1u, RecordsOf(session, TARN_RECORD_DEVICE_EVENT).size());
    EXPECT_EQ(1u, RecordsOf(session, TARN_RECORD_CAMERA, TARN_CAMERA_STREAM).size());
    EXPECT_LT(3u, RecordsOf(session, TARN_RECORD_CAMERA, TARN_CAMERA_MEDIA_TYPE).size());
}

TEST(RecordedTransformTest, PixelsAreRecordedWhenAskedForButNoneOfAPrivateFrame)
{
    const RecordingsFolder folder;
    std::ofstream(folder.File(L"frames"));
    tarn_test::Bytes shown;
    const auto sessions = RecordSession(folder, [&](DepthFrameServer &server) {
        ASSERT_HR(S_OK, server.Run(kDepth, 640, 480, 30));
        server.StepAndCollect(kDepth, 1);
        server.camera->Controls().privacy = true;
        server.StepAndCollect(kDepth, 2);
        server.camera->Controls().privacy = false;
        shown = tarn_test::BytesOf(server.StepAndCollect(kDepth, 1).at(0));
    });
    const RecordedSession &session = sessions.front();
    EXPECT_TRUE(session.HoldsPictures());
    const auto pixels = RecordsOf(session, TARN_RECORD_PIXELS);
    const auto hashes = RecordsOf(session, TARN_RECORD_OUTPUT_HASH);
    ASSERT_EQ(2u, pixels.size());
    ASSERT_EQ(2u, hashes.size());
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const BYTE byte : shown)
    {
        hash = (hash ^ byte) * 0x100000001B3;
    }
    for (const std::size_t i : {0u, 1u})
    {
        EXPECT_EQ(i == 0 ? 1u : 4u, pixels[i].Values().Unsigned(TARN_VALUE_NUMBER));
        EXPECT_EQ(i == 0 ? 1u : 4u, hashes[i].Values().Unsigned(TARN_VALUE_NUMBER));
        const auto input = session.Find(pixels[i].header.entry);
        EXPECT_EQ(SampleOf(*input).Unsigned(TARN_VALUE_LENGTH),
                  pixels[i].Values().Find(TARN_VALUE_PIXELS)->Payload().size());
    }
    EXPECT_EQ(hash, hashes[1].Values().Unsigned(TARN_VALUE_HASH));
    for (const Record &input : RecordsOf(session, TARN_RECORD_CALL, TARN_CALL_PROCESS_INPUT))
    {
        const auto number = SampleOf(input).Unsigned(TARN_VALUE_NUMBER);
        EXPECT_EQ(number == 2u || number == 3u, SampleOf(input).Unsigned(TARN_VALUE_BLANKED).has_value());
    }
}

// For the test below: a process that streams until it is ended.
TEST(RecordedTransformTest, DISABLED_StreamWithoutEnd)
{
    wchar_t folder[1024]{};
    ASSERT_NE(0u, GetEnvironmentVariableW(kFolderVariable, folder, 1024));
    auto configuration = tarn_sim::CameraConfiguration::TarnDepth();
    configuration.pacing = tarn_sim::Pacing::AsFastAsTaken;
    DepthFrameServer server(RecordedTransform(folder), MakeCom<tarn_sim::SimulatedCamera>(configuration));
    ASSERT_HR(S_OK, server.Run(kDepth, 320, 240, 30));
    ASSERT_HR(S_OK, server.Run(kInfrared, 320, 240, 30));
    for (;;)
    {
        server.CollectAll(kDepth);
        server.CollectAll(kInfrared);
    }
}

class StreamingProcess
{
  public:
    explicit StreamingProcess(const RecordingsFolder &folder)
    {
        SetEnvironmentVariableW(kFolderVariable, folder.Path().c_str());
        wchar_t program[1024]{};
        GetModuleFileNameW(nullptr, program, 1024);
        std::wstring line = L"\"" + std::wstring(program) +
                            L"\" --gtest_also_run_disabled_tests --gtest_filter=*.DISABLED_StreamWithoutEnd";
        STARTUPINFOW startup{};
        startup.cb = sizeof(startup);
        startup.dwFlags = STARTF_USESTDHANDLES; // its words are nobody's
        PROCESS_INFORMATION process{};
        EXPECT_TRUE(
            CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process));
        CloseHandle(process.hThread);
        handle = user_space_frameworks::UniqueHandle(process.hProcess);
        id = process.dwProcessId;
    }
    void End()
    {
        TerminateProcess(handle.Get(), 9);
        WaitForSingleObject(handle.Get(), INFINITE);
    }

    user_space_frameworks::UniqueHandle handle;
    DWORD id = 0;
};

std::size_t FramesIn(const std::filesystem::path &file)
{
    std::error_code error;
    if (!std::filesystem::exists(file, error))
    {
        return 0;
    }
    const auto sessions = RecordedSession::Open({file});
    return RecordsOf(sessions.front(), TARN_RECORD_CALL, TARN_CALL_PROCESS_INPUT).size();
}

TEST(RecordedTransformTest, WhatWasRecordedBeforeAProcessIsEndedIsInTheFile)
{
    constexpr int rounds = 3;
    for (int round = 0; round < rounds; ++round)
    {
        const RecordingsFolder folder;
        // In the first round the file is in use: the other process has one of its own.
        const auto ours = round == 0 ? mft_der::RecordingShare::In(folder.Path()) : nullptr;
        StreamingProcess process(folder);
        const auto file =
            ours == nullptr ? folder.File() : folder.File((L"events-" + std::to_wstring(process.id) + L".bin").c_str());
        const std::size_t wanted = 3 + 20 * static_cast<std::size_t>(round);
        EXPECT_TRUE(tarn_test::WaitUntil([&] { return FramesIn(file) >= wanted; }, std::chrono::seconds(60)));
        process.End();

        const auto sessions = RecordedSession::Open({file});
        EXPECT_EQ("", tarn_test::DamageOf(sessions.front(), true)) << "round " << round;
        EXPECT_LE(wanted, FramesIn(file));
        std::uint64_t expected = 0;
        for (const Record &record : sessions.front().Records())
        {
            EXPECT_LT(expected, record.header.sequence);
            expected = record.header.sequence;
        }
    }
}

} // namespace
