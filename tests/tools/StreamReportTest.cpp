#include "tools/runs/StreamReport.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sstream>

namespace
{

using tarn_host::OutputReport;
using tarn_host::StreamReport;

OutputReport &OutputOf(StreamReport &report)
{
    return report.phases.front().outputs.front();
}

StreamReport GoodReport()
{
    StreamReport report;
    report.transform = "depth";
    report.module = "Z:\\tarn_dmft.dll";
    OutputReport output{3, "depth", "D16 640x480@30", {}, {}, true};
    output.summary.framesIn = 58;
    output.summary.framesOut = 58;
    output.summary.cutOff = 2; // no fault
    output.summary.latencyP99Ms = 1.25;
    output.attachments.confidenceMaps = 58;
    report.phases.push_back({"depth", "INZC 640x480@30", {output}});
    report.pins.push_back({0, {}, {58, 0}});
    report.pins.front().statistics.delivered = 58;
    report.processorTime = std::chrono::milliseconds(10);
    return report;
}

TEST(StreamReportTest, GoodRunHasNoProblems)
{
    std::ostringstream table;
    GoodReport().WriteTable(table);

    EXPECT_TRUE(GoodReport().Problems().empty());
    EXPECT_NE(table.str().find("OK: every frame was delivered, in order"), std::string::npos) << table.str();
    EXPECT_EQ(table.str().find("FAILED"), std::string::npos);
}

TEST(StreamReportTest, EachThingThatIsNotAsItHasToBeIsAProblem)
{
    void (*const faults[])(StreamReport &) = {
        [](StreamReport &report) { OutputOf(report).summary.lost = 1; },
        [](StreamReport &report) { OutputOf(report).summary.reordered = 1; },
        [](StreamReport &report) { OutputOf(report).summary.unexpected = 1; },
        [](StreamReport &report) { OutputOf(report).summary.framesOut = 0; },
        [](StreamReport &report) { OutputOf(report).attachments.confidenceMaps = 0; },
        [](StreamReport &report) { report.pins.front().statistics.failed = 1; },
        [](StreamReport &report) { report.pins.front().statistics.delivered = 59; }, // one is in no column
        [](StreamReport &report) { report.stalled = true; },
        [](StreamReport &report) { report.leftovers.transformReferences = 1; },
        [](StreamReport &report) { report.leftovers.cameraReferences = 1; },
        [](StreamReport &report) { report.leftovers.frames = 1; },
        [](StreamReport &report) { report.leftovers.canUnload = S_FALSE; },
        [](StreamReport &report) { report.leftovers.unloaded = false; },
    };
    for (std::size_t i = 0; i < std::size(faults); ++i)
    {
        StreamReport report = GoodReport();
        faults[i](report);

        std::ostringstream table;
        report.WriteTable(table);
        EXPECT_EQ(report.Problems().size(), 1U) << "fault " << i;
        EXPECT_NE(table.str().find("FAILED: "), std::string::npos) << "fault " << i;
        EXPECT_EQ(table.str().find("OK:"), std::string::npos) << "fault " << i;
    }
}

TEST(StreamReportTest, JsonCarriesTheNumbersAndSurvivesAnOddPath)
{
    StreamReport report = GoodReport();
    report.source = "Z:\\not\xFFutf8";
    OutputOf(report).summary.lost = 2;

    const auto json = nlohmann::json::parse(report.ToJson());
    const auto &output = json["phases"][0]["outputs"][0];
    EXPECT_EQ(output["id"], 3);
    EXPECT_EQ(output["in"], 58);
    EXPECT_EQ(output["lost"], 2);
    EXPECT_EQ(output["p99Ms"], 1.25);
    EXPECT_EQ(json["processorMicrosecondsPerFrame"], 10000.0 / 58);
    EXPECT_EQ(json["leftBehind"]["dllCanUnloadNow"], "S_OK (0x00000000)");
    EXPECT_EQ(json["problems"].size(), 1U);
}

} // namespace
