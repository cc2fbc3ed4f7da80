// The camera's record of a frame: the one place that tells whether what came with the frame is such a record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "device/nodes/UvcMetaDataWrapper.h"
#include "tarn/frame_metadata.h"

namespace mft_core
{

// Borrows the sample for the length of the constructor; keeps the metadata buffer locked while alive. Confined.
class FrameMetadataReader
{
  public:
    // Cannot fail: a frame without metadata has no record.
    explicit FrameMetadataReader(IMFSample *sample) noexcept;

    // The record, when one that holds (magic, version 1 or later, its size inside the item) has at least `needed`
    // bytes; fields behind its end are 0.
    std::optional<TARN_FRAME_METADATA> Record(std::size_t needed) const noexcept;

    // A record that holds and is complete, with what later versions append. Empty when there is none.
    std::span<const BYTE> CompleteRecord() const noexcept;

    // These two have their place in the camera's item whatever else is in it, so no record has to hold. Nothing where
    // the item ends before it.
    std::optional<std::uint8_t> Illumination() const noexcept;
    bool IsConfidenceSuppressed() const noexcept;

    // The store that holds the frame's capture metadata; null when the frame has none.
    IMFAttributes *Store() const noexcept
    {
        return metaData.Store();
    }

  private:
    const UvcMetaDataWrapper metaData;
    std::size_t recordSize = 0; // bytes; 0 = none that holds
};

// Bytes of a record up to and with its flags and its size: what a reader of the flags needs.
inline constexpr std::size_t kFrameRecordHead = offsetof(TARN_FRAME_METADATA, frameCounter);

} // namespace mft_core
