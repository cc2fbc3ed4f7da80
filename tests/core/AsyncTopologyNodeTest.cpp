#include "core/AsyncTopologyNode.h"

#include <condition_variable>
#include <numeric>

#include "tests/core/TestParts.h"
#include "tests/trace/TraceLines.h"
#include "tools/frameserver/WorkQueue.h"

using namespace mft_core;
using namespace tarn_host;
using namespace tarn_test;

namespace
{

WorkQueueParameters On(const WorkQueue &queue)
{
    return {queue.Id(), 0, true};
}

// Holds samples until it is opened.
class GateNode : public RecordingNode
{
  public:
    HRESULT ProcessSample(IMFSample *sample) override
    {
        ++entered;
        std::unique_lock guard(gateLock);
        opened.wait(guard, [&] { return open; });
        return RecordingNode::ProcessSample(sample);
    }
    void Open()
    {
        const std::scoped_lock guard(gateLock);
        open = true;
        opened.notify_all();
    }

    std::atomic<int> entered{0};

  private:
    std::mutex gateLock;
    std::condition_variable opened;
    bool open = false;
};

TEST(AsyncTopologyNodeTest, AnItemThatCannotTellItsSampleLetsTheNextOneGo)
{
    DWORD queue = 0;
    ASSERT_HR(S_OK, MFAllocateWorkQueueEx(MF_STANDARD_WORKQUEUE, &queue)); // one item at a time
    const WorkQueueParameters parameters{queue, 0, true};
    const auto gate = std::make_shared<GateNode>();
    const auto holding = std::make_shared<AsyncTopologyNode>(gate, "Holding", parameters);
    holding->Process(MakeSample(0).Get());
    const auto end = std::make_shared<RecordingNode>();
    const auto node = std::make_shared<AsyncTopologyNode>(end, "Test", parameters);
    DWORD flags = 1;
    DWORD reported = 0;
    EXPECT_HR(S_OK, node->GetParameters(&flags, &reported));
    EXPECT_EQ(0u, flags);
    EXPECT_EQ(queue, reported);
    node->Process(MakeSample(1).Get());
    node->Process(MakeSample(2).Get());

    ComPtr<IMFAsyncResult> wrapped;
    ASSERT_HR(S_OK, MFCreateAsyncResult(nullptr, nullptr, MakeSample(7).Get(), &wrapped));
    EXPECT_HR(S_OK, node->Invoke(wrapped.Get()));
    EXPECT_HR(E_POINTER, node->Invoke(nullptr));
    EXPECT_EQ((std::vector<LONGLONG>{1, 2}), end->Times());
    node->Process(MakeSample(3).Get());
    gate->Open();
    ASSERT_TRUE(WaitUntil([&] { return end->Times().size() == 3; }));
    EXPECT_EQ(3, end->Times().back());
    EXPECT_HR(S_OK, MFUnlockWorkQueue(queue));
}

TEST(AsyncTopologyNodeTest, WithoutAUsableWorkQueueSamplesAreDropped)
{
    const auto end = std::make_shared<RecordingNode>();
    const auto sample = MakeSample(1);
    const TraceLines lines(mft_utils::TraceLevel::Error);
    const auto unset = std::make_shared<AsyncTopologyNode>(end, "Test", WorkQueueParameters{});
    EXPECT_HR(S_OK, unset->ProcessSample(sample.Get()));
    const auto invalid = std::make_shared<AsyncTopologyNode>(end, "Test", WorkQueueParameters{0x7777, 0, true});
    EXPECT_HR(S_OK, invalid->ProcessSample(sample.Get()));
    ASSERT_EQ(2u, lines.lines.size());
    EXPECT_EQ("event mft_core::AsyncTopologyNode::ProcessSample- Workqueue params not set", lines.Texts()[0]);
    EXPECT_TRUE(
        lines.Texts()[1].starts_with("event mft_core::AsyncTopologyNode::ProcessSample- faild to queue workitem"));
    EXPECT_HR(S_OK, invalid->Flush()); // nothing is believed to be queued
    EXPECT_REFS(sample, 1);
    EXPECT_TRUE(end->Times().empty());
    EXPECT_EQ(1, invalid.use_count());
}

TEST(AsyncTopologyNodeTest, FlushWaitsForTheRunningSampleAndDropsTheOthers)
{
    const WorkQueue queue;
    const auto gate = std::make_shared<GateNode>();
    const auto node = std::make_shared<AsyncTopologyNode>(gate, "Test", On(queue), 10000);
    const auto waiting = MakeSample(2);
    node->Process(MakeSample(1).Get());
    ASSERT_TRUE(WaitUntil([&] { return gate->entered == 1; }));
    node->Process(waiting.Get());

    std::atomic<bool> flushed{false};
    std::thread flusher([&] {
        EXPECT_HR(S_OK, node->Flush());
        flushed = true;
    });
    // Refused while flushing; one that came before was dropped with the waiting one.
    ASSERT_TRUE(WaitUntil([&] {
        const auto probe = MakeSample(3);
        node->Process(probe.Get());
        return ReferenceCount(probe) == 1;
    }));
    EXPECT_FALSE(flushed);
    gate->Open();
    flusher.join();
    EXPECT_EQ((std::vector<LONGLONG>{1}), gate->Times());

    node->Process(MakeSample(4).Get()); // accepted again
    ASSERT_TRUE(WaitUntil([&] { return gate->Times().size() == 2; }));
    EXPECT_EQ(4, gate->Times().back());
}

TEST(AsyncTopologyNodeTest, AQueuedItemKeepsTheChainAliveAndAStoppedNodeHandsNothingOn)
{
    const WorkQueue queue;
    const auto gate = std::make_shared<GateNode>();
    auto node = std::make_shared<AsyncTopologyNode>(gate, "Test", On(queue), 20);
    const std::weak_ptr<AsyncTopologyNode> observer = node;
    node->Process(MakeSample(1).Get());
    ASSERT_TRUE(WaitUntil([&] { return gate->entered == 1; }));
    node->Process(MakeSample(2).Get());
    EXPECT_HR(S_OK, node->Flush()); // cannot finish: gives up
    node->Stop();
    node->Process(MakeSample(3).Get());
    node.reset();
    EXPECT_FALSE(observer.expired());
    gate->Open();
    EXPECT_TRUE(WaitUntil([&] { return observer.expired(); }));
    EXPECT_EQ((std::vector<LONGLONG>{1}), gate->Times());
}

} // namespace
