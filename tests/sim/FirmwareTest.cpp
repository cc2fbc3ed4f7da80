// Hardware-monitor commands through the command control, as a transform sends them.
#include "sim/Firmware.h"

#include <algorithm>
#include <array>
#include <numeric>

#include "sim/CalibrationTable.h"
#include "sim/DeviceInfo.h"
#include "tests/sim/SimCase.h"

namespace tarn_sim
{
namespace
{

struct Command
{
    std::uint32_t opcode = 0;
    std::vector<std::uint8_t> data;
    std::array<std::uint32_t, 4> parameters{};
    std::uint16_t magic = 0xCDAB;
};

std::vector<std::uint8_t> BlockOf(const Command &command)
{
    std::vector<std::uint8_t> block(1024);
    const auto length = static_cast<std::uint16_t>(20 + command.data.size());
    std::memcpy(block.data(), &length, 2);
    std::memcpy(block.data() + 2, &command.magic, 2);
    std::memcpy(block.data() + 4, &command.opcode, 4);
    std::memcpy(block.data() + 8, command.parameters.data(), 16);
    std::ranges::copy(command.data, block.begin() + 24);
    return block;
}

HRESULT Transfer(SimulatedCamera &camera, ULONG flags, void *data, ULONG length, ULONG *returned)
{
    KSP_NODE request{};
    request.Property.Set = kDepthExtensionUnit;
    request.Property.Id = kControlCommand;
    request.Property.Flags = flags | KSPROPERTY_TYPE_TOPOLOGY;
    request.NodeId = 3;
    return camera.KsProperty(&request.Property, sizeof(request), data, length, returned);
}

struct Answer
{
    std::uint32_t echo = 0;
    std::vector<std::uint8_t> data;
};

Answer Execute(SimulatedCamera &camera, const Command &command)
{
    auto block = BlockOf(command);
    ULONG returned = 0;
    EXPECT_HR(S_OK, Transfer(camera, KSPROPERTY_TYPE_SET, block.data(), 1024, &returned));
    EXPECT_HR(S_OK, Transfer(camera, KSPROPERTY_TYPE_GET, block.data(), 1024, &returned));
    Answer answer;
    EXPECT_GE(returned, 4U);
    std::memcpy(&answer.echo, block.data(), 4);
    answer.data.assign(block.begin() + 4, block.begin() + static_cast<std::ptrdiff_t>(returned));
    return answer;
}

class FirmwareTest : public testing::Test
{
  protected:
    ComPtr<SimulatedCamera> camera = MakeCamera(CameraConfiguration::TarnDepth());
};

TEST_F(FirmwareTest, TellsWhatDeviceItIs)
{
    const Answer answer = Execute(*camera.Get(), {kOpcodeDeviceInfo, {}});

    ASSERT_EQ(kOpcodeDeviceInfo, answer.echo);
    ASSERT_EQ(174U, answer.data.size());
    DeviceInfo info{};
    std::memcpy(&info, answer.data.data(), sizeof(info));
    EXPECT_EQ(174, info.size);
    EXPECT_EQ("TRN0000000000042", std::string(info.serialNumber, sizeof(info.serialNumber)));
    const std::uint32_t checksum = info.checksum; // not aligned in its record
    EXPECT_EQ(Crc32({answer.data.data(), 170}), checksum);
}

TEST_F(FirmwareTest, RemembersAutoRangeAndHighDynamicRange)
{
    const std::vector<std::uint8_t> range{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    const std::vector<std::uint8_t> hdr{8, 7, 6, 5, 4, 3, 2, 1};

    EXPECT_EQ(kOpcodeSetAutoRange, Execute(*camera.Get(), {kOpcodeSetAutoRange, range, {7, 8}}).echo);
    EXPECT_EQ(kOpcodeHdrConfiguration, Execute(*camera.Get(), {kOpcodeHdrConfiguration, hdr}).echo);
    EXPECT_EQ(kOpcodeHdr, Execute(*camera.Get(), {kOpcodeHdr, {}, {1}}).echo);
    EXPECT_EQ(Firmware::kRefusal, Execute(*camera.Get(), {kOpcodeHdr, {}, {2}}).echo);
    EXPECT_EQ(Firmware::kRefusal, Execute(*camera.Get(), {kOpcodeSetAutoRange, hdr}).echo);

    FirmwareState state = camera->FirmwareNow();
    EXPECT_EQ(range, state.autoRange);
    EXPECT_EQ(7U, state.autoRangeParam1);
    EXPECT_EQ(8U, state.autoRangeParam2);
    EXPECT_EQ(hdr, state.hdrConfiguration);
    EXPECT_TRUE(state.hdrOn);
    EXPECT_EQ(2U, state.refused);
    Execute(*camera.Get(), {kOpcodeSetAutoRange, {}});
    EXPECT_TRUE(camera->FirmwareNow().autoRange.empty());
}

TEST_F(FirmwareTest, EchoesDataUpToTheBlocksEnd)
{
    std::vector<std::uint8_t> data(1000);
    std::iota(data.begin(), data.end(), std::uint8_t{1});

    EXPECT_EQ(data, Execute(*camera.Get(), {kOpcodeEcho, data}).data);
    const Answer parameters = Execute(*camera.Get(), {kOpcodeEcho, {}, {0x11223344, 2, 3, 4}});
    ASSERT_EQ(1020U, parameters.data.size());
    EXPECT_EQ(0x44, parameters.data[0]);
    EXPECT_EQ(0x44, parameters.data[1008]); // 63 rounds of 16 bytes later
    EXPECT_EQ(data, Execute(*camera.Get(), {kOpcodeRecall, {}}).data);
}

TEST_F(FirmwareTest, RefusesWhatIsNoCommand)
{
    for (const auto opcode : {kOpcodeRefused, 0U, 0xFFFFFFFEU})
    {
        EXPECT_EQ(Firmware::kRefusal, Execute(*camera.Get(), {opcode, {}}).echo);
    }
    EXPECT_EQ(Firmware::kRefusal, Execute(*camera.Get(), {kOpcodeEcho, {}, {}, 0xABCD}).echo);
    for (const std::uint16_t length : std::array<std::uint16_t, 4>{0, 19, 1021, 65535})
    {
        auto block = BlockOf({kOpcodeEcho, {}});
        std::memcpy(block.data(), &length, 2);
        ULONG returned = 0;
        EXPECT_HR(S_OK, Transfer(*camera.Get(), KSPROPERTY_TYPE_SET, block.data(), 1024, &returned));
        EXPECT_HR(S_OK, Transfer(*camera.Get(), KSPROPERTY_TYPE_GET, block.data(), 1024, &returned));
        EXPECT_EQ(4U, returned) << "length " << length;
    }
    auto block = BlockOf({kOpcodeEcho, {}});
    EXPECT_HR(HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER),
              Transfer(*camera.Get(), KSPROPERTY_TYPE_SET, block.data(), 1023, nullptr));
    EXPECT_HR(E_POINTER, Transfer(*camera.Get(), KSPROPERTY_TYPE_SET, nullptr, 1024, nullptr));
    EXPECT_HR(E_POINTER, Transfer(*camera.Get(), KSPROPERTY_TYPE_GET, nullptr, 1024, nullptr));
}

} // namespace
} // namespace tarn_sim
