#include "tools/StreamReport.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sstream>

namespace
{

using tarn_host::StreamReport;

StreamReport GoodReport()
{
    StreamReport report;
    report.transform = "depth";
    report.module = "Z:\\tarn_dmft.dll";
    report.outputs.push_back({3, "D16 640x480@30", {}});
    report.outputs.front().summary.framesIn = 58;
    report.outputs.front().summary.framesOut = 58;
    report.outputs.front().summary.latencyP99Ms = 1.25;
    report.pins.push_back({0, {}});
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
        [](StreamReport &report) { report.outputs.front().summary.dropped = 1; },
        [](StreamReport &report) { report.outputs.front().summary.reordered = 1; },
        [](StreamReport &report) { report.outputs.front().summary.unexpected = 1; },
        [](StreamReport &report) { report.outputs.front().summary.framesOut = 0; },
        [](StreamReport &report) { report.pins.front().statistics.failed = 1; },
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
    report.picture = "Z:\\not\xFFutf8.png";
    report.outputs.front().summary.dropped = 2;

    std::ostringstream text;
    report.WriteJson(text);

    const auto json = nlohmann::json::parse(text.str());
    EXPECT_EQ(json["outputs"][0]["id"], 3);
    EXPECT_EQ(json["outputs"][0]["in"], 58);
    EXPECT_EQ(json["outputs"][0]["dropped"], 2);
    EXPECT_EQ(json["outputs"][0]["latencyMs"]["p99"], 1.25);
    EXPECT_EQ(json["leftBehind"]["dllCanUnloadNow"], "S_OK");
    EXPECT_EQ(json["problems"].size(), 1U);
}

} // namespace
