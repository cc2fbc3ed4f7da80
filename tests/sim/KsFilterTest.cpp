// The filter's KS side: lengths and ranges of its controls, firmware commands, the auto-update event, and every way to
// ask wrongly.
#include "sim/KsFilter.h"

#include <numeric>

#include "sim/Firmware.h"
#include "tests/sim/SimCase.h"
#include "tests/support/HandleCount.h"

using namespace tarn_sim;
using namespace tarn_test;

namespace
{

const HRESULT kSetNotFound = HRESULT_FROM_WIN32(ERROR_SET_NOT_FOUND);
const HRESULT kNotFound = HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
const HRESULT kTooSmall = HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER);
const HRESULT kMoreData = HRESULT_FROM_WIN32(ERROR_MORE_DATA);
constexpr ULONG kGet = KSPROPERTY_TYPE_GET;
constexpr ULONG kSet = KSPROPERTY_TYPE_SET;

class KsFilterTest : public testing::Test
{
  protected:
    ComPtr<SimulatedCamera> camera = MakeCamera(CameraConfiguration::TarnDepth());
    ULONG returned = 0;

    HRESULT Control(ULONG id, ULONG flags, void *data, ULONG length)
    {
        return NodeProperty(*camera.Get(), KSPROPERTYSETID_TARN_DEPTH_CONTROL, id, flags, data, length, &returned);
    }
};

TEST_F(KsFilterTest, AnswersFitTheSpaceThereIs)
{
    std::array<std::uint8_t, 120> reply{};
    const struct
    {
        ULONG id, flags, length;
        HRESULT result;
        ULONG returned;
    } rows[] = {
        {kControlLaserPower, KSPROPERTY_TYPE_BASICSUPPORT, 59, S_OK, 59},
        {kControlLaserPower, KSPROPERTY_TYPE_BASICSUPPORT, 4, S_OK, 4},
        {kControlLaserPower, KSPROPERTY_TYPE_BASICSUPPORT, 3, kTooSmall, 0},
        {kControlLaserPower, KSPROPERTY_TYPE_BASICSUPPORT, 0, kMoreData, 59},
        {kControlLaserPower, KSPROPERTY_TYPE_DEFAULTVALUES, 58, S_OK, 57},
        {kControlLaserPower, KSPROPERTY_TYPE_DEFAULTVALUES, 4, kTooSmall, 0},
        {kControlLaserPower, KSPROPERTY_TYPE_RELATIONS, 1, kNotFound, 0},
        {kControlLaserPower, kGet, 1, S_OK, 1},
        {kControlCalibration, kGet, 0, kMoreData, 104},
        {kControlCalibration, kGet, 103, kTooSmall, 0},
        {kControlCalibration, kGet, 120, S_OK, 104},
        {99, kGet, 1, kNotFound, 0},
    };
    for (const auto &row : rows)
    {
        SCOPED_TRACE(testing::Message() << "control " << row.id << " flags " << row.flags << " length " << row.length);
        EXPECT_HR(row.result, Control(row.id, row.flags, row.length == 0 ? nullptr : reply.data(), row.length));
        EXPECT_EQ(row.returned, returned);
    }
}

TEST_F(KsFilterTest, KeepsAValueOnlyWithinItsRange)
{
    std::array<std::uint8_t, 2> value{3, 1};
    EXPECT_HR(S_OK, Control(kControlAccuracy, kSet, value.data(), 1));
    EXPECT_HR(E_INVALIDARG, Control(kControlAccuracy, kSet, value.data(), 2));
    EXPECT_HR(kTooSmall, Control(kControlAccuracy, kSet, value.data(), 0));
    EXPECT_HR(E_POINTER, Control(kControlAccuracy, kSet, nullptr, 1));
    EXPECT_HR(kNotFound, Control(kControlDepthError, kSet, value.data(), 1));
    for (std::uint8_t outside : {std::uint8_t{0}, std::uint8_t{4}})
    {
        EXPECT_HR(E_INVALIDARG, Control(kControlAccuracy, kSet, &outside, 1));
    }
    EXPECT_HR(S_OK, Control(kControlAccuracy, kGet, value.data(), 1));
    EXPECT_EQ(3, value[0]);

    // Granularity of the color unit goes in steps of two from two.
    camera = MakeCamera(CameraConfiguration::TarnColor());
    const auto setGranularity = [&](std::uint8_t granularity) {
        return NodeProperty(*camera.Get(), KSPROPERTYSETID_TARN_COLOR_CONTROL, kControlExposureGranularity, kSet,
                            &granularity, 1, &returned, 2);
    };
    EXPECT_HR(S_OK, setGranularity(12));
    EXPECT_HR(E_INVALIDARG, setGranularity(13));
    EXPECT_EQ(12, camera->Controls().ValueOf(kControlExposureGranularity));
}

