// What is told of a session: summary, timeline, trace events, pictures, differences.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <sstream>

#include <unistd.h>

#include "sim/RecordedFrames.h"
#include "tests/recording/StreamingSession.h"
#include "tools/events/FrameExport.h"
#include "tools/events/SessionComparison.h"
#include "tools/events/SessionSummary.h"
#include "tools/events/SummaryReport.h"
#include "tools/events/Timeline.h"
#include "tools/events/TraceEvents.h"

using namespace tarn_host;
using namespace tarn_tests;

namespace
{

RecordedSession SessionOf(const SessionPlan &plan)
{
    return RecordedSession::FromBytes({StreamingSession(plan).File()});
}

std::string Joined(const std::vector<std::string> &lines)
{
    std::string text;
    for (const std::string &line : lines)
    {
        text += line + '\n';
    }
    return text;
}

TEST(SessionSummaryTest, CountsAndTimesFramesOfAHealthySession)
{
    const auto summary = SessionSummary::Of(SessionOf({}));

    EXPECT_EQ("", Joined(summary.problems));
    EXPECT_EQ("DepthTransform", summary.transforms.at(1));
    ASSERT_EQ(1U, summary.outputs.size());
    const OutputBooks &output = summary.outputs[0];
    EXPECT_EQ("D16 4x2@30", output.type.ToText());
    EXPECT_EQ(20U, output.framesIn);
    EXPECT_EQ(20U, output.framesOut);
    EXPECT_EQ(0U, output.lost + output.between + output.cutOff + output.unexpected);
    EXPECT_NEAR(30, output.FramesPerSecond(), 0.01);
    // In: 1 ms to the return, 1 ms to the event, 1 ms to the call, 1 ms to its return.
    EXPECT_EQ(20'000U, Percentile(output.times.toAnnounced, 0.99));
    EXPECT_EQ(40'000U, Percentile(output.times.total, 0.5));
    const std::string laser = "KsProperty KSPROPERTYSETID_TARN_DEPTH_CONTROL LASER_POWER (1) GET|TOPOLOGY";
    EXPECT_EQ(1U, summary.applicationKs.at(laser).count);
    EXPECT_EQ(1U, summary.cameraKs.at(laser).count);
}

TEST(SessionSummaryTest, TellsWhatLooksWrong)
{
    struct
    {
        SessionPlan plan;
        const char *problem;
    } const cases[]{
        {{.lostFrame = 7}, "T1 output 0 (D16 4x2@30): 1 of 20 frames lost"},
        {{.lostFrame = 20, .hungInput = 20}, "never returned: at 0.673 s, thread 200, 0.002 s before"},
        {{.controlResult = 0x80070490}, "failed 1 of 1 times, first at 0.0"},
        {{.controlResult = 0x80070490}, "HRESULT_FROM_WIN32(ERROR_NOT_FOUND) (0x80070490)"},
        {{.frames = 0}, "T1 output 0 (D16 4x2@30) was started and delivered nothing; the camera gave no frame"},
    };
    for (const auto &one : cases)
    {
        const auto summary = SessionSummary::Of(SessionOf(one.plan));
        EXPECT_NE(std::string::npos, Joined(summary.problems).find(one.problem)) << Joined(summary.problems);
    }
    // A frame that is on its way when the output stops is no loss.
    EXPECT_EQ(1U, SessionSummary::Of(SessionOf({.lostFrame = 20})).outputs[0].cutOff);
}

TEST(TimelineTest, FiltersWhatIsAskedFor)
{
    const RecordedSession session = SessionOf({.hungInput = 3, .controlResult = 0x80004005});
    struct
    {
        RecordFilter filter;
        long lines;
    } const cases[]{
        {{}, static_cast<long>(session.Records().size())},
        {{.threads = {kCaptureThread}}, 20 * 2 - 1 + 20},
        {{.kinds = {RecordKind::State}}, 7},
        {{.kinds = {RecordKind::Ks, RecordKind::Camera}}, 4},
        {{.failuresOnly = true}, 5},
        {{.toSeconds = 0.0025}, 2},
    };
    for (const auto &one : cases)
    {
        std::ostringstream text;
        WriteTimeline(session, one.filter, text);
        EXPECT_EQ(one.lines, std::ranges::count(text.str(), '\n')) << text.str();
        std::ostringstream json;
        WriteTimelineJson(session, one.filter, json);
        EXPECT_EQ(one.lines, static_cast<long>(nlohmann::json::parse(json.str()).size()));
    }
}

TEST(TraceEventsTest, SpansNestAndFramesFlow)
{
    std::ostringstream text;
    std::vector<RecordedSession> sessions;
    sessions.push_back(SessionOf({}));
    WriteTraceEvents(sessions, text);
    const auto events = nlohmann::json::parse(text.str())["traceEvents"];

    std::map<std::string, int> phases;
    std::map<int, double> flowStarts;
    nlohmann::json application;
    for (const auto &event : events)
    {
        const std::string phase = event["ph"];
        ++phases[phase];
        if (phase == "s")
        {
            flowStarts[event["id"]] = event["ts"];
        }
        else if (phase == "f")
        {
            EXPECT_NEAR(3000, event["ts"].get<double>() - flowStarts.at(event["id"]), 0.1);
        }
        else if (phase == "X" && event["cat"] == "ks")
        {
            application = event;
        }
        else if (phase == "X" && event["cat"] == "ks to camera")
        {
            EXPECT_EQ(application["tid"], event["tid"]);
            EXPECT_GT(event["ts"], application["ts"]);
            EXPECT_LT(event["ts"].get<double>() + event["dur"].get<double>(),
                      application["ts"].get<double>() + application["dur"].get<double>());
        }
    }
    EXPECT_EQ(3 + 2 + 2 * 20, phases["X"]);
    EXPECT_EQ(20, phases["s"]);
    EXPECT_EQ(20, phases["f"]);
}

TEST(FrameExportTest, PicturesPlayAsTheyWereRecorded)
{
    const std::vector<std::uint16_t> planes{1, 2, 3, 4, 5, 6, 7, 1023, 80, 160, 240, 8, 16, 24, 32, 65535};
    SessionPlan plan{.frames = 2};
    plan.pixels.resize(32);
    std::memcpy(plan.pixels.data(), planes.data(), 32);
    std::vector<RecordedSession> sessions;
    sessions.push_back(SessionOf(plan));
    const auto folder = std::filesystem::temp_directory_path() / ("tarn-frames-" + std::to_string(getpid()));

    EXPECT_EQ(2U, ExportFrames(sessions, folder).frames);

    tarn_sim::RecordedFrames frames(folder);
    EXPECT_EQ(2U, frames.PictureCount());
    std::vector<std::uint16_t> rendered(16);
    frames.Render({1, 4, 2, true}, tarn_sim::Plane::Infrared, reinterpret_cast<std::uint8_t *>(rendered.data()));
    frames.Render({1, 4, 2, true}, tarn_sim::Plane::DepthEighthMm, reinterpret_cast<std::uint8_t *>(&rendered[8]));
    EXPECT_EQ(planes, rendered);
    EXPECT_THROW(ExportFrames(sessions, folder), std::runtime_error); // what is there stays
    std::filesystem::remove_all(folder);
}

TEST(SessionComparisonTest, FindsTheFirstDifferenceButForTimesAndThreads)
{
    const RecordedSession expected = SessionOf({});
    EXPECT_FALSE(CompareSessions(expected, SessionOf({.consumerFirst = true})).first);

    struct
    {
        SessionPlan plan;
        const char *lane;
        std::size_t nth;
        const char *where;
    } const cases[]{
        {{.controlValue = 6},
         "T1 KsProperty KSPROPERTYSETID_TARN_DEPTH_CONTROL LASER_POWER (1) GET|TOPOLOGY",
         1,
         "data from byte 0: 05 and 06"},
        {{.controlResult = 0x80004005},
         "T1 KsProperty KSPROPERTYSETID_TARN_DEPTH_CONTROL LASER_POWER (1) GET|TOPOLOGY",
         1,
         "result"},
        {{.frames = 19}, "T1 ProcessInput 0", 20, ""},
        {{.lostFrame = 8}, "T1 METransformHaveOutput 0", 8, "time from byte 0: "},
        {{.hungInput = 9}, "T1 ProcessInput 0", 9, ""},
    };
    for (const auto &one : cases)
    {
        const auto result = CompareSessions(expected, SessionOf(one.plan));
        ASSERT_TRUE(result.first) << one.lane;
        EXPECT_EQ(one.lane, result.first->lane);
        EXPECT_EQ(one.nth, result.first->nth);
        EXPECT_EQ(0U, result.first->where.find(one.where)) << result.first->where;
    }
}

} // namespace
