#include "media/FpsMonitor.h"

#include <cmath>
#include <limits>
#include <stdexcept>

#include "tests/support/Expect.h"

namespace
{

using mft_utils::FpsMonitor;

class FpsMonitorTest : public testing::Test
{
  protected:
    void Feed(int frames, std::int64_t intervalMicroseconds)
    {
        for (int i = 0; i < frames; ++i)
        {
            time += intervalMicroseconds;
            monitor.AddSample(time);
        }
    }

    std::int64_t time = 0;
    std::vector<long> reported;
    FpsMonitor monitor{[this](double fps) { reported.push_back(std::lround(fps)); }};
};

TEST_F(FpsMonitorTest, ReportsARateOnceAndItsChange)
{
    Feed(1, 33333);
    EXPECT_EQ(0.0, monitor.FPS());
    Feed(100, 33333);
    EXPECT_EQ((std::vector<long>{30}), reported);
    Feed(32, 16667);
    EXPECT_NEAR(60.0, monitor.FPS(), 0.01); // the earlier rate is forgotten after 32 frames
    Feed(68, 16667);
    EXPECT_EQ(60, reported.back());

    reported.clear();
    monitor.Reset(30.0); // the expected rate counts as reported
    Feed(50, 33333);
    EXPECT_TRUE(reported.empty());
    for (int i = 0; i < 200; ++i)
    {
        Feed(1, i % 2 == 0 ? 33000 : 34700); // 29.5 on average, now a little more, now a little less
    }
    EXPECT_LE(reported.size(), 2u);
}

TEST_F(FpsMonitorTest, TimeThatGoesBackStartsAnew)
{
    Feed(40, 33333);
    time = 0;
    Feed(40, 100000);
    EXPECT_NEAR(10.0, monitor.FPS(), 0.01);
    for (const double fps : {0.0, -1.0, std::nan(""), std::numeric_limits<double>::infinity()})
    {
        EXPECT_EQ("FPS must be > 0", tarn_test::ThrownText<std::invalid_argument>([&] { monitor.Reset(fps); })) << fps;
    }
    EXPECT_NEAR(10.0, monitor.FPS(), 0.01); // a refused reset changes nothing

    monitor.AddSample(time); // twice the same time is no interval
    EXPECT_EQ(0.0, monitor.FPS());
    monitor.AddSample(std::numeric_limits<std::int64_t>::min());
    monitor.AddSample(std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(0.0, monitor.FPS());
}

} // namespace
