#include "ks/KsEventListener.h"

#include "tests/ks/EventCamera.h"
#include "tests/support/HandleCount.h"
#include "tests/trace/TraceLines.h"

using namespace user_space_frameworks;
using namespace mft_core;
using namespace tarn_test;

namespace
{

constexpr HRESULT kTimedOut = HRESULT_FROM_WIN32(ERROR_TIMEOUT);

class CountingObserver : public KsEventsObserver
{
  public:
    CountingObserver() : KsEventsObserver("counting observer") {}
    void OnEvent() override
    {
        ++events;
        if (hold)
        {
            WaitForSingleObject(hold.Get(), 5000);
        }
    }
    std::atomic<int> events{0};
    UniqueHandle hold; // the notification stays under way until it is signalled
};

class KsEventListenerTest : public testing::Test
{
  protected:
    ~KsEventListenerTest() override
    {
        EXPECT_HR(S_OK, listener->Uninit());
        EXPECT_FALSE(camera.Enabled());
        // The platform drops its references a moment after the callback.
        EXPECT_TRUE(WaitUntil([&] { return ReferenceCount(listener) == 1; }));
        EXPECT_REFS(camera.filter, 1);
    }
    // Ready to start, with the observer.
    void Init()
    {
        ASSERT_HR(S_OK, listener->RegisterObserver(observer));
        ASSERT_HR(S_OK, listener->Init(camera.filter.Get()));
    }
    void InitWithFaultyWait()
    {
        auto wrapper = std::make_unique<FaultyWait>();
        wait = wrapper.get();
        listener =
            MakeCom<KsEventListener>(KSEVENTSETID_VIDCAPTOSTI, kAutoUpdate, "faulty", DWORD{20}, std::move(wrapper));
        Init();
    }
    // Runs the callback of the pending wait as the platform would.
    HRESULT Answer(HRESULT status)
    {
        const ComPtr<IMFAsyncResult> result = std::move(wait->pending);
        result->SetStatus(status);
        return listener->Invoke(result.Get());
    }

    EventCamera camera;
    ComPtr<KsEventListener> listener =
        MakeCom<KsEventListener>(KSEVENTSETID_VIDCAPTOSTI, kAutoUpdate, "auto-update listener");
    std::shared_ptr<CountingObserver> observer = std::make_shared<CountingObserver>();
    FaultyWait *wait = nullptr; // belongs to the listener
};

} // namespace

// The linker sends the module's calls here.
extern "C"
{
    HRESULT __real_MFPutWaitingWorkItem(HANDLE event, LONG priority, IMFAsyncResult *result, MFWORKITEM_KEY *key);
    HRESULT __wrap_MFPutWaitingWorkItem(HANDLE event, LONG priority, IMFAsyncResult *result, MFWORKITEM_KEY *key)
    {
        if (OwnWaits::current == nullptr)
        {
            return __real_MFPutWaitingWorkItem(event, priority, result, key);
        }
        OwnWaits::current->waits.emplace_back(result);
        *key = 1;
        return S_OK;
    }

    HRESULT __real_MFCancelWorkItem(MFWORKITEM_KEY key);
    HRESULT __wrap_MFCancelWorkItem(MFWORKITEM_KEY key)
    {
        const OwnWaits *const own = OwnWaits::current;
        if (own == nullptr)
        {
            return __real_MFCancelWorkItem(key);
        }
        for (int call = 0; call < own->callsDuringCancel; ++call)
        {
            OwnWaits::CallBack(own->waits.back().Get());
        }
        return own->cancelResult;
    }
}

TEST_F(KsEventListenerTest, ACancelledWaitMayCallBackAnyNumberOfTimesAtAnyTime)
{
    const TraceLines errors(mft_utils::TraceLevel::Error);
    Init();
    OwnWaits platform;
    for (const auto &[result, atOnce] :
         {std::pair{S_OK, 0}, {S_OK, 1}, {S_OK, 2}, {MF_E_NOT_FOUND, 0}, {MF_E_NOT_FOUND, 1}, {MF_E_NOT_FOUND, 2}})
    {
        platform.cancelResult = result;
        platform.callsDuringCancel = atOnce;
        ASSERT_HR(S_OK, listener->Start());
        const ULONGLONG begun = GetTickCount64();
        EXPECT_HR(S_OK, listener->Stop());
        EXPECT_LT(GetTickCount64() - begun, KsEventListener::kStopTimeoutMs / 2) << atOnce;
        EXPECT_FALSE(camera.Enabled());
        OwnWaits::CallBack(platform.waits.back().Get());
        OwnWaits::CallBack(platform.waits.back().Get());
    }
    ASSERT_HR(S_OK, listener->Uninit());
    for (const auto &late : platform.waits)
    {
        OwnWaits::CallBack(late.Get());
    }
    EXPECT_EQ(0, observer->events);
    EXPECT_EQ(std::vector<std::string>{}, errors.Texts());
}

