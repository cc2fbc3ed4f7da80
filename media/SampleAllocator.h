// The pipeline's allocator for the samples of one output.
#pragma once

#include "platform/MediaFoundation.h"

#include <string>

#include "base/CriticalSection.h"

namespace mft_utils
{

// Takes what the pipeline offers and lets go of it when the output stops, when another one is offered and at the end.
// Samples that are out keep the platform's allocator alive by themselves. Thread-safe.
class SampleAllocator
{
  public:
    // `streamName` is for traces.
    explicit SampleAllocator(std::string streamName);
    ~SampleAllocator();
    SampleAllocator(const SampleAllocator &) = delete;
    SampleAllocator &operator=(const SampleAllocator &) = delete;

    // An allocator of either kind, IMFVideoCaptureSampleAllocator or IMFVideoSampleAllocatorEx, in place of the former;
    // null lets go of that. E_NOINTERFACE for another object, and then nothing changes.
    HRESULT Offer(IUnknown *offeredAllocator);

    // The output runs with this type from now on. An allocator that cannot serve it is traced and not used.
    void Start(IMFMediaType *mediaType);
    // Lets go of the allocator: the pipeline offers one again when it wants it used again.
    void Stop();

    // A sample with the attributes, time and duration of `source` and nothing else but its memory. Any failure means
    // that the frame needs other memory; the first since the start is traced.
    HRESULT Allocate(IMFSample *source, IMFSample **sample);

  private:
    HRESULT Initialize() TARN_REQUIRES(changing);
    void Prepare() TARN_REQUIRES(changing);
    void LetGo() TARN_REQUIRES(changing);
    // Makes it the one that frames use, null for none. Returns the former.
    ComPtr<IMFVideoSampleAllocator> Publish(ComPtr<IMFVideoSampleAllocator> allocator) TARN_REQUIRES(changing);
    HRESULT Take(IMFSample *source, IMFSample **sample) const;

    const std::string name;
    user_space_frameworks::CriticalSection changing; // taken before `lock`; no frame takes it
    ComPtr<IMFVideoSampleAllocator> offered TARN_GUARDED_BY(changing);
    ComPtr<IMFMediaType> runningType TARN_GUARDED_BY(changing); // null while the output stands still
    mutable user_space_frameworks::CriticalSection lock;
    ComPtr<IMFVideoSampleAllocator> ready TARN_GUARDED_BY(lock); // initialised for runningType
    bool hasTold TARN_GUARDED_BY(lock) = false;                  // of a frame without its memory
};

} // namespace mft_utils
