#include "tools/runs/StreamStatistics.h"
#include "tests/support/Expect.h"

using namespace tarn_host;

namespace
{

using namespace std::chrono_literals;

constexpr StreamStatistics::Clock::time_point kStart{1h};

TEST(StreamStatisticsTest, FramesAreMatchedByTheirTime)
{
    using Times = std::vector<std::int64_t>;
    const struct
    {
        Times in, out;
        std::uint64_t lost, reordered, unexpected;
    } rows[] = {
        {{10, 20, 30}, {10, 20, 30}, 0, 0, 0},
        {{10, 20, 30}, {10, 30}, 1, 0, 0},
        {{10, 20, 30, 40}, {30, 10, 20, 40}, 0, 2, 0}, // late is not lost
        {{10}, {10, 10, 99}, 0, 0, 2},                 // twice, and foreign
    };
    for (const auto &row : rows)
    {
        StreamStatistics statistics;
        for (const std::int64_t time : row.in)
        {
            statistics.FrameIn(time, kStart);
        }
        for (const std::int64_t time : row.out)
        {
            statistics.FrameOut(time, kStart);
        }
        const StreamSummary summary = statistics.Summary();
        SCOPED_TRACE(testing::Message() << "row " << &row - rows);
        EXPECT_EQ(summary.framesIn, row.in.size());
        EXPECT_EQ(summary.lost, row.lost);
        EXPECT_EQ(statistics.InFlight(), row.lost);
        EXPECT_EQ(summary.reordered, row.reordered);
        EXPECT_EQ(summary.unexpected, row.unexpected);
        EXPECT_EQ(summary.Complete(), &row == rows);
    }
}

TEST(StreamStatisticsTest, LatencyAndRateFollowTheClock)
{
    StreamStatistics statistics;
    EXPECT_EQ(statistics.Summary().framesPerSecond, 0.0);
    EXPECT_EQ(statistics.Summary().latencyP99Ms, 0.0);
    // 200 frames, one every 20 ms; frame i takes i + 1 ms, so rank p of 200 is p * 200 ms.
    for (int i = 0; i < 200; ++i)
    {
        statistics.FrameIn(i, kStart + i * 20ms - std::chrono::milliseconds(i + 1));
        statistics.FrameOut(i, kStart + i * 20ms);
    }

    const StreamSummary summary = statistics.Summary();
    EXPECT_DOUBLE_EQ(summary.latencyP50Ms, 100.0);
    EXPECT_DOUBLE_EQ(summary.latencyP99Ms, 198.0);
    EXPECT_DOUBLE_EQ(summary.latencyMaxMs, 200.0);
    EXPECT_NEAR(summary.framesPerSecond, 50.0, 1e-9);
}

} // namespace
