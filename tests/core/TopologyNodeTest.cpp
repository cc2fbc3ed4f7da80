#include "core/ITopologyNode.h"

#include "tests/core/TestParts.h"

using namespace mft_core;
using namespace tarn_test;

namespace
{

struct Chain
{
    std::shared_ptr<RecordingNode> third = std::make_shared<RecordingNode>();
    std::shared_ptr<RecordingNode> second = std::make_shared<RecordingNode>(third);
    std::shared_ptr<RecordingNode> first = std::make_shared<RecordingNode>(second);
};

TEST(TopologyNodeTest, PropagationVisitsTheChainInOrderAndStopsAtAFailure)
{
    Chain chain;
    std::vector<ITopologyNode *> visited;
    const auto visit = [&](ITopologyNode *node) -> HRESULT {
        visited.push_back(node);
        return S_OK;
    };
    EXPECT_HR(S_OK, chain.first->Propagate(PropagateOrder::CallLambdaAndPropagate, visit));
    EXPECT_EQ((std::vector<ITopologyNode *>{chain.first.get(), chain.second.get(), chain.third.get()}), visited);

    visited.clear();
    EXPECT_HR(S_OK, chain.first->Propagate(PropagateOrder::PropagateOnly, visit));
    EXPECT_TRUE(visited.empty());

    chain.second->flushResult = E_ABORT;
    EXPECT_HR(E_ABORT, chain.first->Propagate(PropagateOrder::CallLambdaAndPropagate,
                                              [](ITopologyNode *node) { return node->Flush(); }));
    EXPECT_EQ(1, chain.first->flushes);
    EXPECT_EQ(1, chain.second->flushes);
    EXPECT_EQ(0, chain.third->flushes);
}

TEST(TopologyNodeTest, ObserversSeeEverySampleBeforeTheNode)
{
    class Observer : public IPreProcessObserver
    {
      public:
        explicit Observer(RecordingNode &observed) : node(observed) {}
        void OnSample(IMFSample *) override { seenBefore.push_back(node.Times().size()); }
        RecordingNode &node;
        std::vector<std::size_t> seenBefore;
    };
    RecordingNode node;
    Observer first(node);
    Observer second(node);
    node.RegisterPreProcessObserver(first);
    node.RegisterPreProcessObserver(second);
    node.Process(MakeSample(1).Get());
    node.UnregisterPreProcessObserver(first);
    node.Process(MakeSample(2).Get());
    EXPECT_EQ((std::vector<std::size_t>{0}), first.seenBefore);
    EXPECT_EQ((std::vector<std::size_t>{0, 1}), second.seenBefore);
}

} // namespace
