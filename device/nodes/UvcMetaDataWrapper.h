// Finds the camera's own record in the metadata that the driver attached to a frame.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstddef>
#include <optional>

#include "base/LockedBuffer.h"

namespace mft_core
{

// Borrows the sample for the length of the constructor; keeps the metadata buffer locked while alive. A frame without
// metadata and one whose metadata are malformed both count as having none. Confined.
class UvcMetaDataWrapper
{
  public:
    // Cannot fail.
    explicit UvcMetaDataWrapper(IMFSample *sample) noexcept;

    bool HasMetaData() const noexcept
    {
        return payload != nullptr;
    }
    // Layout: include/tarn/frame_metadata.h. Null without metadata; bytes at and after PayloadSize() do not exist.
    const BYTE *Payload() const noexcept
    {
        return payload;
    }
    std::size_t PayloadSize() const noexcept
    {
        return payloadSize;
    }
    // The payload's byte, or nothing where the payload ends before it.
    std::optional<BYTE> ByteAt(std::size_t offset) const noexcept;

    // The store that holds the frame's capture metadata; null when the frame has none.
    IMFAttributes *Store() const noexcept
    {
        return store.Get();
    }

  private:
    void FindPayload() noexcept;

    ComPtr<IMFAttributes> store;
    user_space_frameworks::LockedBuffer items;
    const BYTE *payload = nullptr; // into items
    std::size_t payloadSize = 0;
};

} // namespace mft_core
