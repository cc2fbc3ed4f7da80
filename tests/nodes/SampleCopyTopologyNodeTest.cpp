#include "nodes/SampleCopyTopologyNode.h"

#include <limits>
#include <numeric>
#include <stdexcept>

#include "tests/nodes/FrameMemory.h"
#include "tests/support/Expect.h"

using mft_core::SampleCopyTopologyNode;
using namespace tarn_test;

TEST(SampleCopyTopologyNodeTest, CoefficientsAreCheckedInOrder)
{
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    constexpr char kSum[] = "coefficients sum > 1";
    constexpr char kLength[] = "output buffer length coefficient <= 0";
    constexpr char kOffset[] = "invalid input buffer offset coefficient";
    const struct
    {
        double offset, length;
        const char *text;
    } rows[] = {{0.5, 0.5, "nothing thrown"},
                {0, 1, "nothing thrown"},
                {0.5, 0.5000001, kSum},
                {1, 0.1, kSum},
                {0.5, 0, kLength},
                {0, kNan, kLength},
                {-0.1, 0, kOffset},
                {1.1, 0.5, kOffset},
                {kNan, 0.5, kOffset}};
    for (const auto &row : rows)
    {
        EXPECT_EQ(row.text, ThrownText<std::invalid_argument>(
                                [&] { const SampleCopyTopologyNode node(nullptr, row.offset, row.length, "Copy"); }))
            << row.offset << ", " << row.length;
    }
}

TEST(SampleCopyTopologyNodeTest, BothProductsAreTruncated)
{
    Bytes bytes(1001);
    std::iota(bytes.begin(), bytes.end(), BYTE{0});
    EXPECT_EQ(Bytes(bytes.begin() + 500, bytes.begin() + 1000),
              BytesOf(Converted<SampleCopyTopologyNode>(MakeFrame(bytes), 0.5, 0.5, "Second half").Get()));
    EXPECT_EQ(Bytes(bytes.begin() + 400, bytes.begin() + 800),
              BytesOf(Converted<SampleCopyTopologyNode>(MakeFrame(bytes), 0.5, 0.5, "Of a padded frame", 800u).Get()));
}
