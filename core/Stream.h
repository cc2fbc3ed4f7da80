// Common base of input and output streams: media types, attributes, state.
#pragma once

#include "platform/CameraAttributes.h"
#include "platform/DeviceTransform.h"

#include <string>

#include "core/ITopologyNode.h"
#include "core/OutputStreamConfiguration.h"
#include "base/CriticalSection.h"
#include "media/FpsMonitor.h"

namespace mft_core
{

class MediaEventGenerator;

// Owned by its transform. Types and attributes are immutable after Init; the rest is guarded by the stream's lock,
// which is taken before the event generator's. Thread-safe.
class Stream : public ITopologyNode
{
  public:
    // Stores the state. Overrides act on the transition.
    virtual HRESULT SetState(DeviceStreamState theState);

    UINT32 GetID() const noexcept;
    DeviceStreamState GetState() const;

    // All four: E_POINTER for a null out-pointer; what is returned carries a reference.
    // MF_E_NO_MORE_TYPES past the last type.
    HRESULT GetMediaTypeAt(DWORD index, IMFMediaType **ppMediaType) const;
    // MF_E_TRANSFORM_TYPE_NOT_SET before a type was set.
    HRESULT GetCurrentMediaType(IMFMediaType **ppMediaType) const;
    HRESULT GetAttributes(IMFAttributes **ppAttributes) const;
    HRESULT GetSupportedMediaTypes(MediaTypeList &list) const;

    // Does not search the supported list. Null forgets the current type.
    HRESULT SetCurrentMediaType(IMFMediaType *mediaType);

    // True when frame size, rate and subtype equal those of a supported type.
    bool IsSupported(IMFMediaType *mediaType) const;

    // The first supported type with the requested frame size, rate and subtype. E_FAIL when there is none.
    HRESULT FindMatchingMediaType(IMFMediaType **ppFound, IMFMediaType *requested) const;

    // The smallest supported frame, then the lowest rate, at or above the asked minimum. E_FAIL when none qualifies;
    // the found type is untouched then. A type whose width or height is below the best's replaces it.
    HRESULT FindClosestMediaType(IMFMediaType **ppFound, const GUID &subtype, UINT32 minFps, UINT32 minWidth,
                                 UINT32 minHeight) const;

    // From now on the stream announces nothing: its transform is going away.
    void DetachEventGenerator();

  protected:
    Stream(UINT32 streamId, MediaEventGenerator *generator, std::string streamName);

    // Derives the frame-source mask from the subtypes. Fails when a type has none.
    HRESULT InitFrameSourceTypes();

    static LONGLONG NowMicroseconds();

    const UINT32 id;
    MediaEventGenerator *eventGenerator TARN_GUARDED_BY(lock); // not owned, detached before the transform ends
    MediaTypeList supportedMediaTypes;
    ComPtr<IMFMediaType> currentMediaType TARN_GUARDED_BY(lock);
    ComPtr<IMFAttributes> attributes;
    mutable user_space_frameworks::CriticalSection lock;
    DeviceStreamState state TARN_GUARDED_BY(lock) = DeviceStreamState_Stop;
    UINT32 supportedFrameSourceTypes = 0; // MFFrameSourceTypes mask
    mft_utils::FpsMonitor inputRateMonitor TARN_GUARDED_BY(lock);
    mft_utils::FpsMonitor outputRateMonitor TARN_GUARDED_BY(lock);

  private:
    void TraceSupportedMediaTypes() const;
};

} // namespace mft_core
