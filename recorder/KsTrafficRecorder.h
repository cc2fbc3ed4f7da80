// Records the KS calls of one subject: the transform's own control, or the proxy before the camera's.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "base/SharedLock.h"
#include "ks/IKsControlsObserver.h"
#include "recorder/TransformRecording.h"

namespace mft_der
{

enum class KsAddressee : std::uint16_t
{
    Transform = 0,
    Camera = TARN_KS_TO_CAMERA
};

// Camera calls made inside one of an application belong to it. Thread-safe.
class KsTrafficRecorder final : public mft_core::IKsControlsObserver
{
  public:
    KsTrafficRecorder(std::shared_ptr<const TransformRecording> recordedTransform, KsAddressee calledControl);

    void OnKsControlEntry(mft_core::KsControlType type, const KSIDENTIFIER *request, ULONG requestLength,
                          const void *data, ULONG dataLength, const ULONG *bytesReturned) override;
    void OnKsControlExit(mft_core::KsControlType type, const KSIDENTIFIER *request, ULONG requestLength,
                         const void *data, ULONG dataLength, const ULONG *bytesReturned, HRESULT result) override;

  private:
    struct OpenCall
    {
        DWORD thread;
        std::uint64_t sequence;
        std::uint64_t before; // what the thread was in
    };

    std::uint16_t SubjectOf(mft_core::KsControlType type) const noexcept;
    OpenCall TakeLastOfThisThread() noexcept;

    const std::shared_ptr<const TransformRecording> transform;
    const KsAddressee addressee;
    user_space_frameworks::SharedLock lock;
    std::vector<OpenCall> openCalls TARN_GUARDED_BY(lock);
};

} // namespace mft_der