TEST_F(KsEventListenerTest, EachStateTakesWhatItCan)
{
    EXPECT_HR(E_OUTOFMEMORY, listener->Start());
    EXPECT_HR(S_OK, listener->Stop());
    EXPECT_HR(S_OK, listener->Uninit());
    EXPECT_HR(E_POINTER, listener->Init(nullptr));
    Init();
    EXPECT_HR(E_UNEXPECTED, listener->Init(camera.filter.Get()));
    EXPECT_HR(S_OK, listener->Stop());
    EXPECT_HR(E_POINTER, listener->Invoke(nullptr));
    for (int round = 0; round < 3; ++round)
    {
        ASSERT_HR(S_OK, listener->Start());
        EXPECT_TRUE(camera.Enabled());
        EXPECT_HR(E_UNEXPECTED, listener->Start());
        EXPECT_HR(S_OK, listener->Stop());
        EXPECT_FALSE(camera.Enabled());
    }
    ASSERT_HR(S_OK, listener->Uninit());
    EXPECT_HR(E_OUTOFMEMORY, listener->Start());
    ASSERT_HR(S_OK, listener->Init(camera.filter.Get())); // and the fixture ends it from a running state
    ASSERT_HR(S_OK, listener->Start());
}

TEST_F(KsEventListenerTest, EverySignalReachesEveryObserverOnce)
{
    const auto second = std::make_shared<CountingObserver>();
    ASSERT_HR(S_OK, listener->RegisterObserver(second));
    EXPECT_HR(E_INVALIDARG, listener->RegisterObserver(nullptr));
    Init();
    for (int run = 0; run < 2; ++run) // the second run's wait must not look cancelled
    {
        ASSERT_HR(S_OK, listener->Start());
        for (int signal = 1; signal <= 20; ++signal)
        {
            camera.Signal();
            ASSERT_TRUE(WaitUntil([&] { return observer->events == run * 20 + signal; }));
        }
        ASSERT_HR(S_OK, listener->Stop());
    }
    EXPECT_EQ(40, second->events);

    ASSERT_HR(S_OK, listener->UnregisterObserver(second));
    EXPECT_HR(kNotFound, listener->UnregisterObserver(second));
    ASSERT_HR(S_OK, listener->Start());
    camera.Signal();
    EXPECT_TRUE(WaitUntil([&] { return observer->events == 41; }));
    EXPECT_EQ(40, second->events);
}

