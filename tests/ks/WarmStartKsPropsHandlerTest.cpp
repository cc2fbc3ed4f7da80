#include "ks/WarmStartKsPropsHandler.h"

#include <algorithm>
#include <array>

#include "platform/ExtendedCameraControl.h"

#include "tests/ks/FakeFilter.h"
#include "tests/support/Expect.h"

using namespace mft_core;
using namespace tarn_test;

TEST(WarmStartKsPropsHandlerTest, EveryRowOfItsTable)
{
    constexpr ULONG kGet = KSPROPERTY_TYPE_GET;
    constexpr ULONG kSet = KSPROPERTY_TYPE_SET;
    WarmStartKsPropsHandler handler;
    const struct
    {
        ULONG flags;
        bool hasData;
        ULONG length;
        BYTE wanted; // lowest byte of the flags in the block
        HRESULT result;
        ULONG returned;
    } rows[] = {
        {kGet, true, 0, 0, kMoreData, 40},    {kGet, true, 39, 0, kMoreData, 0},
        {kGet, false, 40, 0, S_OK, 0},        {kGet, true, 41, 0, S_OK, 40},
        {kSet, true, 0, 0, kMoreData, 40},    {kSet, true, 39, 0, kMoreData, 0},
        {kSet, false, 40, 0, S_OK, 0},        {kSet, true, 40, 0, S_OK, 16},
        {kSet, true, 40, 1, E_INVALIDARG, 0}, // switching it on
        {kSet, true, 40, 2, S_OK, 16},        // only the lowest bit counts
        {kSet | kGet, true, 40, 0, S_OK, 16}, // a set first of all
        {0x200, true, 40, 0, S_OK, 0},        {0, false, 0, 0, S_OK, 0},
    };
    for (const auto &row : rows)
    {
        SCOPED_TRACE(testing::Message() << "flags " << row.flags << " length " << row.length);
        std::array<BYTE, 41> data{};
        data[16] = row.wanted;
        KSPROPERTY request = MakeRequest(KSPROPERTYSETID_ExtendedCameraControl, 4, row.flags);
        ULONG returned = 99;
        void *buffer = row.hasData ? data.data() : nullptr;
        EXPECT_HR(row.result, handler.Run(&request, sizeof(request), buffer, row.length, &returned));
        EXPECT_EQ(row.returned, returned);
        EXPECT_HR(row.result, handler.Run(&request, sizeof(request), buffer, row.length, nullptr));
    }
}

TEST(WarmStartKsPropsHandlerTest, GetFillsTheHeaderAndLeavesTheCallersFields)
{
    WarmStartKsPropsHandler handler;
    std::array<BYTE, 41> data;
    data.fill(0xEE);
    KSPROPERTY request = MakeRequest(KSPROPERTYSETID_ExtendedCameraControl, 4, KSPROPERTY_TYPE_GET);
    ULONG returned = 0;
    ASSERT_HR(S_OK, handler.Run(&request, sizeof(request), data.data(), 41, &returned));

    std::array<BYTE, 41> expected{1, 0, 0, 0, 0xEE, 0xEE, 0xEE, 0xEE, 40};
    expected[31] = 0x80;
    std::fill(expected.begin() + 32, expected.end(), BYTE{0xEE});
    EXPECT_EQ(expected, data);
}
