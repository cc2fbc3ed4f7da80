// What the application at the end of one output stream sees: its books and a few of its frames.
#pragma once

#include "platform/MediaFoundation.h"

#include <mutex>
#include <string>
#include <vector>

#include "tools/frameserver/FrameFormat.h"
#include "tools/pictures/FrameGallery.h"
#include "tools/frameserver/LockedFrame.h"
#include "tools/frameserver/SampleDetails.h"
#include "tools/runs/StreamStatistics.h"

namespace tarn_host
{

// How many of the delivered frames carried what.
struct AttachmentCounts
{
    std::uint64_t records = 0;
    std::uint64_t intrinsics = 0;
    std::uint64_t confidenceMaps = 0;
    std::uint64_t illuminated = 0;
};

// Fed by the capture thread (in) and the event loop (out). Thread-safe.
class OutputCollector
{
  public:
    // `framesToShow` 0 keeps no frames.
    OutputCollector(DWORD streamId, FrameFormat streamFormat, std::size_t framesToShow);

    DWORD Id() const noexcept
    {
        return id;
    }
    const FrameFormat &Format() const noexcept
    {
        return format;
    }

    void FrameIn(std::int64_t sampleTime100ns);
    // False when it came out all the same, or never went in.
    bool FrameRefused(std::int64_t sampleTime100ns);
    // So many came while the output was started or restarted.
    void FramesBetween(std::uint64_t count);
    // A frame of this time went in and has not come out.
    bool Expects(std::int64_t sampleTime100ns) const;
    // The output has been stopped or restarted: what is still on its way need not come out.
    void CutOff();

    // Counts the frame and returns its number, from 0.
    std::uint64_t FrameOut(const SampleDetails &details);
    bool WantsPixels(std::uint64_t frameNumber) const;
    // For the pictures: the frame and its confidence map.
    void Keep(std::uint64_t frameNumber, const LockedFrame &frame, const SampleDetails &details);

    std::uint64_t FramesIn() const;
    std::uint64_t FramesOut() const;
    std::size_t InFlight() const;
    StreamSummary Summary() const;
    AttachmentCounts Attachments() const;
    std::vector<Thumbnail> Frames() const;
    std::vector<Thumbnail> ConfidenceMaps() const;

  private:
    void KeepIn(FrameGallery &kept, std::span<const std::byte> pixels, const FrameFormat &pixelFormat,
                std::uint64_t frameNumber, const SampleDetails &details);

    const DWORD id;
    const FrameFormat format;
    const bool keepsFrames;

    mutable std::mutex lock;
    StreamStatistics statistics;  // guarded by lock
    AttachmentCounts attachments; // guarded by lock
    FrameGallery gallery;         // guarded by lock
    FrameGallery maps;            // guarded by lock
};

} // namespace tarn_host
