// One transform's records, which its recorders share.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstdint>
#include <memory>
#include <utility>

#include "recorder/CallUnderWay.h"
#include "recorder/RecordingShare.h"
#include "trace/Guard.h"

namespace mft_der
{

// Says in the recording when the transform came and went. Nothing here fails: what cannot be recorded is not.
// Thread-safe.
class TransformRecording
{
  public:
    TransformRecording(std::unique_ptr<RecordingShare> recordingShare, const std::string &objectName);
    ~TransformRecording();
    TransformRecording(const TransformRecording &) = delete;
    TransformRecording &operator=(const TransformRecording &) = delete;

    bool TakesPictures() const noexcept
    {
        return share->Recording().TakesPictures();
    }

    // A record of this transform whose values `fill` adds. Its number; 0 when there was no memory for it.
    template <class Fill>
    std::uint64_t Write(RecordHead head, Fill &&fill) const noexcept
    {
        std::uint64_t sequence = 0;
        const DWORD error = GetLastError(); // the recorded call's
        mft_utils::Guarded([&] {
            RecordBuilder values;
            std::forward<Fill>(fill)(values);
            head.transform = number;
            sequence = share->Recording().Write(head, values);
            return S_OK;
        });
        SetLastError(error);
        return sequence;
    }
    // The same with `pieces` as the bytes of the last head that `fill` adds.
    template <class Fill>
    void WritePieces(RecordHead head, std::span<const Bytes> pieces, Fill &&fill) const noexcept
    {
        mft_utils::Guarded([&] {
            RecordBuilder values;
            std::forward<Fill>(fill)(values);
            head.transform = number;
            share->Recording().Write(head, values, pieces);
            return S_OK;
        });
    }

  private:
    const std::unique_ptr<RecordingShare> share;
    const std::uint32_t number;
};

} // namespace mft_der
