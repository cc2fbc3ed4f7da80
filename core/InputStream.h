// Input stream: one output pin of the camera filter, feeding the topology connected to it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/Stream.h"

namespace mft_core
{

// Owned by its transform; topologies share it. Thread-safe.
class InputStream : public Stream
{
  public:
    // Throws ComException: "Failed to init media types list", "Failed to init frame source types",
    // "Failed to init attributes".
    InputStream(UINT32 streamId, MediaEventGenerator *generator, IMFTransform *sourceTransform,
                const std::vector<GUID> &excludedSubtypes, const std::string &parentName);

    // Flushes the connected topology; succeeds when none is connected. Waits for queued frames: hold no lock.
    HRESULT Flush() override TARN_EXCLUDES(lock);

    // Hands the sample to the connected topology on this thread; drops it when none is connected.
    HRESULT ProcessSample(IMFSample *sample) override;

    HRESULT Connect(std::shared_ptr<ITopologyNode> firstNode);
    HRESULT Disconnect();

    // What the transform wants of the pin; the pipeline reads it after METransformInputStreamStateChanged.
    HRESULT GetPreferredState(DeviceStreamState *theState, IMFMediaType **preferredMt) const;
    HRESULT SetPreferredState(DeviceStreamState theState, IMFMediaType *mediaType);

  private:
    HRESULT InitMediaTypesList(IMFTransform *sourceTransform, const std::vector<GUID> &excludedSubtypes);
    HRESULT InitAttributes(IMFTransform *sourceTransform);

    std::shared_ptr<ITopologyNode> nextNode TARN_GUARDED_BY(lock);
    bool firstSampleSeen TARN_GUARDED_BY(lock) = false;
    DeviceStreamState preferredState TARN_GUARDED_BY(lock) = DeviceStreamState_Stop;
    ComPtr<IMFMediaType> preferredMediaType TARN_GUARDED_BY(lock);
};

} // namespace mft_core
