// Hardware-monitor commands through the command control: what no transform of ours sends.
#include "sim/Firmware.h"

#include <algorithm>
#include <numeric>

#include "tests/sim/SimCase.h"

namespace tarn_sim
{
namespace
{

using Bytes = std::vector<std::uint8_t>;

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
} // namespace tarn_sim
