// The depth transform's own properties, each through a dispatcher as an application reaches them.
#include <array>
#include <cstring>
#include <vector>

#include "platform/ExtendedCameraControl.h"

#include "device/FaceAuthKsPropertyHandler.h"
#include "device/TarnApiVersion.h"
#include "device/TarnConfidenceMapConfig.h"
#include "device/TarnHwCommandKsPropertyHandler.h"
#include "ks/FirmwareCommandPipe.h"
#include "tarn/tarn_dmft.h"
#include "tests/ks/FakeFilter.h"
#include "tests/ks/TestDevice.h"
#include "tests/support/Expect.h"
#include "utils/ComObject.h"

using namespace mft_core;
using namespace tarn_test;
using user_space_frameworks::MakeCom;

namespace
{

constexpr HRESULT kMoreData = HRESULT_FROM_WIN32(ERROR_MORE_DATA);
constexpr HRESULT kBareSetNotFound = 0x492;
constexpr ULONG kGet = KSPROPERTY_TYPE_GET;
constexpr ULONG kSet = KSPROPERTY_TYPE_SET;

class PrivatePropertiesTest : public testing::Test
{
  protected:
    PrivatePropertiesTest()
    {
        EXPECT_HR(S_OK, device->RegisterKsPropertyHandler(faceAuth));
        EXPECT_HR(S_OK, device->RegisterKsPropertyHandler(std::make_shared<TarnApiVersion>()));
        EXPECT_HR(S_OK, device->RegisterKsPropertyHandler(confidenceMap));
        EXPECT_HR(S_OK, device->RegisterKsPropertyHandler(std::make_shared<TarnHwCommandKsPropertyHandler>(
                            std::make_shared<FirmwareCommandPipe>(filter, GUID{}, 7, "pipe"))));
        faceAuth->faceAuthSupported = true;
        filter->answer = [this](const FilterCall &call) {
            if (call.request.Property.Flags == kGet)
            {
                std::memcpy(call.data, &filter->Calls().front().bytes[4], 4);
                std::memset(static_cast<BYTE *>(call.data) + 4, 0x5A, 1020);
                *call.bytesReturned = 1024;
            }
            return S_OK;
        };
    }
    // A call on the private set; `returned` afterwards holds the size, or 99 when it was not touched.
    HRESULT Call(ULONG id, ULONG flags, void *data, ULONG length, const GUID &set = KSPROPERTYSETID_TARN_DMFT_CONTROL)
    {
        KSPROPERTY request = MakeRequest(set, id, flags);
        returned = 99;
        filter->Forget();
        const HRESULT result = device->KsProperty(&request, sizeof(request), data, length, &returned);
        if (set == KSPROPERTYSETID_TARN_DMFT_CONTROL && flags != kSet) // a null count must be survived as well
        {
            EXPECT_EQ(result, device->KsProperty(&request, sizeof(request), data, length, nullptr));
        }
        return result;
    }
    HRESULT FaceAuth(ULONG flags, void *data, ULONG length)
    {
        return Call(KSPROPERTY_CAMERACONTROL_EXTENDED_FACEAUTH_MODE, flags, data, length,
                    KSPROPERTYSETID_ExtendedCameraControl);
    }
    // A command with its buffer in one block.
    static std::vector<BYTE> HwCommand(ULONG opCode, ULONG bufferLength, std::size_t blockSize)
    {
        const KSPROPERTY_TARN_HW_COMMAND header{opCode, bufferLength, 1, 2, 3, 4};
        std::vector<BYTE> block(std::max(blockSize, sizeof(header)), 0x33);
        std::memcpy(block.data(), &header, sizeof(header));
        return block;
    }

    ComPtr<TestDevice> device = MakeCom<TestDevice>();
    ComPtr<FakeFilter> filter = MakeCom<FakeFilter>();
    std::shared_ptr<FaceAuthKsPropertyHandler> faceAuth = std::make_shared<FaceAuthKsPropertyHandler>();
    std::vector<bool> applied;
    HRESULT applyResult = S_OK;
    std::shared_ptr<TarnConfidenceMapConfig> confidenceMap =
        std::make_shared<TarnConfidenceMapConfig>([this](bool enable) {
            applied.push_back(enable);
            return applyResult;
        });
    ULONG returned = 0;
};

} // namespace

