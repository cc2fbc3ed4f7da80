#include "ks/WarmStartKsPropsHandler.h"

#include <array>
#include <cstring>

#include "platform/ExtendedCameraControl.h"

#include "tests/ks/FakeFilter.h"
#include "tests/support/Expect.h"

using namespace mft_core;
using namespace tarn_test;

namespace
{

constexpr HRESULT kMoreData = HRESULT_FROM_WIN32(ERROR_MORE_DATA);
constexpr ULONG kGet = KSPROPERTY_TYPE_GET;
constexpr ULONG kSet = KSPROPERTY_TYPE_SET;

struct Row
{
    ULONG flags;
    bool hasData;
    ULONG length;
    HRESULT result;
    ULONG returned;
};

} // namespace

TEST(WarmStartKsPropsHandlerTest, EveryRowOfItsTable)
{
    WarmStartKsPropsHandler handler;
    const Row rows[] = {
        {kGet, true, 0, kMoreData, 40},    {kGet, true, 39, kMoreData, 0}, {kGet, false, 40, S_OK, 0},
        {kGet, true, 40, S_OK, 40},        {kGet, true, 41, S_OK, 40},     {kSet, true, 0, kMoreData, 40},
        {kSet, true, 39, kMoreData, 0},    {kSet, false, 40, S_OK, 0},     {kSet, true, 40, S_OK, 16},
        {kSet | kGet, true, 40, S_OK, 16}, // a set first of all
        {0x200, true, 40, S_OK, 0},        {0, false, 0, S_OK, 0},
    };
    for (const Row &row : rows)
    {
        SCOPED_TRACE(testing::Message() << "flags " << row.flags << " length " << row.length);
        std::array<BYTE, 41> data{};
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
    KSPROPERTY request = MakeRequest(KSPROPERTYSETID_ExtendedCameraControl, 4, kGet);
    ULONG returned = 0;
    ASSERT_HR(S_OK, handler.Run(&request, sizeof(request), data.data(), 41, &returned));

    const std::array<BYTE, 41> expected = {1, 0, 0, 0,    0xEE, 0xEE, 0xEE, 0xEE, 40,   0,    0,    0,    0,   0,
                                           0, 0, 0, 0,    0,    0,    0,    0,    0,    0,    0,    0,    0,   0,
                                           0, 0, 0, 0x80, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
    EXPECT_EQ(expected, data);
}

TEST(WarmStartKsPropsHandlerTest, SwitchingItOnIsRefused)
{
    WarmStartKsPropsHandler handler;
    KSPROPERTY request = MakeRequest(KSPROPERTYSETID_ExtendedCameraControl, 4, kSet);
    std::array<BYTE, 40> data{};
    ULONG returned = 99;
    data[16] = 1;
    EXPECT_HR(E_INVALIDARG, handler.Run(&request, sizeof(request), data.data(), 40, &returned));
    EXPECT_EQ(0u, returned);
    data[16] = 2; // only the lowest bit counts
    EXPECT_HR(S_OK, handler.Run(&request, sizeof(request), data.data(), 40, &returned));
}
