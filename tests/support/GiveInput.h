// Gives a sample to a transform as the pipeline of this build does.
#pragma once

#include "platform/DeviceTransform.h"

namespace tarn_test
{

// What ProcessInput takes over of the sample given, whatever its result.
#ifdef TARN_PROCESS_INPUT_KEEPS_REFERENCE
inline constexpr ULONG kReferencesConsumed = 0;
#else
inline constexpr ULONG kReferencesConsumed = 1;
#endif

// The caller's references stay its own.
inline HRESULT GiveInput(const ComPtr<IMFDeviceTransform> &transform, DWORD streamId, IMFSample *sample)
{
    if (kReferencesConsumed != 0 && sample != nullptr)
    {
        sample->AddRef();
    }
    return transform->ProcessInput(streamId, sample, 0);
}

} // namespace tarn_test
