#include "ks/KsControlsDispatcher.h"

#include <stdexcept>

#include "core/PassThroughDeviceMft.h"
#include "ks/CompleteSetPropsHandler.h"
#include "ks/KsControlsProxy.h"
#include "ks/PassthroughKsHandlers.h"
#include "tests/ks/FakeFilter.h"
#include "base/ComObject.h"

using namespace mft_core;
using namespace tarn_test;
using user_space_frameworks::MakeCom;

namespace
{

constexpr GUID kOtherSet = {2, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};

// Answers with its own number; throws for E_UNEXPECTED.
class NumberHandler : public KsPropHandler
{
  public:
    NumberHandler(const GUID &set, ULONG id, HRESULT answer) : KsPropHandler(set, id, "number"), result(answer) {}
    HRESULT Run(PKSPROPERTY, ULONG, LPVOID, ULONG, ULONG *) override
    {
        return result == E_UNEXPECTED ? throw std::runtime_error("handler") : result;
    }

  private:
    const HRESULT result;
};

// Tells the test in words what it hears.
class Observer : public IKsControlsObserver
{
  public:
    explicit Observer(std::function<void(const std::string &)> hears) : hear(std::move(hears)) {}
    void OnKsControlEntry(KsControlType type, const KSIDENTIFIER *request, ULONG requestLength, const void *data,
                          ULONG dataLength, const ULONG *bytesReturned) override
    {
        hear("entry" + Words(type, request, requestLength, data, dataLength, bytesReturned));
    }
    void OnKsControlExit(KsControlType type, const KSIDENTIFIER *request, ULONG requestLength, const void *data,
                         ULONG dataLength, const ULONG *bytesReturned, HRESULT result) override
    {
        hear("exit" + Words(type, request, requestLength, data, dataLength, bytesReturned) + "=" +
             std::to_string(result) + ";");
    }

  private:
    static std::string Words(KsControlType type, const KSIDENTIFIER *request, ULONG requestLength, const void *data,
                             ULONG dataLength, const ULONG *bytesReturned)
    {
        return std::to_string(static_cast<unsigned>(type)) + " id" + std::to_string(request->Id) + " " +
               std::to_string(requestLength) + " '" +
               (data == nullptr ? "" : std::string(static_cast<const char *>(data), dataLength)) + "' " +
               (bytesReturned == nullptr ? "null" : std::to_string(*bytesReturned)) + ";";
    }

    const std::function<void(const std::string &)> hear;
};

class KsControlsDispatcherTest : public testing::Test
{
  protected:
    HRESULT Property(const GUID &set, ULONG id, ULONG flags = KSPROPERTY_TYPE_GET)
    {
        KSPROPERTY request = MakeRequest(set, id, flags);
        return device->KsProperty(&request, sizeof(request), nullptr, 0, nullptr);
    }
    HRESULT Register(const GUID &set, ULONG id, HRESULT answer)
    {
        return device->RegisterKsPropertyHandler(std::make_shared<NumberHandler>(set, id, answer));
    }

    ComPtr<PassThroughDeviceMft> device = MakeCom<PassThroughDeviceMft>("Test device");
    ComPtr<FakeFilter> filter = MakeCom<FakeFilter>();
    std::string heard; // by the journal of a test
};

} // namespace

TEST_F(KsControlsDispatcherTest, FirstMatchServesWhateverTheFlags)
{
    ASSERT_HR(S_OK, Register(kTestSet, 1, 11));
    EXPECT_HR(E_FAIL, Register(kTestSet, 1, 12));
    EXPECT_HR(E_INVALIDARG, device->RegisterKsPropertyHandler(nullptr));
    EXPECT_HR(E_INVALIDARG, device->RegisterKsPropertyDefaultHandler(nullptr));
    EXPECT_HR(11, Property(kTestSet, 1, KSPROPERTY_TYPE_SET | KSPROPERTY_TYPE_TOPOLOGY));
    EXPECT_HR(kBareSetNotFound, Property(kTestSet, 3));
    EXPECT_HR(kBareSetNotFound, Property(kOtherSet, 1));

    // A complete set shadows the handlers of its set that come later.
    const auto complete = std::make_shared<CompleteSetPropsHandler>(filter, kTestSet);
    ASSERT_HR(S_OK, device->RegisterKsPropertyHandler(complete));
    ASSERT_HR(S_OK, Register(kTestSet, 8, 18));
    filter->answer = [](const FilterCall &call) { return static_cast<HRESULT>(100 + call.request.Property.Id); };
    EXPECT_HR(11, Property(kTestSet, 1));
    EXPECT_HR(108, Property(kTestSet, 8));
    EXPECT_HR(kBareSetNotFound, Property(kOtherSet, 8));
    EXPECT_TRUE(complete->IsSameSet(NumberHandler(kTestSet, 99, 0)));
    EXPECT_FALSE(complete->IsSameSet(NumberHandler(kOtherSet, 0, 0)));

    for (const HRESULT number : {14, 15}) // the last default holds
    {
        ASSERT_HR(S_OK, device->RegisterKsPropertyDefaultHandler(std::make_shared<NumberHandler>(GUID{}, 0, number)));
    }
    EXPECT_HR(15, Property(kOtherSet, 3));
    EXPECT_HR(11, Property(kTestSet, 1));
}