TEST_F(PrivatePropertiesTest, ApiVersionIsReadOnly)
{
    std::array<std::uint32_t, 2> version{1, 1};
    EXPECT_HR(S_OK, Call(0, kGet, version.data(), 8));
    EXPECT_EQ((std::array<std::uint32_t, 2>{0, 7}), version);
    EXPECT_EQ(8u, returned);
    EXPECT_HR(kMoreData, Call(0, kGet, version.data(), 7));
    EXPECT_EQ(8u, returned);
    EXPECT_HR(kMoreData, Call(0, kSet, nullptr, 0));
    EXPECT_HR(E_UNEXPECTED, Call(0, kSet, version.data(), 8));
    EXPECT_HR(E_INVALIDARG, Call(0, KSPROPERTY_TYPE_BASICSUPPORT, version.data(), 8));
    EXPECT_HR(E_POINTER, Call(0, kGet, nullptr, 8));
}

TEST_F(PrivatePropertiesTest, ConfidenceMapCallsTheTransformOnlyForChanges)
{
    std::uint32_t value = 0;
    EXPECT_HR(S_OK, Call(2, kSet, &value, 4)); // off already
    EXPECT_TRUE(applied.empty());
    value = 0x80000000;
    EXPECT_HR(S_OK, Call(2, kSet, &value, 4));
    EXPECT_EQ(4u, returned);
    value = 1;
    EXPECT_HR(S_OK, Call(2, kSet, &value, 4)); // on already
    EXPECT_EQ(std::vector<bool>{true}, applied);
    value = 77;
    EXPECT_HR(S_OK, Call(2, kGet, &value, 4));
    EXPECT_EQ(1u, value);

    applyResult = E_UNEXPECTED;
    value = 0;
    EXPECT_HR(E_UNEXPECTED, Call(2, kSet, &value, 4));
    EXPECT_TRUE(confidenceMap->IsEnabled());
    EXPECT_HR(kMoreData, Call(2, kSet, &value, 3));
    EXPECT_EQ(4u, returned);
    EXPECT_HR(E_POINTER, Call(2, kSet, nullptr, 4));
    EXPECT_HR(E_INVALIDARG, Call(2, 0, &value, 4));

    TarnConfidenceMapConfig unbound(nullptr);
    KSPROPERTY request = MakeRequest(KSPROPERTYSETID_TARN_DMFT_CONTROL, 2, kSet);
    value = 1;
    EXPECT_THROW(unbound.Run(&request, sizeof(request), &value, 4, nullptr), std::runtime_error);
}

TEST_F(PrivatePropertiesTest, HwCommandTravelsThroughThePipe)
{
    auto block = HwCommand(0xD4, 8, 32);
    ASSERT_HR(S_OK, Call(3, kSet, block.data(), 32));
    EXPECT_EQ(32u, returned);
    const auto sent = filter->Calls().front().bytes;
    const BYTE expected[] = {28, 0, 0xAB, 0xCD, 0xD4, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 4, 0, 0, 0, 0x33};
    EXPECT_EQ(0, std::memcmp(expected, sent.data(), sizeof(expected)));

    ASSERT_HR(S_OK, Call(3, kGet, block.data(), 32));
    EXPECT_EQ(0x5A, block[24]);
    EXPECT_EQ(0x5A, block[31]);
    EXPECT_EQ(0xD4, block[0]);
    EXPECT_HR(E_INVALIDARG, Call(3, KSPROPERTY_TYPE_BASICSUPPORT, block.data(), 32));
    EXPECT_EQ(32u, returned);
    EXPECT_HR(E_POINTER, Call(3, kGet, nullptr, 32));
    EXPECT_EQ(24u, returned);
    EXPECT_HR(kMoreData, Call(3, kGet, block.data(), 23));
    EXPECT_EQ(24u, returned);
}

