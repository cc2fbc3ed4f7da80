#include "tools/OutputCollector.h"

namespace tarn_host
{

namespace
{

constexpr std::int64_t kNoTime = -1;

std::int64_t SampleTime(IMFSample &sample)
{
    LONGLONG time = kNoTime;
    return SUCCEEDED(sample.GetSampleTime(&time)) ? time : kNoTime;
}

} // namespace

OutputCollector::OutputCollector(DWORD streamId, FrameFormat streamFormat, std::size_t framesToShow)
    : id(streamId), format(std::move(streamFormat)), keepsFrames(framesToShow > 0), gallery(framesToShow)
{
}

void OutputCollector::FrameIn(IMFSample &sample)
{
    const std::int64_t time = SampleTime(sample);
    const std::scoped_lock hold(lock);
    statistics.FrameIn(time, StreamStatistics::Clock::now());
}

void OutputCollector::FrameRefused()
{
    const std::scoped_lock hold(lock);
    statistics.FrameRefused();
}

HRESULT OutputCollector::FrameOut(IMFSample &sample)
{
    const StreamStatistics::Clock::time_point now = StreamStatistics::Clock::now();
    const std::int64_t time = SampleTime(sample);
    std::uint64_t number = 0;
    bool wanted = false;
    {
        const std::scoped_lock hold(lock);
        number = statistics.FramesOut();
        statistics.FrameOut(time, now);
        wanted = keepsFrames && gallery.Wants(number);
    }
    return wanted ? KeepThumbnail(sample, time, number) : S_OK;
}

HRESULT OutputCollector::KeepThumbnail(IMFSample &sample, std::int64_t sampleTime100ns, std::uint64_t frameNumber)
{
    ComPtr<IMFMediaBuffer> buffer;
    HRESULT result = sample.ConvertToContiguousBuffer(&buffer);
    if (FAILED(result))
    {
        return result;
    }
    BYTE *bytes = nullptr;
    DWORD length = 0;
    result = buffer->Lock(&bytes, nullptr, &length);
    if (FAILED(result))
    {
        return result;
    }
    auto thumbnail = Thumbnail::Of(std::as_bytes(std::span(bytes, length)), format, kThumbnailWidth);
    buffer->Unlock();
    if (thumbnail)
    {
        thumbnail->sampleTime100ns = sampleTime100ns;
        thumbnail->frameNumber = frameNumber;
        const std::scoped_lock hold(lock);
        gallery.Keep(std::move(*thumbnail));
    }
    return S_OK;
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

std::vector<Thumbnail> OutputCollector::Frames() const
{
    const std::scoped_lock hold(lock);
    return gallery.Selection();
}

} // namespace tarn_host