TEST_F(KsEventListenerTest, StopWaitsForTheNotificationUnderWay)
{
    observer->hold.Reset(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    Init();
    ASSERT_HR(S_OK, listener->Start());
    camera.Signal();
    ASSERT_TRUE(WaitUntil([&] { return observer->events == 1; }));

    std::atomic<int> stopped{0};
    std::thread stops([&] { OnThreads(2, [&](int) { stopped += listener->Stop() == S_OK; }); }); // one completion
    camera.Signal();
    EXPECT_FALSE(WaitUntil([&] { return stopped > 0; }, std::chrono::milliseconds(50)));
    EXPECT_HR(E_UNEXPECTED, listener->Start());
    SetEvent(observer->hold.Get());
    stops.join();
    EXPECT_EQ(2, stopped);
    ASSERT_HR(S_OK, listener->Start());
    EXPECT_EQ(1, observer->events); // what was signalled while it stopped is dropped
}

TEST_F(KsEventListenerTest, ThousandCyclesWithSignalsFromAnotherThread)
{
    Init();
    const auto cycles = [&](int count) {
        const Repeating signals([&] { camera.Signal(); });
        for (int cycle = 0; cycle < count && !HasFailure(); ++cycle)
        {
            ASSERT_HR(S_OK, listener->Start());
            if (const int heard = observer->events; cycle % 100 == 0) // on a busy machine the signals come late
            {
                EXPECT_TRUE(WaitUntil([&] { return observer->events > heard; }));
            }
            ASSERT_HR(S_OK, listener->Stop());
        }
    };
    cycles(10); // the platform makes its threads
    const int before = CountHandles();
    cycles(1000);
    // The platform's pool grows and shrinks by a few threads; a handle left by each cycle would be a thousand.
    EXPECT_LT(CountHandles() - before, 50);
}

TEST_F(KsEventListenerTest, ReleasedByItsOwnerWhileACancelledWaitIsUnderWay)
{
    for (int round = 0; round < 200; ++round)
    {
        const auto shortLived = MakeCom<KsEventListener>(KSEVENTSETID_VIDCAPTOSTI, kAutoUpdate, "short-lived");
        ASSERT_HR(S_OK, shortLived->Init(camera.filter.Get()));
        ASSERT_HR(S_OK, shortLived->Start());
        camera.Signal();
        ASSERT_HR(S_OK, shortLived->Uninit());
    } // nothing left alive: checked after every test
}

TEST_F(KsEventListenerTest, StopThatTimesOutCanBeRepeated)
{
    InitWithFaultyWait();
    ASSERT_HR(S_OK, listener->Start());
    EXPECT_HR(kTimedOut, listener->Stop());
    EXPECT_HR(kTimedOut, listener->Stop());
    EXPECT_HR(E_UNEXPECTED, listener->Start());
    EXPECT_FALSE(listener->IsStarted()); // which is why
    EXPECT_TRUE(camera.Enabled());       // and nothing was given up
    EXPECT_HR(S_OK, Answer(MF_E_OPERATION_CANCELLED));
    EXPECT_FALSE(camera.Enabled());
    EXPECT_HR(S_OK, listener->Stop());
    ASSERT_HR(S_OK, listener->Start());
    EXPECT_HR(kTimedOut, listener->Stop()); // not the late completion of the first
    EXPECT_HR(S_OK, Answer(MF_E_OPERATION_CANCELLED));
}

TEST_F(KsEventListenerTest, AListenerGivenUpTooEarlyEndsWithTheLateAnswer)
{
    InitWithFaultyWait();
    for (const HRESULT cancelResult : {S_OK, E_ACCESSDENIED})
    {
        wait->cancelResult = cancelResult;
        ASSERT_HR(S_OK, listener->Start());
        EXPECT_HR(cancelResult == S_OK ? kTimedOut : cancelResult, listener->Uninit());
        EXPECT_HR(E_UNEXPECTED, listener->Start());
        EXPECT_TRUE(camera.Enabled());
        EXPECT_HR(S_OK, Answer(S_OK));
        EXPECT_FALSE(camera.Enabled());
        EXPECT_EQ(0, observer->events); // its owner may be gone
        EXPECT_REFS(listener, 1);
        EXPECT_REFS(camera.filter, 1);
        Init();
    }
}

TEST_F(KsEventListenerTest, AStopEndsNoOtherStop)
{
    Init();
    const auto stop = [&] { EXPECT_HR(S_OK, listener->Stop()); };
    const Repeating stopping[] = {Repeating(stop), Repeating(stop), Repeating(stop)};
    for (int round = 0; round < 5000; ++round)
    {
        listener->Start(); // or another thread's stop has ended it already
        EXPECT_HR(S_OK, listener->Stop());
        EXPECT_FALSE(camera.Enabled());
    }
}

TEST_F(KsEventListenerTest, FailuresOfWaitAndCameraLeaveItStartable)
{
    InitWithFaultyWait();
    camera.enableResult = E_ACCESSDENIED;
    EXPECT_HR(E_ACCESSDENIED, listener->Start());
    camera.enableResult = S_OK;
    wait->waitResult = MF_E_SHUTDOWN;
    EXPECT_HR(MF_E_SHUTDOWN, listener->Start());
    EXPECT_FALSE(camera.Enabled());
    wait->pending.Reset();

    wait->waitResult = S_OK;
    ASSERT_HR(S_OK, listener->Start());
    wait->cancelResult = E_ACCESSDENIED;
    EXPECT_HR(E_ACCESSDENIED, listener->Stop()); // still runs
    EXPECT_HR(S_OK, Answer(S_OK));
    EXPECT_EQ(1, observer->events);
    wait->cancelResult = MF_E_NOT_FOUND; // the callback is on its way
    EXPECT_HR(kTimedOut, listener->Stop());
    camera.disableResult = E_FAIL;
    EXPECT_HR(S_OK, Answer(S_OK));
    EXPECT_EQ(2, observer->events);
    EXPECT_HR(S_OK, listener->Stop());

    ASSERT_HR(S_OK, listener->Start());
    wait->waitResult = MF_E_SHUTDOWN;
    EXPECT_HR(MF_E_SHUTDOWN, Answer(S_OK)); // cannot wait again: it has stopped
    EXPECT_FALSE(camera.Enabled());
    const ComPtr<IMFAsyncResult> stray = std::move(wait->pending);
    EXPECT_HR(E_UNEXPECTED, listener->Invoke(stray.Get()));
}

TEST_F(KsEventListenerTest, StopDuringStartEndsTheStart)
{
    Init();
    std::thread stopping;
    std::atomic<HRESULT> stopped{E_PENDING};
    camera.duringEnable = [&] {
        stopping = std::thread([&] { stopped = listener->Stop(); });
        WaitUntil([&] { return stopped != E_PENDING; }, std::chrono::milliseconds(50)); // it waits for the start
        EXPECT_EQ(E_PENDING, stopped);
    };
    EXPECT_HR(E_ABORT, listener->Start());
    stopping.join();
    EXPECT_HR(S_OK, stopped);
    EXPECT_FALSE(camera.Enabled());
    camera.duringEnable = [] {};
    EXPECT_HR(S_OK, listener->Start());
}