// An application's length near the top of 32 bits wrapped to a small sum would send 4 GB of somebody's memory.
TEST_F(PrivatePropertiesTest, HwCommandLengthsNeverWrapOrReachTheCamera)
{
    const struct
    {
        ULONG flags, bufferLength, dataLength;
        HRESULT result;
        ULONG returned;
        std::size_t calls;
    } rows[] = {
        {kGet, 16, 24, kMoreData, 40, 0},
        {kSet, 8, 31, kMoreData, 32, 0},
        {kSet, 0xFFFFFFF0, 1100, kMoreData, 0xFFFFFFFF, 0},
        {kGet, 0xFFFFFFE7, 1100, kMoreData, 0xFFFFFFFF, 0},
        {kGet, 0xFFFFFFE6, 1100, kMoreData, 0xFFFFFFFE, 0},
        {kSet, 0xFFFFFFFF, 0xFFFFFFFF, kMoreData, 0xFFFFFFFF, 0},
        {kSet, 1000, 1024, S_OK, 1024, 2},
        {kSet, 1001, 1025, E_FAIL, 1025, 0},
        {kGet, 1020, 1044, S_OK, 1044, 4}, // called twice, see Call
        {kGet, 1021, 1045, E_INVALIDARG, 1045, 0},
        {kSet, 0, 24, S_OK, 24, 2},
    };
    for (const auto &row : rows)
    {
        SCOPED_TRACE(testing::Message() << "bufferLength " << row.bufferLength << " of " << row.dataLength);
        auto block = HwCommand(1, row.bufferLength, 1100);
        EXPECT_HR(row.result, Call(3, row.flags, block.data(), row.dataLength));
        EXPECT_EQ(row.returned, returned);
        EXPECT_EQ(row.calls, filter->Calls().size());
    }
}

TEST_F(PrivatePropertiesTest, FaceAuthModeChangesOnlyWhenItMay)
{
    KSCAMERA_EXTENDEDPROP_HEADER block[2]; // 64 bytes, 40 used
    std::memset(block, 0xEE, sizeof(block));
    ASSERT_HR(S_OK, FaceAuth(kGet, block, 40));
    EXPECT_EQ(40u, returned);
    EXPECT_EQ(1u, block[0].Version);
    EXPECT_EQ(40u, block[0].Size);
    EXPECT_EQ(1u, block[0].Flags);
    EXPECT_EQ(3u, block[0].Capability);
    EXPECT_EQ(0xEEEEEEEEu, block[0].PinId);
    EXPECT_EQ(0xEEEEEEEEu, block[0].Result);
    EXPECT_EQ(0xEEEEEEEEu, block[1].Version);

    block[0].Flags = 2;
    EXPECT_HR(S_OK, FaceAuth(kSet, block, 40));
    EXPECT_EQ(0u, returned);
    EXPECT_TRUE(faceAuth->faceAuthMode);
    EXPECT_HR(S_OK, FaceAuth(kGet, block, 64));
    EXPECT_EQ(2u, block[0].Flags);
    for (const ULONGLONG refused : {0ull, 3ull, 4ull, 0x100000001ull})
    {
        block[0].Flags = refused;
        EXPECT_HR(E_INVALIDARG, FaceAuth(kSet, block, 40));
    }
    block[0].Flags = 1;
    faceAuth->canChangeMode = false;
    EXPECT_HR(E_FAIL, FaceAuth(kSet, block, 40));
    EXPECT_HR(S_OK, FaceAuth(kGet, block, 40));
    EXPECT_TRUE(faceAuth->faceAuthMode);
    faceAuth->canChangeMode = true;
    block[0].Flags = 1;
    EXPECT_HR(S_OK, FaceAuth(kSet, block, 40));
    EXPECT_FALSE(faceAuth->faceAuthMode);
}

TEST_F(PrivatePropertiesTest, FaceAuthRefusals)
{
    BYTE data[40] = {};
    KSPROPERTY request = MakeRequest(KSPROPERTYSETID_ExtendedCameraControl, 35, kGet);
    EXPECT_HR(kMoreData, FaceAuth(kGet, data, 39));
    EXPECT_EQ(40u, returned);
    EXPECT_HR(E_INVALIDARG, FaceAuth(KSPROPERTY_TYPE_BASICSUPPORT, data, 40));
    EXPECT_EQ(0u, returned);
    EXPECT_HR(E_POINTER, FaceAuth(kSet, nullptr, 40));
    EXPECT_HR(E_POINTER, device->KsProperty(&request, sizeof(request), data, 40, nullptr));
    EXPECT_HR(E_POINTER, faceAuth->Run(nullptr, 0, data, 40, &returned));
    faceAuth->faceAuthSupported = false;
    EXPECT_HR(kBareSetNotFound, FaceAuth(kGet, data, 39));
    EXPECT_EQ(0u, returned);
}
