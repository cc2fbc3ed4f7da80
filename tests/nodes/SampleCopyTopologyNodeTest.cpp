#include "nodes/SampleCopyTopologyNode.h"

#include <limits>
#include <numeric>
#include <stdexcept>

#include "tests/nodes/FrameMemory.h"
#include "tests/support/Expect.h"

using mft_core::SampleCopyTopologyNode;
using namespace tarn_test;

namespace
{

// Empty when the node can be made.
std::string Refusal(double offset, double length)
{
    try
    {
        const SampleCopyTopologyNode node(nullptr, offset, length, "Copy");
        return {};
    }
    catch (const std::invalid_argument &error)
    {
        return error.what();
    }
}

TEST(SampleCopyTopologyNodeTest, CoefficientsAreCheckedInOrder)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ("", Refusal(0.5, 0.5));
    EXPECT_EQ("", Refusal(0, 1));
    EXPECT_EQ("coefficients sum > 1", Refusal(0.5, 0.5000001));
    EXPECT_EQ("coefficients sum > 1", Refusal(1, 0.1));
    EXPECT_EQ("output buffer length coefficient <= 0", Refusal(0.5, 0));
    EXPECT_EQ("output buffer length coefficient <= 0", Refusal(0, nan));
    EXPECT_EQ("invalid input buffer offset coefficient", Refusal(-0.1, 0));
    EXPECT_EQ("invalid input buffer offset coefficient", Refusal(1.1, 0.5));
    EXPECT_EQ("invalid input buffer offset coefficient", Refusal(nan, 0.5));
}

TEST(SampleCopyTopologyNodeTest, BothProductsAreTruncated)
{
    const auto end = std::make_shared<CollectingNode>();
    SampleCopyTopologyNode node(end, 0.5, 0.5, "Second half");
    Bytes bytes(1001);
    std::iota(bytes.begin(), bytes.end(), BYTE{0});

    node.Process(MakeFrame(bytes).Get());

    ASSERT_EQ(1u, end->samples.size());
    EXPECT_EQ(Bytes(bytes.begin() + 500, bytes.begin() + 1000), BytesOf(end->samples[0].Get()));
}

} // namespace