TEST_F(KsFilterTest, RefusesWhatItDoesNotKnow)
{
    for (ULONG node = 0; node < 5; ++node) // decoys around the extension unit
    {
        EXPECT_HR(node == 3 ? S_OK : kSetNotFound,
                  NodeProperty(*camera.Get(), KSPROPERTYSETID_TARN_DEPTH_CONTROL, kControlLaserPower,
                               KSPROPERTY_TYPE_SETSUPPORT, nullptr, 0, &returned, node));
    }
    EXPECT_HR(E_INVALIDARG,
              NodeProperty(*camera.Get(), KSPROPERTYSETID_TARN_DEPTH_CONTROL, 1, kGet, nullptr, 0, &returned, 5));
    EXPECT_HR(kSetNotFound,
              NodeProperty(*camera.Get(), KSPROPERTYSETID_TARN_COLOR_CONTROL, 1, kGet, nullptr, 0, &returned));

    KSPROPERTY request{{{KSPROPERTYSETID_TARN_DEPTH_CONTROL, kControlAccuracy, kGet}}};
    std::uint8_t value = 0;
    EXPECT_HR(kSetNotFound, camera->KsProperty(&request, sizeof(request), &value, 1, &returned));
    EXPECT_HR(kTooSmall, camera->KsProperty(&request, sizeof(request) - 1, &value, 1, &returned));
    EXPECT_HR(kSetNotFound, camera->KsMethod(&request, sizeof(request), nullptr, 0, &returned));
    request.Flags |= KSPROPERTY_TYPE_TOPOLOGY; // and no room for a node
    EXPECT_HR(kTooSmall, camera->KsProperty(&request, sizeof(request), &value, 1, &returned));
    EXPECT_HR(E_POINTER, camera->KsProperty(nullptr, sizeof(request), &value, 1, &returned));
    EXPECT_EQ(0U, returned);
}

TEST_F(KsFilterTest, PrivacyIsACameraControl)
{
    KSPROPERTY_CAMERACONTROL_S value{};
    const auto privacy = [&](ULONG flags, ULONG length = sizeof(KSPROPERTY_CAMERACONTROL_S)) {
        KSPROPERTY property{{{PROPSETID_VIDCAP_CAMERACONTROL, KSPROPERTY_CAMERACONTROL_PRIVACY, flags}}};
        return camera->KsProperty(&property, sizeof(property), &value, length, &returned);
    };
    camera->Controls().privacy = true;
    ASSERT_HR(S_OK, privacy(kGet));
    EXPECT_EQ(1, value.Value);
    EXPECT_EQ(sizeof(value), returned);
    value.Value = 2;
    EXPECT_HR(E_INVALIDARG, privacy(kSet));
    value.Value = 0;
    EXPECT_HR(kTooSmall, privacy(kSet, 39));
    EXPECT_TRUE(camera->Controls().privacy);
    EXPECT_HR(S_OK, privacy(kSet));
    EXPECT_FALSE(camera->Controls().privacy);
}

