
#include "core/PassThroughDeviceMft.h"
#include "ks/OneShotKsEventHandler.h"
#include "ks/RegularKsEventHandler.h"
#include "tests/ks/FakeFilter.h"
#include "tests/support/HandleCount.h"
#include "base/ComObject.h"
#include "base/UniqueHandle.h"

using namespace user_space_frameworks;
using namespace mft_core;
using namespace tarn_test;

namespace
{

// Lets its subscriber end the subscription by address, as devices that keep the address do.
class ResettableHandler : public RegularKsEventHandler
{
  public:
    using RegularKsEventHandler::RegularKsEventHandler;

    HRESULT Run(PKSEVENT event, ULONG length, LPVOID data, ULONG dataLength, ULONG *returned) override
    {
        const HRESULT result = RegularKsEventHandler::Run(event, length, data, dataLength, returned);
        if (SUCCEEDED(result))
        {
            registeredEventData = static_cast<KSEVENTDATA *>(data);
        }
        return result;
    }
};

class KsEventHandlersTest : public testing::Test
{
  protected:
    KsEventHandlersTest()
    {
        eventData.NotificationType = KSEVENTF_EVENT_HANDLE;
        eventData.EventHandle.Event = event.Get();
    }
    HRESULT Arm(KsEventHandler &handler, ULONG flags)
    {
        KSEVENT request = MakeRequest(kTestSet, 1, flags);
        return handler.Run(&request, sizeof(request), &eventData, sizeof(eventData), nullptr);
    }
    bool Signalled() const { return WaitForSingleObject(event.Get(), 0) == WAIT_OBJECT_0; }

