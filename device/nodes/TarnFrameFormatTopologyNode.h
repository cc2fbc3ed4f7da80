// Lets only frames of the expected format into a chain.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "core/InputStream.h"
#include "device/ConfidenceMapState.h"
#include "device/nodes/FrameRefusals.h"
#include "tarn/frame_metadata.h"

namespace mft_core
{

// After a change of format the pin goes on with the former one until the pipeline gets round to it; such frames reach
// the new topology. The frame's own record tells its format. One without a record is taken for what is expected unless
// it has exactly the length of a format of before: drivers may pad. Owned by its topology. Thread-safe.
class TarnFrameFormatTopologyNode : public ITopologyNode
{
  public:
    // Made before the pin is asked for anything new: what it ran with until now is the former format.
    // `acceptedSubtypes` are the camera's, of `frameWidth` x `frameHeight` pixels. With `confidenceMapState` a padded
    // frame without a record is one of both planes while the map is enabled.
    TarnFrameFormatTopologyNode(std::shared_ptr<ITopologyNode> successor, const InputStream &pin,
                                std::vector<GUID> acceptedSubtypes, std::uint32_t frameWidth, std::uint32_t frameHeight,
                                std::shared_ptr<const ConfidenceMapState> confidenceMapState = nullptr);

    // Drops a frame that is known to be of another format or size, and one that is shorter than its format needs; both
    // are counted and said as errors, at most once a second. A longer frame goes on as it is.
    HRESULT ProcessSample(IMFSample *sample) override;

    // Of a frame of one of the camera's subtypes, all planes together; 0 for another subtype.
    static std::uint64_t FrameBytes(const GUID &subtype, std::uint32_t frameWidth, std::uint32_t frameHeight) noexcept;

  private:
    using Refusal = std::optional<FrameRefusals::Reason>;

    void AddFormerLengths(const InputStream &pin);
    Refusal JudgeByRecord(const TARN_FRAME_METADATA &record, std::uint64_t length) const;
    Refusal JudgeByLength(std::uint64_t length) const;
    std::uint64_t LengthOf(const GUID &subtype) const noexcept;
    std::uint64_t LeastLength() const;
    void Refuse(FrameRefusals::Reason reason, std::uint64_t length);

    const std::vector<GUID> subtypes;
    const std::uint32_t width;
    const std::uint32_t height;
    const std::shared_ptr<const ConfidenceMapState> confidenceMap;
    std::vector<std::uint64_t> formerLengths; // bytes
    FrameRefusals refusals;
};

} // namespace mft_core
