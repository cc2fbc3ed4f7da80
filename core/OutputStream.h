// Output stream: queues finished samples and hands them to the pipeline.
#pragma once

#include <list>
#include <memory>

#include "media/SampleAllocator.h"

#include "core/Stream.h"

namespace mft_core
{

// Owned by its transform; the ends of topologies share it. The queue has no bound: the pipeline's own sample count
// limits it. Thread-safe.
class OutputStream : public Stream
{
  public:
    // Throws std::invalid_argument("stream must have media types") or ComException: "Failed to init media types list",
    // "Failed to init frame source types", "invalid output stream attributes store".
    OutputStream(UINT32 streamId, MediaEventGenerator *generator, const OutputStreamConfiguration &configuration);

    // Empties the queue.
    HRESULT Flush() override;

    // Queues the sample and announces it while the stream runs, drops it otherwise. A sample that cannot be announced
    // is not kept.
    HRESULT ProcessSample(IMFSample *sample) override;

    // Entering Run announces the stream, leaving it empties the queue. The pipeline's allocator follows.
    HRESULT SetState(DeviceStreamState theState) override;

    // Moves the oldest sample into the buffer. S_OK without a sample when the stream does not run,
    // MF_E_TRANSFORM_NEED_MORE_INPUT when nothing is queued.
    virtual HRESULT ProcessOutput(MFT_OUTPUT_DATA_BUFFER &buffer);

    // For the chain that ends here.
    const std::shared_ptr<mft_utils::SampleAllocator> &Allocator() const noexcept
    {
        return allocator;
    }

  private:
    HRESULT ChangeState(DeviceStreamState theState);
    HRESULT InitMediaTypes(const OutputStreamConfiguration &configuration);
    HRESULT InitAttributes(const OutputStreamConfiguration &configuration);
    HRESULT AddExtrinsicsToStreamAttributes(const CameraBlob &extrinsics);
    HRESULT AddIntrinsicsToStreamAttributes(const CameraBlob &intrinsics);
    HRESULT AddDepthAttributes(const std::optional<DepthDescription> &depth);
    HRESULT AnnounceRun() TARN_REQUIRES(lock);
    void TakeSamples(std::list<ComPtr<IMFSample>> &taken) TARN_REQUIRES(lock);

    const std::shared_ptr<mft_utils::SampleAllocator> allocator;
    std::list<ComPtr<IMFSample>> samples TARN_GUARDED_BY(lock); // a list: emptying it needs no memory
};

} // namespace mft_core
