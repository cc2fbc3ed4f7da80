#include "ks/KsControlsProxy.h"

#include <atomic>
#include <thread>
#include <vector>

#include "tests/ks/FakeFilter.h"
#include "tests/support/Expect.h"

using namespace mft_core;
using namespace tarn_test;
using user_space_frameworks::MakeCom;

namespace
{

// Checks that every entry it hears has its exit.
class PairingObserver : public IKsControlsObserver
{
  public:
    void OnKsControlEntry(KsControlType type, const KSIDENTIFIER *, ULONG, const void *, ULONG, const ULONG *) override
    {
        ++open;
        last = type;
    }
    void OnKsControlExit(KsControlType, const KSIDENTIFIER *, ULONG, const void *, ULONG, const ULONG *,
                         HRESULT result) override
    {
        --open;
        ++calls;
        lastResult = result;
    }

    std::atomic<int> open{0};
    std::atomic<int> calls{0};
    std::atomic<KsControlType> last{};
    std::atomic<HRESULT> lastResult{};
};

} // namespace

TEST(KsControlsProxyTest, ForwardsUnchangedAndTellsItsObservers)
{
    const auto filter = MakeCom<FakeFilter>();
    const auto proxy = MakeCom<KsControlsProxy>(filter);
    const auto observer = std::make_shared<PairingObserver>();
    ASSERT_HR(S_OK, proxy->RegisterKsControlsObserver(observer));
    filter->answer = [](const FilterCall &call) { return 20 + static_cast<HRESULT>(call.kind); };
    KSIDENTIFIER request = MakeRequest(kTestSet, 1, 2);
    BYTE data[2] = {};
    ULONG returned = 0;

    EXPECT_HR(20, proxy->KsProperty(&request, sizeof(request), data, 2, &returned));
    EXPECT_EQ(KsControlType::Property, observer->last);
    EXPECT_HR(21, proxy->KsMethod(&request, sizeof(request), data, 2, &returned));
    EXPECT_EQ(KsControlType::Method, observer->last);
    EXPECT_HR(22, proxy->KsEvent(nullptr, 0, data, 2, nullptr));
    EXPECT_EQ(KsControlType::Event, observer->last);
    EXPECT_EQ(22, observer->lastResult);
    EXPECT_EQ(3, observer->calls);
    const auto calls = filter->Calls();
    EXPECT_EQ(data, calls[0].data);
    EXPECT_EQ(&returned, calls[1].bytesReturned);
    EXPECT_FALSE(calls[2].hasIdentifier);
    EXPECT_HR(E_POINTER, MakeCom<KsControlsProxy>(nullptr)->KsEvent(nullptr, 0, data, 2, &returned));
}

TEST(KsControlsProxyTest, ObserversComeAndGoWhileCallsRun)
{
    const auto filter = MakeCom<FakeFilter>();
    const auto proxy = MakeCom<KsControlsProxy>(filter);
    std::atomic<bool> done{false};
    std::vector<std::thread> callers;
    for (int caller = 0; caller < 3; ++caller)
    {
        callers.emplace_back([&] {
            KSIDENTIFIER request = MakeRequest(kTestSet, 1, 2);
            while (!done)
            {
                proxy->KsProperty(&request, sizeof(request), nullptr, 0, nullptr);
            }
        });
    }
    int heard = 0;
    for (int round = 0; round < 50; ++round)
    {
        const auto observer = std::make_shared<PairingObserver>();
        EXPECT_HR(S_OK, proxy->RegisterKsControlsObserver(observer));
        heard += WaitUntil([&] { return observer->calls > 0; });
        EXPECT_HR(S_OK, proxy->UnregisterKsControlsObserver(observer));
        WaitUntil([&] { return observer.use_count() == 1; });
        EXPECT_EQ(0, observer->open); // what was told of an entry was told of the exit
        filter->Forget();
    }
    done = true;
    for (auto &caller : callers)
    {
        caller.join();
    }
    EXPECT_EQ(50, heard);
}
