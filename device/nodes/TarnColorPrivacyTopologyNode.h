// Blanks color frames while the camera's privacy control is on.
#pragma once

#include <array>
#include <cstddef>
#include <optional>

#include "core/ITopologyNode.h"
#include "device/nodes/FramePrivacy.h"

namespace mft_core
{

// Works in the buffers it is given; what is black differs by format. Owned by its topology, shares the privacy state.
// Immutable after Init.
class TarnColorPrivacyTopologyNode : public ITopologyNode
{
  public:
    // `mediaType` is the frames'. Throws std::invalid_argument("framePrivacy is null").
    TarnColorPrivacyTopologyNode(std::shared_ptr<ITopologyNode> successor, std::shared_ptr<FramePrivacy> framePrivacy,
                                 IMFMediaType *mediaType);

    // With privacy on, the sample's pixels are black to the full capacity of its buffer. A frame that cannot be blanked
    // is dropped: so is every one of a compressed or unknown format.
    HRESULT ProcessSample(IMFSample *sample) override;

  private:
    // A first plane of so many bytes, and what follows it; each is filled with a pair of bytes over and over.
    struct Black
    {
        std::array<BYTE, 2> first;
        std::array<BYTE, 2> rest;
        std::size_t firstBytes;
    };

    static std::optional<Black> BlackOf(IMFMediaType *mediaType);
    HRESULT BlankPixels(IMFSample *sample) const;

    const std::shared_ptr<FramePrivacy> privacy;
    const std::optional<Black> black;
};

} // namespace mft_core
