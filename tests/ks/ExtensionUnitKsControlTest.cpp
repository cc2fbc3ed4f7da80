#include "ks/ExtensionUnitKsControl.h"

#include "tests/ks/FakeFilter.h"

using namespace mft_core;
using namespace tarn_test;
using user_space_frameworks::MakeCom;

namespace
{

constexpr GUID kOtherNode = {9, 9, 9, {9}};

class ExtensionUnitKsControlTest : public testing::Test
{
  protected:
    // Only `node` supports the set.
    void SupportOn(ULONG node)
    {
        filter->answer = [node](const FilterCall &call) {
            return call.request.NodeId == node ? S_OK : HRESULT_FROM_WIN32(ERROR_SET_NOT_FOUND);
        };
    }
    HRESULT Init() { return unit->Init(filter.Get(), filter.Get(), 3); }

    ComPtr<FakeFilter> filter = MakeCom<FakeFilter>();
    ComPtr<ExtensionUnitKsControl> unit = MakeCom<ExtensionUnitKsControl>(kTestSet);
};

} // namespace

TEST_F(ExtensionUnitKsControlTest, FirstDeviceSpecificNodeThatAnswersWins)
{
    filter->nodes = {kOtherNode, KSNODETYPE_DEV_SPECIFIC, GUID{}, KSNODETYPE_DEV_SPECIFIC, KSNODETYPE_DEV_SPECIFIC};
    SupportOn(3);
    ASSERT_HR(S_OK, Init());

    const auto calls = filter->Calls();
    ASSERT_EQ(2u, calls.size()); // the decoy before it was asked, the one behind it was not
    KSP_NODE expected{};
    expected.Property = MakeRequest(kTestSet, 3, 0x10000100);
    expected.NodeId = 1;
    EXPECT_EQ(0, std::memcmp(&expected, &calls[0].request, sizeof(expected)));
    EXPECT_EQ(32u, calls[0].requestLength);
    EXPECT_EQ(nullptr, calls[0].data);
    EXPECT_EQ(0u, calls[0].dataLength);
    EXPECT_EQ(3u, calls[1].request.NodeId);
}

TEST_F(ExtensionUnitKsControlTest, StaysUnusableUntilTheNodeIsFound)
{
    EXPECT_HR(E_POINTER, unit->Init(nullptr, filter.Get(), 3));
    EXPECT_HR(E_POINTER, unit->Init(filter.Get(), nullptr, 3));
    EXPECT_HR(E_NOINTERFACE, Init()); // no nodes
    filter->nodes = {kOtherNode, KSNODETYPE_DEV_SPECIFIC};
    filter->answer = [](const FilterCall &) { return S_FALSE; }; // only S_OK means support
    EXPECT_HR(E_NOINTERFACE, Init());
    filter->nodeCountResult = E_ACCESSDENIED;
    EXPECT_HR(E_ACCESSDENIED, Init());
    filter->nodeCountResult = S_OK;
    filter->hasTopology = false;
    EXPECT_HR(E_NOINTERFACE, Init());

    filter->Forget();
    KSPROPERTY request = MakeRequest(kTestSet, 1, KSPROPERTY_TYPE_GET);
    EXPECT_HR(E_NOINTERFACE, unit->KsProperty(&request, sizeof(request), nullptr, 0, nullptr));
    EXPECT_HR(E_NOINTERFACE, unit->KsMethod(&request, sizeof(request), nullptr, 0, nullptr));
    EXPECT_HR(E_NOINTERFACE, unit->KsEvent(nullptr, 0, nullptr, 0, nullptr));
    EXPECT_TRUE(filter->Calls().empty());
    EXPECT_REFS(filter, 1);
}

TEST_F(ExtensionUnitKsControlTest, EveryKindOfCallIsAddressedToTheNode)
{
    filter->nodes = {kOtherNode, KSNODETYPE_DEV_SPECIFIC};
    SupportOn(1);
    ASSERT_HR(S_OK, Init());
    filter->Forget();
    filter->answer = [](const FilterCall &call) { return 20 + static_cast<HRESULT>(call.kind); };
    KSPROPERTY request = MakeRequest(kTestSet, 6, KSPROPERTY_TYPE_GET);
    KSPROPERTY addressed = MakeRequest(kTestSet, 6, KSPROPERTY_TYPE_GET | KSPROPERTY_TYPE_TOPOLOGY);
    BYTE data[4] = {};
    ULONG returned = 0;

    EXPECT_HR(20, unit->KsProperty(&request, 5, data, 4, &returned)); // the stated length is not used
    EXPECT_HR(20, unit->KsProperty(&addressed, sizeof(addressed), data, 4, &returned));
    EXPECT_HR(21, unit->KsMethod(&request, sizeof(request), data, 4, nullptr));
    EXPECT_HR(22, unit->KsEvent(&request, sizeof(request), data, 4, &returned));
    EXPECT_HR(20, unit->SendKsProperty(6, data, 4, KSPROPERTY_TYPE_GET, &returned));
    const auto calls = filter->Calls();
    ASSERT_EQ(5u, calls.size());
    for (const FilterCall &call : calls)
    {
        EXPECT_EQ(32u, call.requestLength);
        EXPECT_EQ(0, std::memcmp(&addressed, &call.request.Property, sizeof(addressed)));
        EXPECT_EQ(1u, call.request.NodeId);
        EXPECT_EQ(data, call.data);
        EXPECT_EQ(4u, call.dataLength);
    }
    EXPECT_EQ(KSPROPERTY_TYPE_GET, request.Flags); // the caller's block is not changed

    EXPECT_HR(22, unit->KsEvent(nullptr, 0, data, 4, nullptr)); // disabling an event names no node
    EXPECT_FALSE(filter->Calls().back().hasIdentifier);
    EXPECT_HR(E_POINTER, unit->KsProperty(nullptr, 24, nullptr, 0, nullptr));
}

TEST_F(ExtensionUnitKsControlTest, RangeAndDefaultComeFromTwoReplies)
{
    filter->nodes = {KSNODETYPE_DEV_SPECIFIC};
    SupportOn(0);
    ASSERT_HR(S_OK, Init());
    int failing = 0;
    filter->answer = [&](const FilterCall &call) {
        const bool range = call.request.Property.Flags == (0x200 | KSPROPERTY_TYPE_TOPOLOGY);
        EXPECT_TRUE(range || call.request.Property.Flags == (0x10000 | KSPROPERTY_TYPE_TOPOLOGY));
        EXPECT_EQ(range ? 59u : 58u, call.dataLength);
        const BYTE values[] = {static_cast<BYTE>(range ? 10 : 40), 20, 30};
        std::memcpy(static_cast<BYTE *>(call.data) + 56, values, range ? 3 : 1);
        return failing == (range ? 1 : 2) ? E_ACCESSDENIED : S_OK;
    };
    BYTE values[4] = {1, 1, 1, 1};
    const auto query = [&] { return unit->QueryKsPropertyInfo(5, &values[0], &values[1], &values[2], &values[3]); };

    EXPECT_HR(S_OK, query());
    const BYTE expected[] = {10, 20, 30, 40};
    EXPECT_EQ(0, std::memcmp(expected, values, 4));
    for (failing = 1; failing <= 2; ++failing)
    {
        EXPECT_HR(E_ACCESSDENIED, query());
        EXPECT_EQ(0, values[0] + values[1] + values[2] + values[3]);
    }
    EXPECT_HR(E_POINTER, unit->QueryKsPropertyInfo(5, nullptr, &values[1], &values[2], &values[3]));
}