TEST_F(KsFilterTest, AutoUpdateIsSignalledUntilItIsDisabledAndLeavesNoHandle)
{
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const int before = CountHandles();
    KSEVENTDATA data{};
    data.NotificationType = KSEVENTF_EVENT_HANDLE;
    data.EventHandle.Event = event;
    std::array<KSEVENTDATA, 10> others{};
    others.fill(data);
    const auto enable = [&](KSEVENTDATA &listener, ULONG id = KSEVENT_VIDCAP_AUTO_UPDATE,
                            const GUID &set = KSEVENTSETID_VIDCAPTOSTI, ULONG length = sizeof(KSEVENTDATA)) {
        KSEVENT request{{{set, id, KSEVENT_TYPE_ENABLE}}};
        return camera->KsEvent(&request, sizeof(request), &listener, length, &returned);
    };
    const auto disable = [&](KSEVENTDATA &listener) {
        return camera->KsEvent(nullptr, 0, &listener, sizeof(listener), &returned);
    };
    EXPECT_HR(kTooSmall, enable(data, KSEVENT_VIDCAP_AUTO_UPDATE, KSEVENTSETID_VIDCAPTOSTI, sizeof(data) - 1));
    EXPECT_HR(kNotFound, enable(data, KSEVENT_VIDCAP_SEARCH));
    EXPECT_HR(kSetNotFound, enable(data, 1, KSPROPERTYSETID_TARN_DEPTH_CONTROL));
    ASSERT_HR(S_OK, enable(data));
    EXPECT_EQ(1U, camera->Ks().SignalAutoUpdate());
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(event, 0));
    EXPECT_HR(kNotFound, disable(others[0])); // by address
    EXPECT_HR(S_OK, disable(data));
    EXPECT_HR(kNotFound, disable(data));
    EXPECT_EQ(0U, camera->Ks().SignalAutoUpdate());
    EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), WaitForSingleObject(event, 0));

    for (auto &listener : others)
    {
        ASSERT_HR(S_OK, enable(listener));
    }
    EXPECT_EQ(10U, camera->Ks().EventListenerCount());
    camera.Reset(); // with the listeners still there

    EXPECT_EQ(before, CountHandles());
    CloseHandle(event);
}

Bytes Block(std::uint32_t opcode, const Bytes &data, std::uint16_t length, std::uint16_t magic = 0xCDAB)
{
    Bytes block(1024);
    std::memcpy(block.data(), &length, 2);
    std::memcpy(block.data() + 2, &magic, 2);
    std::memcpy(block.data() + 4, &opcode, 4);
    std::ranges::copy(data, block.begin() + 24);
    return block;
}

TEST(FirmwareTest, EchoesDataUpToTheBlocksEndAndRefusesWhatIsNoCommand)
{
    const auto camera = MakeCamera(CameraConfiguration::TarnDepth());
    ULONG returned = 0;
    std::uint32_t echo = 0;
    const auto transfer = [&](ULONG flags, void *data, ULONG length = 1024) {
        return NodeProperty(*camera.Get(), KSPROPERTYSETID_TARN_DEPTH_CONTROL, kControlCommand, flags, data, length,
                            &returned);
    };
    // The data of the answer behind the echoed opcode, which becomes `echo`.
    const auto execute = [&](Bytes block) -> Bytes {
        EXPECT_HR(S_OK, transfer(KSPROPERTY_TYPE_SET, block.data()));
        EXPECT_HR(S_OK, transfer(KSPROPERTY_TYPE_GET, block.data()));
        EXPECT_GE(returned, 4U);
        std::memcpy(&echo, block.data(), 4);
        return {block.begin() + 4, block.begin() + static_cast<std::ptrdiff_t>(returned)};
    };
    Bytes data(1000);
    std::iota(data.begin(), data.end(), std::uint8_t{1});
    EXPECT_EQ(data, execute(Block(kOpcodeEcho, data, 1020)));
    EXPECT_EQ(1020U, execute(Block(kOpcodeEcho, {}, 20)).size()); // the parameters, over and over
    EXPECT_EQ(kOpcodeEcho, echo);
    EXPECT_EQ(data, execute(Block(kOpcodeRecall, {}, 20)));

    const Bytes eight(8, 1);
    const Bytes refused[] = {Block(0xEE, {}, 20),
                             Block(0, {}, 20),
                             Block(0xFFFFFFFE, {}, 20),
                             Block(kOpcodeEcho, {}, 20, 0xABCD),
                             Block(kOpcodeEcho, {}, 19),
                             Block(kOpcodeEcho, {}, 1021),
                             Block(kOpcodeEcho, {}, 65535),
                             Block(HWmonitor_HDRSet, eight, 28),
                             Block(HWmonitor_SetAutoRange, eight, 28),
                             Block(HWmonitor_HDRConfigSet, {}, 20)};
    for (const Bytes &block : refused)
    {
        EXPECT_EQ(Bytes{}, execute(block)) << "block " << &block - refused;
        EXPECT_EQ(Firmware::kRefusal, echo);
    }
    EXPECT_EQ(std::size(refused), camera->Ks().FirmwareNow().refused);
    EXPECT_HR(HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER), transfer(KSPROPERTY_TYPE_SET, data.data(), 1000));
    EXPECT_HR(E_POINTER, transfer(KSPROPERTY_TYPE_SET, nullptr));
    EXPECT_HR(E_POINTER, transfer(KSPROPERTY_TYPE_GET, nullptr));
}

} // namespace
