#include "tools/runs/StreamStatistics.h"

#include <gtest/gtest.h>

namespace
{

using namespace std::chrono_literals;
using tarn_host::StreamStatistics;
using tarn_host::StreamSummary;

class StreamStatisticsTest : public testing::Test
{
  protected:
    void In(std::initializer_list<std::int64_t> times)
    {
        for (const std::int64_t time : times)
        {
            statistics.FrameIn(time, start);
        }
    }
    void Out(std::initializer_list<std::int64_t> times)
    {
        for (const std::int64_t time : times)
        {
            statistics.FrameOut(time, start);
        }
    }

    const StreamStatistics::Clock::time_point start{1h};
    StreamStatistics statistics;
};

TEST_F(StreamStatisticsTest, FramesThatArriveInOrderAreComplete)
{
    In({10, 20, 30});
    Out({10, 20, 30});

    const StreamSummary summary = statistics.Summary();
    EXPECT_TRUE(summary.Complete());
    EXPECT_EQ(summary.framesIn, 3U);
    EXPECT_EQ(summary.framesOut, 3U);
    EXPECT_EQ(statistics.InFlight(), 0U);
}

TEST_F(StreamStatisticsTest, MissingFrameIsLostAndTheRestStaysInOrder)
{
    In({10, 20, 30});
    Out({10, 30});

    const StreamSummary summary = statistics.Summary();
    EXPECT_EQ(summary.lost, 1U);
    EXPECT_EQ(summary.reordered, 0U);
    EXPECT_FALSE(summary.Complete());
}

TEST_F(StreamStatisticsTest, LateFrameIsReorderedAndNotLost)
{
    In({10, 20, 30, 40});
    Out({30, 10, 20, 40});

    const StreamSummary summary = statistics.Summary();
    EXPECT_EQ(summary.reordered, 2U);
    EXPECT_EQ(summary.lost, 0U);
    EXPECT_FALSE(summary.Complete());
}

TEST_F(StreamStatisticsTest, ForeignAndRepeatedFramesAreUnexpected)
{
    In({10});
    Out({10, 10, 99});

    const StreamSummary summary = statistics.Summary();
    EXPECT_EQ(summary.unexpected, 2U);
    EXPECT_FALSE(summary.Complete());
}

TEST_F(StreamStatisticsTest, RefusedFrameDoesNotCount)
{
    In({10, 20});
    statistics.FrameRefused();
    Out({10});

    const StreamSummary summary = statistics.Summary();
    EXPECT_EQ(summary.framesIn, 1U);
    EXPECT_TRUE(summary.Complete());
}

TEST_F(StreamStatisticsTest, LatencyAndRateFollowTheClock)
{
    // 200 frames, one every 20 ms; frame i takes i + 1 ms, so rank p of 200 is p * 200 ms.
    for (int i = 0; i < 200; ++i)
    {
        statistics.FrameIn(i, start + i * 20ms - std::chrono::milliseconds(i + 1));
        statistics.FrameOut(i, start + i * 20ms);
    }

    const StreamSummary summary = statistics.Summary();
    EXPECT_DOUBLE_EQ(summary.latencyP50Ms, 100.0);
    EXPECT_DOUBLE_EQ(summary.latencyP99Ms, 198.0);
    EXPECT_DOUBLE_EQ(summary.latencyMaxMs, 200.0);
    EXPECT_NEAR(summary.framesPerSecond, 50.0, 1e-9);
}

TEST_F(StreamStatisticsTest, NothingDeliveredGivesNumbersAndNoDivisionByZero)
{
    const StreamSummary summary = statistics.Summary();

    EXPECT_EQ(summary.framesPerSecond, 0.0);
    EXPECT_EQ(summary.latencyP99Ms, 0.0);
}

} // namespace
