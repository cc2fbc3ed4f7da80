// The filter's KS side: extension-unit controls, privacy, the auto-update event, and every way to ask wrongly.
#include "sim/KsFilter.h"

#include <array>
#include <string_view>

#include "sim/CalibrationTable.h"
#include "tests/sim/SimCase.h"
#include "tests/support/HandleCount.h"

namespace tarn_sim
{
namespace
{

const HRESULT kSetNotFound = HRESULT_FROM_WIN32(ERROR_SET_NOT_FOUND);
const HRESULT kNotFound = HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
const HRESULT kTooSmall = HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER);
const HRESULT kMoreData = HRESULT_FROM_WIN32(ERROR_MORE_DATA);

class KsFilterTest : public testing::Test
{
  protected:
    ComPtr<SimulatedCamera> camera = MakeCamera(CameraConfiguration::TarnDepth());
    ULONG returned = 0;

    HRESULT Node(const GUID &set, ULONG id, ULONG flags, void *data, ULONG length, ULONG node = 3)
    {
        KSP_NODE request{};
        request.Property.Set = set;
        request.Property.Id = id;
        request.Property.Flags = flags | KSPROPERTY_TYPE_TOPOLOGY;
        request.NodeId = node;
        return camera->KsProperty(&request.Property, sizeof(request), data, length, &returned);
    }
    HRESULT Control(ULONG id, ULONG flags, void *data, ULONG length)
    {
        return Node(kDepthExtensionUnit, id, flags, data, length);
    }
    HRESULT Privacy(ULONG flags, KSPROPERTY_CAMERACONTROL_S &value, ULONG length = sizeof(KSPROPERTY_CAMERACONTROL_S))
    {
        KSPROPERTY property{};
        property.Set = PROPSETID_VIDCAP_CAMERACONTROL;
        property.Id = KSPROPERTY_CAMERACONTROL_PRIVACY;
        property.Flags = flags;
        return camera->KsProperty(&property, sizeof(property), &value, length, &returned);
    }
};

TEST_F(KsFilterTest, OnlyTheExtensionUnitsNodeKnowsTheSet)
{
    for (ULONG node = 0; node < 5; ++node)
    {
        EXPECT_HR(node == 3 ? S_OK : kSetNotFound,
                  Node(kDepthExtensionUnit, kControlLaserPower, KSPROPERTY_TYPE_SETSUPPORT, nullptr, 0, node));
    }
    EXPECT_HR(E_INVALIDARG, Node(kDepthExtensionUnit, 1, KSPROPERTY_TYPE_SETSUPPORT, nullptr, 0, 5));
    EXPECT_HR(kSetNotFound, Node(kColorExtensionUnit, 1, KSPROPERTY_TYPE_SETSUPPORT, nullptr, 0));
}

TEST_F(KsFilterTest, ListsRangeAndDefaultWhereKsPutsThem)
{
    struct Row
    {
        ULONG id;
        int minimum, maximum, step, defaultValue;
    };
    for (const auto &row : {Row{kControlLaserPower, 0, 16, 1, 16}, Row{kControlAccuracy, 1, 3, 1, 2},
                            Row{kControlMotionVersusRange, 0, 100, 1, 9}, Row{kControlDepthError, 0, 255, 1, 0},
                            Row{kControlFilterOption, 0, 7, 1, 5}, Row{kControlConfidenceThreshold, 0, 15, 1, 3}})
    {
        std::array<std::uint8_t, 59> reply{};
        ASSERT_HR(S_OK, Control(row.id, KSPROPERTY_TYPE_BASICSUPPORT, reply.data(), 59));
        EXPECT_EQ(59U, returned);
        EXPECT_EQ(row.minimum, reply[56]);
        EXPECT_EQ(row.maximum, reply[57]);
        EXPECT_EQ(row.step, reply[58]);
        ASSERT_HR(S_OK, Control(row.id, KSPROPERTY_TYPE_DEFAULTVALUES, reply.data(), 58));
        EXPECT_EQ(57U, returned);
        EXPECT_EQ(row.defaultValue, reply[56]);
    }
    ULONG access = 0;
    EXPECT_HR(S_OK, Control(kControlDepthError, KSPROPERTY_TYPE_BASICSUPPORT, &access, sizeof(access)));
    EXPECT_EQ(0U, access & KSPROPERTY_TYPE_SET);
    EXPECT_EQ(4U, returned);
    EXPECT_HR(kMoreData, Control(kControlLaserPower, KSPROPERTY_TYPE_BASICSUPPORT, nullptr, 0));
    EXPECT_EQ(59U, returned);
    EXPECT_HR(kTooSmall, Control(kControlLaserPower, KSPROPERTY_TYPE_BASICSUPPORT, &access, 3));
    EXPECT_HR(kTooSmall, Control(kControlLaserPower, KSPROPERTY_TYPE_DEFAULTVALUES, &access, 4));
}

TEST_F(KsFilterTest, KeepsAValueOnlyWithinItsRange)
{
    std::uint8_t value = 3;
    std::array<std::uint8_t, 2> tooLong{1, 1};
    EXPECT_HR(S_OK, Control(kControlAccuracy, KSPROPERTY_TYPE_SET, &value, 1));
    value = 4;
    EXPECT_HR(E_INVALIDARG, Control(kControlAccuracy, KSPROPERTY_TYPE_SET, &value, 1));
    value = 0;
    EXPECT_HR(E_INVALIDARG, Control(kControlAccuracy, KSPROPERTY_TYPE_SET, &value, 1));
    EXPECT_HR(E_INVALIDARG, Control(kControlAccuracy, KSPROPERTY_TYPE_SET, tooLong.data(), 2));
    EXPECT_HR(kTooSmall, Control(kControlAccuracy, KSPROPERTY_TYPE_SET, &value, 0));
    EXPECT_HR(E_POINTER, Control(kControlAccuracy, KSPROPERTY_TYPE_SET, nullptr, 1));
    EXPECT_HR(kNotFound, Control(kControlDepthError, KSPROPERTY_TYPE_SET, &value, 1));

    EXPECT_HR(S_OK, Control(kControlAccuracy, KSPROPERTY_TYPE_GET, &value, 1));
    EXPECT_EQ(3, value);
    EXPECT_EQ(1U, returned);
    EXPECT_EQ(3, camera->ControlValue(kControlAccuracy));

    // Granularity of the color unit goes in steps of two from two.
    camera = MakeCamera(CameraConfiguration::TarnColor());
    value = 12;
    EXPECT_HR(S_OK, Node(kColorExtensionUnit, kControlExposureGranularity, KSPROPERTY_TYPE_SET, &value, 1, 2));
    value = 13;
    EXPECT_HR(E_INVALIDARG, Node(kColorExtensionUnit, kControlExposureGranularity, KSPROPERTY_TYPE_SET, &value, 1, 2));
    EXPECT_EQ(12, camera->ControlValue(kControlExposureGranularity));
}

TEST_F(KsFilterTest, RefusesWhatItDoesNotKnow)
{
    KSP_NODE request{};
    request.Property.Set = kDepthExtensionUnit;
    request.Property.Id = kControlAccuracy;
    request.Property.Flags = KSPROPERTY_TYPE_GET;
    request.NodeId = 3;
    std::uint8_t value = 0;

    EXPECT_HR(kSetNotFound, camera->KsProperty(&request.Property, sizeof(request), &value, 1, &returned));
    request.Property.Flags |= KSPROPERTY_TYPE_TOPOLOGY;
    EXPECT_HR(S_OK, camera->KsProperty(&request.Property, sizeof(request), &value, 1, nullptr));
    EXPECT_HR(kTooSmall, camera->KsProperty(&request.Property, 24, &value, 1, &returned));
    EXPECT_HR(kTooSmall, camera->KsProperty(&request.Property, 23, &value, 1, &returned));
    EXPECT_HR(E_POINTER, camera->KsProperty(nullptr, sizeof(request), &value, 1, &returned));
    EXPECT_HR(kNotFound, Control(99, KSPROPERTY_TYPE_GET, &value, 1));
    EXPECT_HR(kNotFound, Control(kControlAccuracy, KSPROPERTY_TYPE_RELATIONS, &value, 1));
    KSMETHOD method{};
    EXPECT_HR(kSetNotFound, camera->KsMethod(&method, sizeof(method), nullptr, 0, &returned));
    EXPECT_EQ(0U, returned);
}

TEST_F(KsFilterTest, HandsOutTheCalibrationTable)
{
    std::array<std::uint8_t, 120> bytes{};
    CalibrationTable table{};
    EXPECT_HR(kMoreData, Control(kControlCalibration, KSPROPERTY_TYPE_GET, nullptr, 0));
    EXPECT_EQ(sizeof(table), returned);
    EXPECT_HR(kTooSmall, Control(kControlCalibration, KSPROPERTY_TYPE_GET, bytes.data(), sizeof(table) - 1));

    ASSERT_HR(S_OK, Control(kControlCalibration, KSPROPERTY_TYPE_GET, bytes.data(), 120));

    ASSERT_EQ(sizeof(table), returned);
    std::memcpy(&table, bytes.data(), sizeof(table));
    EXPECT_EQ(0, std::memcmp("TCAL", table.magic, 4));
    EXPECT_EQ(104, table.size);
    EXPECT_EQ(Crc32({bytes.data(), 100}), table.checksum);
    EXPECT_EQ(474.5F, table.focalLengthX);
    const std::string_view check = "123456789"; // the polynomial's published check value
    EXPECT_EQ(0xCBF43926U, Crc32({reinterpret_cast<const std::uint8_t *>(check.data()), check.size()}));
}

TEST_F(KsFilterTest, PrivacyIsACameraControl)
{
    KSPROPERTY_CAMERACONTROL_S value{};
    ASSERT_HR(S_OK, Privacy(KSPROPERTY_TYPE_GET, value));
    EXPECT_EQ(0, value.Value);

    camera->SetPrivacy(true);
    ASSERT_HR(S_OK, Privacy(KSPROPERTY_TYPE_GET, value));
    EXPECT_EQ(1, value.Value);
    EXPECT_EQ(sizeof(value), returned);
    value.Value = 2;
    EXPECT_HR(E_INVALIDARG, Privacy(KSPROPERTY_TYPE_SET, value));
    value.Value = 0;
    EXPECT_HR(kTooSmall, Privacy(KSPROPERTY_TYPE_SET, value, 39));
    EXPECT_TRUE(camera->Privacy());
    EXPECT_HR(S_OK, Privacy(KSPROPERTY_TYPE_SET, value));
    EXPECT_FALSE(camera->Privacy());
}

TEST_F(KsFilterTest, SignalsTheAutoUpdateEventUntilItIsDisabled)
{
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    KSEVENTDATA data{};
    data.NotificationType = KSEVENTF_EVENT_HANDLE;
    data.EventHandle.Event = event;
    KSEVENT request{};
    request.Set = KSEVENTSETID_VIDCAPTOSTI;
    request.Id = KSEVENT_VIDCAP_AUTO_UPDATE;
    request.Flags = KSEVENT_TYPE_ENABLE;

    EXPECT_HR(kTooSmall, camera->KsEvent(&request, sizeof(request), &data, sizeof(data) - 1, &returned));
    ASSERT_HR(S_OK, camera->KsEvent(&request, sizeof(request), &data, sizeof(data), &returned));
    EXPECT_EQ(1U, camera->SignalAutoUpdate());
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(event, 0));
    KSEVENTDATA stranger = data;
    EXPECT_HR(kNotFound, camera->KsEvent(nullptr, 0, &stranger, sizeof(stranger), &returned));
    EXPECT_HR(S_OK, camera->KsEvent(nullptr, 0, &data, sizeof(data), &returned));
    EXPECT_HR(kNotFound, camera->KsEvent(nullptr, 0, &data, sizeof(data), &returned));
    EXPECT_EQ(0U, camera->SignalAutoUpdate());
    EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), WaitForSingleObject(event, 0));

    request.Id = KSEVENT_VIDCAP_SEARCH;
    EXPECT_HR(kNotFound, camera->KsEvent(&request, sizeof(request), &data, sizeof(data), &returned));
    request.Set = kDepthExtensionUnit;
    EXPECT_HR(kSetNotFound, camera->KsEvent(&request, sizeof(request), &data, sizeof(data), &returned));
    CloseHandle(event);
}

TEST_F(KsFilterTest, ListenersLeaveNoHandlesBehind)
{
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    std::array<KSEVENTDATA, 10> listeners{};
    KSEVENT request{};
    request.Set = KSEVENTSETID_VIDCAPTOSTI;
    request.Id = KSEVENT_VIDCAP_AUTO_UPDATE;
    request.Flags = KSEVENT_TYPE_ENABLE;
    const int before = tarn_test::CountHandles();

    for (auto &listener : listeners)
    {
        listener.NotificationType = KSEVENTF_EVENT_HANDLE;
        listener.EventHandle.Event = event;
        ASSERT_HR(S_OK, camera->KsEvent(&request, sizeof(request), &listener, sizeof(listener), nullptr));
    }
    EXPECT_EQ(10U, camera->EventListenerCount());
    camera.Reset(); // with the listeners still there

    EXPECT_EQ(before, tarn_test::CountHandles());
    CloseHandle(event);
}

} // namespace
} // namespace tarn_sim