TEST_F(KsControlsDispatcherTest, DefaultHandlersAndTheProxyPassEverythingOnUnchanged)
{
    ASSERT_HR(S_OK, device->RegisterKsPropertyDefaultHandler(std::make_shared<PassthroughKsPropsHandler>(filter)));
    ASSERT_HR(S_OK, device->RegisterKsMethodDefaultHandler(std::make_shared<PassthroughKsMethodsHandler>(filter)));
    ASSERT_HR(S_OK, device->RegisterKsEventDefaultHandler(std::make_shared<PassthroughKsEventsHandler>(filter)));
    const auto proxy = MakeCom<KsControlsProxy>(filter); // passes all calls on without a handler
    KSP_NODE request{};
    request.Property = MakeRequest(kTestSet, 5, KSPROPERTY_TYPE_GET | KSPROPERTY_TYPE_TOPOLOGY);
    request.NodeId = 9;
    char data[] = "abc";
    ULONG returned = 77;

    for (const HRESULT result : {S_OK, S_FALSE, E_ACCESSDENIED, kBareSetNotFound})
    {
        filter->answer = [&](const FilterCall &) { return result; };
        for (IKsControl *const face : {static_cast<IKsControl *>(device.Get()), static_cast<IKsControl *>(proxy.Get())})
        {
            filter->Forget();
            EXPECT_HR(result, face->KsProperty(&request.Property, sizeof(request), data, 3, &returned));
            EXPECT_HR(result, face->KsMethod(&request.Property, sizeof(request), data, 3, nullptr));
            EXPECT_HR(result, face->KsEvent(&request.Property, sizeof(request), nullptr, 0, &returned));
            const auto calls = filter->Calls();
            ASSERT_EQ(3u, calls.size());
            for (const FilterCall &call : calls)
            {
                EXPECT_EQ(&call - calls.data(), static_cast<int>(call.kind));
                EXPECT_EQ(0, std::memcmp(&request, &call.request, sizeof(request)));
                EXPECT_EQ(sizeof(request), call.requestLength);
            }
            EXPECT_EQ(data, calls[0].data);
            EXPECT_EQ(3u, calls[1].dataLength);
            EXPECT_EQ(nullptr, calls[2].data);
            EXPECT_EQ(&returned, calls[0].bytesReturned);
            EXPECT_EQ(nullptr, calls[1].bytesReturned);
        }
    }
    filter->Forget();
    EXPECT_HR(kBareSetNotFound, proxy->KsEvent(nullptr, 0, data, 2, nullptr)); // the last answer
    EXPECT_FALSE(filter->Calls().front().hasIdentifier);
    EXPECT_HR(E_POINTER, MakeCom<KsControlsProxy>(nullptr)->KsEvent(nullptr, 0, data, 2, &returned));
}

