// State of the simulated camera that its controls set and its frames' metadata show.
#pragma once

#include "platform/MediaFoundation.h"

#include <tarn/frame_metadata.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

namespace tarn_sim
{

enum class Access : std::uint8_t
{
    ReadOnly,
    ReadWrite
};

// A one-byte control of the extension unit.
struct ByteControl
{
    ULONG id = 0;
    Access access = Access::ReadWrite;
    std::uint8_t minimum = 0;
    std::uint8_t maximum = 0;
    std::uint8_t step = 1;
    std::uint8_t defaultValue = 0;
    std::uint8_t value = 0;
};

// Thread-safe.
class CameraControls
{
  public:
    // The controls that the extension unit with this property set has; none for an unknown set.
    explicit CameraControls(const GUID &extensionUnitSet);

    // False when there is no such control; `control` is then untouched.
    bool Find(ULONG id, ByteControl &control) const;
    // False when there is no such control.
    bool Store(ULONG id, std::uint8_t value);

    // The current value; 0 when there is no such control.
    std::uint8_t ValueOf(ULONG id) const;

    void SetErrorCode(std::uint8_t code); // what the extension unit's error control answers
    void FillMetadata(TARN_FRAME_METADATA &record) const;

    std::atomic<bool> privacy{false};
    std::atomic<bool> confidenceSuppressed{false}; // flag in the frames' metadata
    std::atomic<bool> hdr{false};

  private:
    mutable std::mutex lock;
    std::vector<ByteControl> controls; // guarded by lock; the list itself never changes
    ULONG errorControl = 0;
};

} // namespace tarn_sim
