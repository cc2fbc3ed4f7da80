// What the application at the end of one output stream sees: its books and a few of its frames.
#pragma once

#include "platform/MediaFoundation.h"

#include <mutex>
#include <string>
#include <vector>

#include "tools/FrameFormat.h"
#include "tools/FrameGallery.h"
#include "tools/StreamStatistics.h"

namespace tarn_host
{

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

    void FrameIn(IMFSample &sample);
    void FrameRefused();
    // Counts the frame in any case; fails when its pixels cannot be read for the picture.
    HRESULT FrameOut(IMFSample &sample);

    std::uint64_t FramesIn() const;
    std::uint64_t FramesOut() const;
    std::size_t InFlight() const;
    StreamSummary Summary() const;
    std::vector<Thumbnail> Frames() const;

  private:
    HRESULT KeepThumbnail(IMFSample &sample, std::int64_t sampleTime100ns, std::uint64_t frameNumber);

    const DWORD id;
    const FrameFormat format;
    const bool keepsFrames;

    mutable std::mutex lock;
    StreamStatistics statistics; // guarded by lock
    FrameGallery gallery;        // guarded by lock
};

} // namespace tarn_host
