// The camera's firmware behind the command control: hardware-monitor blocks in, answers out.
#pragma once

#include <windows.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "sim/CameraControls.h"
#include "sim/FaultInjector.h"
#include "sim/FirmwareState.h"

namespace tarn_sim
{

// One block is written, its answer read from the same control until the next block. Thread-safe.
class Firmware
{
  public:
    static constexpr ULONG kTransferBytes = 1024; // of a block; also the longest answer

    Firmware(std::vector<std::uint8_t> deviceInfoAnswer, std::shared_ptr<CameraControls> cameraControls,
             std::shared_ptr<FaultInjector> faultInjector);

    // A block of exactly kTransferBytes. A command that is refused, or that is no command at all, is not an error of
    // the transfer: its answer echoes kRefusal.
    void Write(std::span<const std::uint8_t> block);
    std::vector<std::uint8_t> Answer() const; // what stands there now: the echoed opcode and data
    FirmwareState State() const;

    static constexpr std::uint32_t kRefusal = 0xFFFFFFFF;

  private:
    struct Command;

    bool Execute(const Command &command, std::vector<std::uint8_t> &data);

    const std::vector<std::uint8_t> deviceInfo;
    const std::shared_ptr<CameraControls> controls;
    const std::shared_ptr<FaultInjector> faults;

    mutable std::mutex lock;
    std::vector<std::uint8_t> answer; // this and the rest guarded by lock
    std::vector<std::uint8_t> echoed;
    FirmwareState state;
};

} // namespace tarn_sim
