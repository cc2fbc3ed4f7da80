// Sessions of the real transform with a planted fault: what their logs say to a person.
#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <functional>
#include <sstream>

#include "TemporaryFolder.h"
#include "ks/KsEventListener.h"
#include "tests/device/DepthServer.h"
#include "tools/diagnosis/ClockText.h"
#include "tools/diagnosis/TraceSummary.h"
#include "trace/DebugTraceSink.h"

namespace
{

using tarn_test::DepthServer;
using tarn_test::kDepth;
using tarn_test::kInfrared;

// The log of what `session` does at the level of information.
std::string LogOf(const std::function<void()> &session)
{
    const tarn_host_test::TemporaryFolder folder;
    const std::string path = folder.Text() + "\\session.log";
    EXPECT_TRUE(mft_utils::DebugTraceSink::Instance().Configure("4,file=" + path));
    session();
    mft_utils::DebugTraceSink::Instance().Close();
    std::ifstream file(tarn_host::ToPath(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The log as if the line with `mark`, and what follows, had come so many seconds later.
std::string WithPauseBefore(const std::string &log, const std::string &mark, int seconds)
{
    std::istringstream lines(log);
    std::string shifted;
    bool isLater = false;
    for (std::string line; std::getline(lines, line);)
    {
        isLater = isLater || line.find(mark) != std::string::npos;
        tarn_host::TextScanner scanner(line);
        std::int64_t timeUs = 0;
        EXPECT_TRUE(tarn_host::TakeTimeOfDay(scanner, timeUs)) << line;
        timeUs = (timeUs + (isLater ? seconds * tarn_host::kUsPerSecond : 0)) % tarn_host::kUsPerDay;
        shifted.append(tarn_host::TimeOfDayText(timeUs)).append(scanner.Rest()).append("\n");
    }
    EXPECT_TRUE(isLater) << mark;
    return shifted;
}

void StreamDepth(const tarn_sim::FaultPlan &faults, bool privacy, std::uint32_t frames)
{
    DepthServer server;
    server.camera->Controls().privacy = privacy;
    server.camera->Faults().SetPlan(faults);
    ASSERT_HR(S_OK, server.Run(kDepth, 640, 480, 30));
    if (faults.shortEvery == 0)
    {
        server.StepAndCollect(kDepth, frames);
    }
    else
    {
        ASSERT_HR(S_OK, server.camera->Pins().Step(0, frames));
        ASSERT_HR(S_OK, server.transform->ProcessMessage(MFT_MESSAGE_COMMAND_FLUSH, 0));
    }
    ASSERT_HR(S_OK, server.Stop(kDepth));
}

std::string RefusingCamera()
{
    return LogOf([] {
        DepthServer server;
        ASSERT_HR(S_OK, server.Run(kDepth, 640, 480, 30));
        tarn_sim::FaultPlan faults;
        faults.ksCall = {1, HRESULT_FROM_WIN32(ERROR_GEN_FAILURE), true};
        server.camera->Faults().SetPlan(faults);
        EXPECT_TRUE(
            FAILED(server.SetProperty(KSPROPERTY_TARN_DMFT_CONTROL_DEPTH_PRESETS, TARN_DEPTH_PRESET_LOW_POWER)));
        server.camera->Faults().SetPlan({});
    });
}

// A camera that does not come back from a call while its listener is to stop.
std::string StuckListener()
{
    class Observer final : public mft_core::KsEventsObserver
    {
      public:
        using KsEventsObserver::KsEventsObserver;
        void OnEvent() override
        {
            isInside = true;
            WaitForSingleObject(hold.Get(), 5000);
        }
        std::atomic<bool> isInside{false};
        user_space_frameworks::UniqueHandle hold{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    };
    return LogOf([] {
        const auto camera = user_space_frameworks::MakeCom<tarn_sim::SimulatedCamera>(DepthServer::SteppedTarnDepth());
        const auto observer = std::make_shared<Observer>("holding observer");
        const auto listener = user_space_frameworks::MakeCom<mft_core::KsEventListener>(
            KSEVENTSETID_VIDCAPTOSTI, ULONG{1}, "Auto update listener", DWORD{1});
        ASSERT_HR(S_OK, listener->RegisterObserver(observer));
        ASSERT_HR(S_OK, listener->Init(camera.Get()));
        ASSERT_HR(S_OK, listener->Start());
        ASSERT_EQ(1u, camera->Ks().SignalAutoUpdate());
        ASSERT_TRUE(tarn_test::WaitUntil([&] { return observer->isInside.load(); }));
        EXPECT_TRUE(FAILED(listener->Stop()));
        SetEvent(observer->hold.Get());
        EXPECT_TRUE(tarn_test::WaitUntil([&] { return SUCCEEDED(listener->Uninit()); }));
        EXPECT_TRUE(tarn_test::WaitUntil([&] { return tarn_test::ReferenceCount(listener) == 1; }));
    });
}

TEST(TraceSessionsTest, TheFirstLinesNameTheFault)
{
    tarn_sim::FaultPlan halfFrames;
    halfFrames.shortEvery = 1;
    const struct
    {
        const char *name;
        std::string log;
        const char *said;
    } sessions[] = {
        {"healthy", LogOf([] { StreamDepth({}, false, 8); }),
         "OK      nothing wrong in this session\n\nmodule   version"},
        {"control", RefusingCamera(), "WRONG   the camera refuses a control: "},
        {"privacy", LogOf([] { StreamDepth({}, true, 8); }), "WRONG   privacy is on for "},
        {"starved", WithPauseBefore(LogOf([] { StreamDepth({}, false, 8); }), "Active -> Stopped", 5),
         "WRONG   frames are missing: no more frames come from the camera after 8 frames, for 5.0 s"},
        {"format", LogOf([=] { StreamDepth(halfFrames, false, 8); }),
         "WRONG   frames have the wrong format: 1 refused, too short for its format"},
        {"listener", StuckListener(), "WRONG   the listener for the camera's events is stuck"},
    };
    for (const auto &[name, log, said] : sessions)
    {
        std::istringstream stream(log);
        std::ostringstream text;
        tarn_host::TraceSummary summary;
        summary.Read(stream);
        EXPECT_EQ(std::string(name) == "healthy", summary.Write(text)) << name;
        EXPECT_TRUE(text.str().starts_with(said)) << name << ":\n" << text.str();
    }
}

} // namespace
