// Puts the planes of a media type's frame together into a sample, with its times and metadata.
#pragma once

#include "platform/MediaFoundation.h"

#include <tarn/frame_metadata.h>

#include <cstdint>
#include <memory>

#include "sim/CameraBuffer.h"
#include "sim/CameraControls.h"
#include "sim/FaultInjector.h"
#include "sim/FrameSource.h"

namespace tarn_sim
{

// What a media type says about its frames.
struct FrameFormat
{
    GUID subtype{};
    UINT32 width = 0;
    UINT32 height = 0;
    std::int64_t interval100ns = 0;
};

bool operator==(const FrameFormat &left, const FrameFormat &right) noexcept;

// MF_E_INVALIDTYPE when the type lacks size, rate or subtype, or when its subtype is none of the camera's.
HRESULT ReadFrameFormat(IMFMediaType *type, FrameFormat &format);

// Bytes of one frame; 0 for a subtype that is none of the camera's.
DWORD FrameBytes(const FrameFormat &format);

// A face-login frame is lit every other time, every other frame always.
bool IsIlluminated(const FrameFormat &format, std::uint64_t frameNumber);

struct FrameToCompose
{
    FrameFormat format;
    std::uint64_t number = 0;
    LONGLONG time100ns = 0;
    FrameFault fault;
    GuardPage guardPage = GuardPage::No;
};

// Throws std::runtime_error when the source or the platform fails, std::bad_alloc when memory is short.
ComPtr<IMFSample> ComposeFrame(const FrameToCompose &frame, IFrameSource &source, const CameraControls &controls,
                               const std::shared_ptr<BufferAccount> &account);

} // namespace tarn_sim