    UniqueHandle event{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    KSEVENTDATA eventData{};
};

} // namespace

TEST_F(KsEventHandlersTest, UnusableSubscriptionsAreRefused)
{
    OneShotKsEventHandler oneShot(kTestSet, 1, "one shot", nullptr);
    ResettableHandler regular(kTestSet, 1, "regular", nullptr);
    KSEVENTDATA noHandle{};
    const auto expectRefused = [&](KsEventHandler &handler, ULONG flags, ULONG otherFlags) {
        KSEVENT request = MakeRequest(kTestSet, 1, flags);
        constexpr ULONG kSize = sizeof(noHandle);
        EXPECT_HR(E_INVALIDARG, handler.Run(nullptr, 0, &eventData, kSize, nullptr));
        EXPECT_HR(E_INVALIDARG, handler.Run(&request, sizeof(request), nullptr, kSize, nullptr));
        EXPECT_HR(E_INVALIDARG, handler.Run(&request, sizeof(request), &eventData, kSize - 1, nullptr));
        EXPECT_HR(HRESULT_FROM_WIN32(ERROR_INVALID_HANDLE),
                  handler.Run(&request, sizeof(request), &noHandle, kSize, nullptr));
        EXPECT_HR(E_NOTIMPL, Arm(handler, otherFlags));
        EXPECT_HR(kNotFound, handler.AttemptToResetRegularEvent(&eventData));
    };
    expectRefused(oneShot, KSEVENT_TYPE_ONESHOT, KSEVENT_TYPE_ENABLE);
    expectRefused(regular, KSEVENT_TYPE_ENABLE, KSEVENT_TYPE_ONESHOT);
    EXPECT_HR(kInvalidState, oneShot.Set());
    EXPECT_HR(kInvalidState, regular.Set());
}

TEST_F(KsEventHandlersTest, OneShotFiresOnceAndCanBeArmedAgain)
{
    OneShotKsEventHandler handler(kTestSet, 1, "one shot", nullptr);
    for (int round = 0; round < 2; ++round)
    {
        ASSERT_HR(S_OK, Arm(handler, KSEVENT_TYPE_ONESHOT));
        EXPECT_HR(kInvalidState, Arm(handler, KSEVENT_TYPE_ONESHOT));
        EXPECT_HR(kNotFound, handler.AttemptToResetRegularEvent(&eventData));
        EXPECT_FALSE(Signalled());
        EXPECT_HR(S_OK, handler.Set());
        EXPECT_TRUE(Signalled());
        EXPECT_HR(kInvalidState, handler.Set());
    }
}

TEST_F(KsEventHandlersTest, RegularEndsWithItsSignalOrItsReset)
{
    ResettableHandler handler(kTestSet, 1, "regular", nullptr);
    ASSERT_HR(S_OK, Arm(handler, KSEVENT_TYPE_ENABLE));
    EXPECT_HR(kInvalidState, Arm(handler, KSEVENT_TYPE_ENABLE));
    EXPECT_HR(S_OK, handler.Set());
    EXPECT_TRUE(Signalled());
    EXPECT_HR(kNotFound, handler.Reset(&eventData));

    ASSERT_HR(S_OK, Arm(handler, KSEVENT_TYPE_ENABLE));
    KSEVENTDATA sameContents = eventData;
    EXPECT_HR(kNotFound, handler.Reset(&sameContents)); // by address, not by value
    EXPECT_HR(S_OK, handler.Reset(&eventData));
    EXPECT_HR(kInvalidState, handler.Set());
    EXPECT_FALSE(Signalled());
}

TEST_F(KsEventHandlersTest, NullEventReachesTheFirstHandlerThatKnowsTheAddress)
{
    const auto device = MakeCom<PassThroughDeviceMft>("Test device");
    const auto oneShot = std::make_shared<OneShotKsEventHandler>(kTestSet, 1, "one shot", nullptr);
    const auto regular = std::make_shared<ResettableHandler>(kTestSet, 2, "regular", nullptr);
    ASSERT_HR(S_OK, device->RegisterKsEventHandler(oneShot));
    ASSERT_HR(S_OK, device->RegisterKsEventHandler(regular));
    EXPECT_HR(E_FAIL,
              device->RegisterKsEventHandler(std::make_shared<ResettableHandler>(kTestSet, 2, "again", nullptr)));
    KSEVENT request = MakeRequest(kTestSet, 2, KSEVENT_TYPE_ENABLE);
    ASSERT_HR(S_OK, device->KsEvent(&request, sizeof(request), &eventData, sizeof(eventData), nullptr));

    // An address that cannot be read: it is only compared.
    EXPECT_HR(kNotFound, device->KsEvent(nullptr, 0, reinterpret_cast<void *>(16), 32, nullptr));
    EXPECT_HR(S_OK, device->KsEvent(nullptr, 0, &eventData, sizeof(eventData), nullptr));
    EXPECT_HR(kNotFound, device->KsEvent(nullptr, 0, &eventData, sizeof(eventData), nullptr));
    EXPECT_HR(kInvalidState, regular->Set());
}

TEST_F(KsEventHandlersTest, DuplicatedHandlesAreClosedExceptWhereTheContractKeepsThem)
{
    const int before = CountHandles();
    const auto count = [&] { return CountHandles() - before; };
    {
        OneShotKsEventHandler fired(kTestSet, 1, "fired", nullptr);
        OneShotKsEventHandler forgotten(kTestSet, 1, "forgotten", nullptr);
        ResettableHandler reset(kTestSet, 1, "reset", nullptr);
        ASSERT_HR(S_OK, Arm(fired, KSEVENT_TYPE_ONESHOT));
        ASSERT_HR(S_OK, Arm(forgotten, KSEVENT_TYPE_ONESHOT));
        ASSERT_HR(S_OK, Arm(reset, KSEVENT_TYPE_ENABLE));
        EXPECT_EQ(3, count());
        EXPECT_HR(S_OK, fired.Set());
        EXPECT_HR(S_OK, reset.Reset(&eventData));
        EXPECT_EQ(1, count());
    }
    EXPECT_EQ(0, count());
    {
        RegularKsEventHandler regular(kTestSet, 1, "regular", nullptr);
        ASSERT_HR(S_OK, Arm(regular, KSEVENT_TYPE_ENABLE));
        EXPECT_HR(S_OK, regular.Set());
    }
    EXPECT_EQ(1, count()); // stays open by contract
}
