#include "tools/runs/OutputCollector.h"

namespace tarn_host
{

OutputCollector::OutputCollector(DWORD streamId, FrameFormat streamFormat, std::size_t framesToShow)
    : id(streamId), format(std::move(streamFormat)), keepsFrames(framesToShow > 0), gallery(framesToShow),
      maps(framesToShow)
{
}

void OutputCollector::FrameIn(std::int64_t sampleTime100ns)
{
    const std::scoped_lock hold(lock);
    statistics.FrameIn(sampleTime100ns, StreamStatistics::Clock::now());
}

bool OutputCollector::FrameRefused(std::int64_t sampleTime100ns)
{
    const std::scoped_lock hold(lock);
    return statistics.FrameRefused(sampleTime100ns);
}

void OutputCollector::FramesBetween(std::uint64_t count)
{
    const std::scoped_lock hold(lock);
    statistics.FramesBetween(count);
}

bool OutputCollector::Expects(std::int64_t sampleTime100ns) const
{
    const std::scoped_lock hold(lock);
    return statistics.Expects(sampleTime100ns);
}

void OutputCollector::CutOff()
{
    const std::scoped_lock hold(lock);
    statistics.CutOff();
}

std::uint64_t OutputCollector::FrameOut(const SampleDetails &details)
{
    const StreamStatistics::Clock::time_point now = StreamStatistics::Clock::now();
    const std::scoped_lock hold(lock);
    const std::uint64_t number = statistics.FramesOut();
    statistics.FrameOut(details.time100ns, now);
    attachments.records += details.record ? 1 : 0;
    attachments.intrinsics += details.intrinsics.empty() ? 0 : 1;
    attachments.confidenceMaps += details.confidence.empty() ? 0 : 1;
    attachments.illuminated += details.isIlluminated.value_or(false) ? 1 : 0;
    return number;
}

bool OutputCollector::WantsPixels(std::uint64_t frameNumber) const
{
    const std::scoped_lock hold(lock);
    return keepsFrames && gallery.Wants(frameNumber);
}

void OutputCollector::Keep(std::uint64_t frameNumber, const LockedFrame &frame, const SampleDetails &details)
{
    KeepIn(gallery, frame.Bytes(), format, frameNumber, details);
    if (!details.confidence.empty())
    {
        FrameFormat mapFormat = format;
        mapFormat.pixels = PixelKind::Confidence8;
        KeepIn(maps, std::as_bytes(std::span(details.confidence)), mapFormat, frameNumber, details);
    }
}

void OutputCollector::KeepIn(FrameGallery &kept, std::span<const std::byte> pixels, const FrameFormat &pixelFormat,
                             std::uint64_t frameNumber, const SampleDetails &details)
{
    auto thumbnail = Thumbnail::Of(pixels, pixelFormat, kThumbnailWidth);
    if (thumbnail)
    {
        thumbnail->sampleTime100ns = details.time100ns;
        thumbnail->isLit = details.isIlluminated;
        thumbnail->frameNumber = frameNumber;
        const std::scoped_lock hold(lock);
        kept.Keep(std::move(*thumbnail));
    }
}

std::uint64_t OutputCollector::FramesIn() const
{
    const std::scoped_lock hold(lock);
    return statistics.FramesIn();
}

std::uint64_t OutputCollector::FramesOut() const
{
    const std::scoped_lock hold(lock);
    return statistics.FramesOut();
}

std::size_t OutputCollector::InFlight() const
{
    const std::scoped_lock hold(lock);
    return statistics.InFlight();
}

StreamSummary OutputCollector::Summary() const
{
    const std::scoped_lock hold(lock);
    return statistics.Summary();
}

AttachmentCounts OutputCollector::Attachments() const
{
    const std::scoped_lock hold(lock);
    return attachments;
}

std::vector<Thumbnail> OutputCollector::Frames() const
{
    const std::scoped_lock hold(lock);
    return gallery.Selection();
}

std::vector<Thumbnail> OutputCollector::ConfidenceMaps() const
{
    const std::scoped_lock hold(lock);
    return maps.Selection();
}

} // namespace tarn_host
