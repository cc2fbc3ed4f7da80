#include "tools/runs/PhaseBooks.h"

#include "tools/command/ExitCode.h"
#include "tests/support/Samples.h"

using namespace tarn_host;

namespace
{

constexpr DWORD kInput = 0;
constexpr DWORD kDepth = 0;
constexpr DWORD kInfrared = 1;

class PhaseBooksTest : public testing::Test
{
  protected:
    auto In(std::int64_t time) { return books.FrameIn(kInput, *tarn_test::MakeSample(time).Get()); }
    // False when the frame was passed over.
    bool Out(DWORD output, std::int64_t time)
    {
        SampleDetails details;
        details.time100ns = time;
        OutputCollector *const collector = books.CollectorOf(output, details);
        if (collector != nullptr)
        {
            collector->FrameOut(details);
        }
        return collector != nullptr;
    }
    StreamSummary Summary(std::size_t stretch) const { return books.Stretches().at(stretch)->collector.Summary(); }

    PhaseBooks books{0};
};

TEST_F(PhaseBooksTest, ARestartForgivesWhatWasOnItsWayAndNothingElse)
{
    books.Add(kDepth, kInput, {});
    books.Begin(kDepth, 0, false);
    In(1);
    In(2);
    EXPECT_TRUE(Out(kDepth, 1));

    books.BeginChange(true, {});
    In(3); // may come or not
    In(4);
    EXPECT_FALSE(Out(kDepth, 3));
    books.EndChange(1, false);
    In(5);
    In(6);
    EXPECT_TRUE(Out(kDepth, 5));

    EXPECT_EQ(1U, Summary(0).cutOff);
    EXPECT_TRUE(Summary(0).Complete());
    EXPECT_EQ(2U, Summary(1).framesIn);
    EXPECT_EQ(2U, Summary(1).between);
    EXPECT_EQ(1U, Summary(1).lost) << "frame 6 came after the change";
    EXPECT_EQ(4U, books.FramesOf(kInput).in);
    EXPECT_EQ(2U, books.FramesOf(kInput).between);
    EXPECT_EQ(1U, books.FramesInFlight());
}

TEST_F(PhaseBooksTest, StoppingOneOutputForgivesTheOtherNothing)
{
    for (const DWORD output : {kDepth, kInfrared})
    {
        books.Add(output, kInput, {});
    }
    books.EndChange(0, false);
    In(1);
    const DWORD stopped[] = {kInfrared};
    books.BeginChange(false, stopped);
    books.Remove(kInfrared);
    In(2);
    books.EndChange(1, false);
    In(3);
    EXPECT_TRUE(Out(kDepth, 2)); // of the earlier phase
    EXPECT_TRUE(Out(kDepth, 3));

    EXPECT_EQ(1U, Summary(0).lost) << "depth frame 1";
    EXPECT_EQ(1U, Summary(1).cutOff) << "infrared frame 1";
    EXPECT_EQ(1U, Summary(2).framesOut);
    EXPECT_TRUE(Summary(2).Complete());
}

TEST_F(PhaseBooksTest, AFrameMayOnlyBeRefusedDuringAChange)
{
    books.Add(kDepth, kInput, {});
    books.Begin(kDepth, 0, false);
    EXPECT_FALSE(books.FrameRefused(In(1)));
    books.BeginChange(true, {});
    EXPECT_TRUE(books.FrameRefused(In(2)));
    EXPECT_EQ(0U, Summary(0).framesIn);
    books.Remove(kDepth);
    EXPECT_EQ(2U, Summary(0).between) << "of an output that does not come back";
    EXPECT_EQ(2U, books.FramesOf(kInput).between);
    EXPECT_THROW(Out(kInfrared, 1), HostError);
}

TEST_F(PhaseBooksTest, ARefusedFrameMayHaveComeOutOfOneOutput)
{
    for (const DWORD output : {kDepth, kInfrared})
    {
        books.Add(output, kInput, {});
    }
    books.EndChange(0, false);
    In(1);
    const auto refused = In(2);
    EXPECT_TRUE(Out(kDepth, 1));
    EXPECT_TRUE(Out(kDepth, 2));
    books.FrameRefused(refused);
    EXPECT_FALSE(Out(kInfrared, 2)) << "it may come later, too";
    EXPECT_TRUE(Out(kInfrared, 1));

    EXPECT_EQ(2U, Summary(0).framesOut);
    EXPECT_EQ(1U, Summary(1).framesOut);
    EXPECT_TRUE(Summary(0).Complete());
    EXPECT_TRUE(Summary(1).Complete());
}

} // namespace