TEST_F(KsControlsDispatcherTest, IdentifiersThatCannotBeReadAreRefusedSilently)
{
    const auto journal = std::make_shared<Observer>([this](const std::string &words) { heard += words; });
    ASSERT_HR(S_OK, device->RegisterKsControlsObserver(journal));
    KSIDENTIFIER request = MakeRequest(kTestSet, 1, KSPROPERTY_TYPE_GET);

    EXPECT_HR(E_POINTER, device->KsProperty(nullptr, sizeof(request), nullptr, 0, nullptr));
    EXPECT_HR(E_POINTER, device->KsMethod(nullptr, 0, nullptr, 0, nullptr));
    EXPECT_HR(E_INVALIDARG, device->KsProperty(&request, sizeof(request) - 1, nullptr, 0, nullptr));
    EXPECT_HR(E_INVALIDARG, device->KsMethod(&request, 0, nullptr, 0, nullptr));
    EXPECT_HR(E_INVALIDARG, device->KsEvent(&request, sizeof(request) - 1, nullptr, 0, nullptr));
    EXPECT_HR(kNotFound, device->KsEvent(nullptr, 0, nullptr, 0, nullptr));
    EXPECT_EQ("", heard);
}

TEST_F(KsControlsDispatcherTest, ObserversHearEntryAndExitInOrder)
{
    const auto journal = std::make_shared<Observer>([this](const std::string &words) { heard += words; });
    ASSERT_HR(S_OK, device->RegisterKsControlsObserver(
                        std::make_shared<Observer>([](const std::string &) { throw std::runtime_error("observer"); })));
    ASSERT_HR(S_OK, device->RegisterKsControlsObserver(journal));
    EXPECT_HR(E_INVALIDARG, device->RegisterKsControlsObserver(nullptr));
    ASSERT_HR(S_OK, Register(kTestSet, 2, E_UNEXPECTED));
    ASSERT_HR(S_OK, device->RegisterKsPropertyDefaultHandler(std::make_shared<PassthroughKsPropsHandler>(filter)));
    filter->answer = [](const FilterCall &call) {
        static_cast<char *>(call.data)[0] = 'X';
        *call.bytesReturned = 1;
        return S_FALSE;
    };
    KSIDENTIFIER request = MakeRequest(kTestSet, 1, KSPROPERTY_TYPE_GET);
    char data[] = "ab";
    ULONG returned = 0;

    EXPECT_HR(S_FALSE, device->KsProperty(&request, sizeof(request), data, 2, &returned));
    EXPECT_HR(kBareSetNotFound, device->KsMethod(&request, sizeof(request), nullptr, 0, nullptr));
    EXPECT_HR(kBareSetNotFound, device->KsEvent(&request, sizeof(request), nullptr, 0, nullptr));
    EXPECT_HR(E_FAIL, Property(kTestSet, 2)); // the handler throws
    EXPECT_EQ("entry1 id1 24 'ab' 0;exit1 id1 24 'Xb' 1;=1;"
              "entry2 id1 24 '' null;exit2 id1 24 '' null;=1170;"
              "entry0 id1 24 '' null;exit0 id1 24 '' null;=1170;"
              "entry1 id2 24 '' null;exit1 id2 24 '' null;=-2147467259;",
              heard);

    heard.clear();
    EXPECT_HR(S_OK, device->UnregisterKsControlsObserver(journal));
    EXPECT_HR(kNotFound, device->UnregisterKsControlsObserver(journal));
    EXPECT_HR(E_FAIL, Property(kTestSet, 2));
    EXPECT_EQ("", heard);
}

TEST_F(KsControlsDispatcherTest, ObserversComeAndGoWhileCallsRun)
{
    const auto proxy = MakeCom<KsControlsProxy>(filter);
    const auto call = [&] {
        KSIDENTIFIER request = MakeRequest(kTestSet, 1, 2);
        proxy->KsProperty(&request, sizeof(request), nullptr, 0, nullptr);
    };
    const Repeating callers[] = {Repeating(call), Repeating(call), Repeating(call)};
    int told = 0;
    for (int round = 0; round < 50; ++round)
    {
        std::atomic<int> open{0};
        std::atomic<int> calls{0};
        auto observer = std::make_shared<Observer>([&](const std::string &words) {
            const bool isExit = words.starts_with("exit");
            open += isExit ? -1 : 1;
            calls += isExit ? 1 : 0;
        });
        EXPECT_HR(S_OK, proxy->RegisterKsControlsObserver(observer));
        told += WaitUntil([&] { return calls > 0; });
        EXPECT_HR(S_OK, proxy->UnregisterKsControlsObserver(observer));
        WaitUntil([&] { return observer.use_count() == 1; });
        EXPECT_EQ(0, open); // what was told of an entry was told of the exit
        filter->Forget();
    }
    EXPECT_EQ(50, told);
}
