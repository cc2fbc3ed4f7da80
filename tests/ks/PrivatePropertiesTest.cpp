// Properties that the transforms answer themselves, each through a dispatcher as an application reaches them.

#include "platform/ExtendedCameraControl.h"

#include "core/PassThroughDeviceMft.h"
#include "device/properties/FaceAuthKsPropertyHandler.h"
#include "device/properties/TarnApiVersion.h"
#include "device/properties/TarnConfidenceMapConfig.h"
#include "device/properties/TarnDepthPresetsKsPropertyHandler.h"
#include "device/properties/TarnHwCommandKsPropertyHandler.h"
#include "ks/FirmwareCommandPipe.h"
#include "ks/WarmStartKsPropsHandler.h"
#include "tarn/tarn_dmft.h"
#include "tests/ks/FakeFilter.h"
#include "base/ComObject.h"

using namespace mft_core;
using namespace tarn_test;
using user_space_frameworks::MakeCom;

namespace
{

constexpr ULONG kGet = KSPROPERTY_TYPE_GET;
constexpr ULONG kSet = KSPROPERTY_TYPE_SET;
constexpr ULONG kSupport = KSPROPERTY_TYPE_BASICSUPPORT;
// Of the platform's set; the others are of the private one.
constexpr ULONG kFaceAuth = KSPROPERTY_CAMERACONTROL_EXTENDED_FACEAUTH_MODE;
constexpr ULONG kWarmStart = KSPROPERTY_CAMERACONTROL_EXTENDED_WARMSTART;

class PrivatePropertiesTest : public testing::Test
{
  protected:
    PrivatePropertiesTest()
    {
        EXPECT_HR(S_OK, device->RegisterKsPropertyHandler(faceAuthHandler));
        EXPECT_HR(S_OK, device->RegisterKsPropertyHandler(std::make_shared<WarmStartKsPropsHandler>()));
        EXPECT_HR(S_OK, device->RegisterKsPropertyHandler(std::make_shared<TarnApiVersion>()));
        EXPECT_HR(S_OK, device->RegisterKsPropertyHandler(std::make_shared<TarnDepthPresetsKsPropertyHandler>(
                            std::make_shared<TarnDepthPresets>(nullptr, nullptr))));
        EXPECT_HR(S_OK, device->RegisterKsPropertyHandler(std::make_shared<TarnConfidenceMapConfig>(
                            [this](bool enable) {
                                applied.push_back(enable);
                                return applyResult;
                            },
                            confidenceMap)));
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
    // `returned` afterwards holds the size, or 99 when it was not touched.
    HRESULT Call(ULONG id, ULONG flags, void *data, ULONG length)
    {
        const bool isOwn = id != kFaceAuth && id != kWarmStart;
        KSPROPERTY request =
            MakeRequest(isOwn ? KSPROPERTYSETID_TARN_DMFT_CONTROL : KSPROPERTYSETID_ExtendedCameraControl, id, flags);
        returned = 99;
        filter->Forget();
        const HRESULT result = device->KsProperty(&request, sizeof(request), data, length, &returned);
        if (id != kFaceAuth && (id == kWarmStart || flags != kSet)) // a null count must be survived as well
        {
            EXPECT_EQ(result, device->KsProperty(&request, sizeof(request), data, length, nullptr));
        }
        return result;
    }
    // A command with its buffer in one block of 1100 bytes.
    static std::vector<BYTE> HwCommand(ULONG opCode, ULONG bufferLength)
    {
        const KSPROPERTY_TARN_HW_COMMAND header{opCode, bufferLength, 1, 2, 3, 4};
        std::vector<BYTE> block(1100, 0x33);
        std::memcpy(block.data(), &header, sizeof(header));
        return block;
    }

    ComPtr<PassThroughDeviceMft> device = MakeCom<PassThroughDeviceMft>("Test device");
    ComPtr<FakeFilter> filter = MakeCom<FakeFilter>();
    std::shared_ptr<FaceAuthState> faceAuth = std::make_shared<FaceAuthState>();
    std::shared_ptr<FaceAuthKsPropertyHandler> faceAuthHandler = std::make_shared<FaceAuthKsPropertyHandler>(faceAuth);
    std::vector<bool> applied;
    HRESULT applyResult = S_OK;
    std::shared_ptr<ConfidenceMapState> confidenceMap = std::make_shared<ConfidenceMapState>();
    ULONG returned = 0;
};

} // namespace

// An application's length near the top of 32 bits wrapped to a small sum would send 4 GB of somebody's memory.
TEST_F(PrivatePropertiesTest, EachCallIsServedOrRefusedWithTheSizeItNeeds)
{
    const struct
    {
        ULONG id, flags, value; // the length of a command's buffer, or the lowest byte of the wanted flags
        bool hasData;
        ULONG length;
        HRESULT result;
        ULONG returned;
        std::size_t calls;
    } rows[] = {
        {0, kGet, 0, true, 8, S_OK, 8, 0},
        {0, kGet, 0, true, 7, kMoreData, 8, 0},
        {0, kSet, 0, false, 0, kMoreData, 8, 0},
        {0, kSet, 0, true, 8, E_UNEXPECTED, 8, 0},
        {0, kSupport, 0, true, 8, E_INVALIDARG, 8, 0},
        {0, kGet, 0, false, 8, E_POINTER, 8, 0},
        {1, kGet, 0, true, 4, S_OK, 4, 0},
        {1, kGet, 0, true, 3, kMoreData, 4, 0},
        {1, kSet, 0, false, 0, kMoreData, 4, 0},
        {1, kSet, 0, false, 4, E_POINTER, 4, 0},
        {1, kSet, 0, true, 4, E_INVALIDARG, 4, 0}, // there is no preset 13
        {1, kSupport, 0, true, 4, E_INVALIDARG, 4, 0},
        {2, kSet, 0, true, 3, kMoreData, 4, 0},
        {2, kSet, 0, false, 4, E_POINTER, 4, 0},
        {2, 0, 0, true, 4, E_INVALIDARG, 4, 0},
        {3, kSupport, 8, true, 32, E_INVALIDARG, 32, 0},
        {3, kGet, 8, false, 32, E_POINTER, 24, 0},
        {3, kGet, 8, true, 23, kMoreData, 24, 0},
        {3, kGet, 16, true, 24, kMoreData, 40, 0},
        {3, kSet, 8, true, 31, kMoreData, 32, 0},
        {3, kSet, 0xFFFFFFF0, true, 1100, kMoreData, 0xFFFFFFFF, 0},
        {3, kGet, 0xFFFFFFE7, true, 1100, kMoreData, 0xFFFFFFFF, 0},
        {3, kGet, 0xFFFFFFE6, true, 1100, kMoreData, 0xFFFFFFFE, 0},
        {3, kSet, 0xFFFFFFFF, true, 0xFFFFFFFF, kMoreData, 0xFFFFFFFF, 0},
        {3, kSet, 1000, true, 1024, S_OK, 1024, 2},
        {3, kSet, 1001, true, 1025, E_FAIL, 1025, 0},
        {3, kGet, 1020, true, 1044, S_OK, 1044, 4}, // called twice, see Call
        {3, kGet, 1021, true, 1045, E_INVALIDARG, 1045, 0},
        {3, kSet, 0, true, 24, S_OK, 24, 2},
        {kFaceAuth, kGet, 0, true, 39, kMoreData, 40, 0},
        {kFaceAuth, kSupport, 0, true, 40, E_INVALIDARG, 0, 0},
        {kFaceAuth, kSet, 0, false, 40, E_POINTER, 0, 0},
        {kWarmStart, kGet, 0, true, 0, kMoreData, 40, 0},
        {kWarmStart, kGet, 0, true, 39, kMoreData, 0, 0},
        {kWarmStart, kGet, 0, false, 40, S_OK, 0, 0},
        {kWarmStart, kGet, 0, true, 41, S_OK, 40, 0},
        {kWarmStart, kSet, 0, true, 0, kMoreData, 40, 0},
        {kWarmStart, kSet, 0, true, 39, kMoreData, 0, 0},
        {kWarmStart, kSet, 0, false, 40, S_OK, 0, 0},
        {kWarmStart, kSet, 0, true, 40, S_OK, 16, 0},
        {kWarmStart, kSet, 1, true, 40, E_INVALIDARG, 0, 0}, // switching it on
        {kWarmStart, kSet, 2, true, 40, S_OK, 16, 0},        // only the lowest bit counts
        {kWarmStart, kSet | kGet, 0, true, 40, S_OK, 16, 0}, // a set first of all
        {kWarmStart, kSupport, 0, true, 40, S_OK, 0, 0},
        {kWarmStart, 0, 0, false, 0, S_OK, 0, 0},
    };
    for (const auto &row : rows)
    {
        SCOPED_TRACE(testing::Message() << "row " << &row - rows);
        auto block = HwCommand(13, row.value);
        block[16] = static_cast<BYTE>(row.value); // of a command a parameter
        EXPECT_HR(row.result, Call(row.id, row.flags, row.hasData ? block.data() : nullptr, row.length));
        EXPECT_EQ(row.returned, returned);
        EXPECT_EQ(row.calls, filter->Calls().size());
    }
    EXPECT_TRUE(applied.empty());
}

TEST_F(PrivatePropertiesTest, ConfidenceMapAsksTheTransformAndAnswersItsState)
{
    std::array<std::uint32_t, 2> version{1, 1};
    EXPECT_HR(S_OK, Call(0, kGet, version.data(), 8));
    EXPECT_EQ((std::array<std::uint32_t, 2>{0, 7}), version);

    std::uint32_t value = 0x80000000;
    EXPECT_HR(S_OK, Call(2, kSet, &value, 4));
    EXPECT_EQ(4u, returned);
    confidenceMap->Set(true);
    EXPECT_HR(S_OK, Call(2, kSet, &value, 4)); // as it is: the transform is not asked
    applyResult = E_UNEXPECTED;
    value = 0;
    EXPECT_HR(E_UNEXPECTED, Call(2, kSet, &value, 4));
    EXPECT_EQ((std::vector<bool>{true, false}), applied);
    for (const bool enabled : {true, false})
    {
        confidenceMap->Set(enabled);
        value = 77;
        EXPECT_HR(S_OK, Call(2, kGet, &value, 4));
        EXPECT_EQ(enabled ? 1u : 0u, value);
    }

    TarnConfidenceMapConfig unbound(nullptr, confidenceMap);
    KSPROPERTY request = MakeRequest(KSPROPERTYSETID_TARN_DMFT_CONTROL, 2, kSet);
    value = 1;
    EXPECT_THROW(unbound.Run(&request, sizeof(request), &value, 4, nullptr), std::runtime_error);
}

TEST_F(PrivatePropertiesTest, HwCommandTravelsThroughThePipe)
{
    auto block = HwCommand(0xD4, 8);
    ASSERT_HR(S_OK, Call(3, kSet, block.data(), 32));
    const auto sent = filter->Calls().front().bytes;
    const BYTE expected[] = {28, 0, 0xAB, 0xCD, 0xD4, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 4, 0, 0, 0, 0x33};
    EXPECT_EQ(0, std::memcmp(expected, sent.data(), sizeof(expected)));

    ASSERT_HR(S_OK, Call(3, kGet, block.data(), 32));
    auto answered = HwCommand(0xD4, 8);
    std::memset(&answered[24], 0x5A, 8);
    EXPECT_EQ(answered, block);
}

TEST_F(PrivatePropertiesTest, ExtendedControlsFillTheirHeaderAndFaceAuthChangesOnlyWhenItMay)
{
    KSCAMERA_EXTENDEDPROP_HEADER block[2]; // 64 bytes, 40 used
    for (const auto &[id, result, flags, capability] :
         {std::tuple{kWarmStart, 0u, 0ull, 0x8000000000000000ull}, {kFaceAuth, 0xEEEEEEEEu, 1ull, 3ull}})
    {
        std::memset(block, 0xEE, sizeof(block)); // what is not written stays the caller's
        const KSCAMERA_EXTENDEDPROP_HEADER expected{1, block[1].PinId, 40, result, flags, capability};
        ASSERT_HR(S_OK, Call(id, kGet, block, 40));
        EXPECT_EQ(40u, returned);
        EXPECT_EQ(0, std::memcmp(&expected, block, sizeof(expected)));
        EXPECT_EQ(0xEEEEEEEEu, block[1].Version);
    }

    block[0].Flags = 2;
    EXPECT_HR(S_OK, Call(kFaceAuth, kSet, block, 40));
    EXPECT_EQ(0u, returned);
    EXPECT_TRUE(faceAuth->faceAuthMode);
    EXPECT_HR(S_OK, Call(kFaceAuth, kGet, block, 64));
    EXPECT_EQ(2u, block[0].Flags);
    for (const ULONGLONG refused : {0ull, 3ull, 4ull, 0x100000001ull})
    {
        block[0].Flags = refused;
        EXPECT_HR(E_INVALIDARG, Call(kFaceAuth, kSet, block, 40));
    }
    block[0].Flags = 1;
    faceAuth->canChangeMode = false;
    EXPECT_HR(E_FAIL, Call(kFaceAuth, kSet, block, 40));
    EXPECT_TRUE(faceAuth->faceAuthMode);
    faceAuth->canChangeMode = true;
    EXPECT_HR(S_OK, Call(kFaceAuth, kSet, block, 40));
    EXPECT_FALSE(faceAuth->faceAuthMode);

    KSPROPERTY request = MakeRequest(KSPROPERTYSETID_ExtendedCameraControl, kFaceAuth, kGet);
    EXPECT_HR(E_POINTER, device->KsProperty(&request, sizeof(request), block, 40, nullptr));
    EXPECT_HR(E_POINTER, faceAuthHandler->Run(nullptr, 0, block, 40, &returned));
    faceAuth->faceAuthSupported = false;
    EXPECT_HR(kBareSetNotFound, Call(kFaceAuth, kGet, block, 39));
    EXPECT_EQ(0u, returned);
}
