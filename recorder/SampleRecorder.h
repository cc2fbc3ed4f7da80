// Samples in recordings: numbers, attributes and, when asked for, pixels.
#pragma once

#include "platform/MediaFoundation.h"

#include <array>
#include <cstdint>
#include <optional>

#include "base/SharedLock.h"
#include "recorder/TransformRecording.h"

namespace mft_der
{

enum class SampleDirection : std::uint8_t
{
    Input,
    Output
};

// What is known of a sample when it is told; private until then.
struct SampleIdentity
{
    SampleDirection direction = SampleDirection::Input;
    DWORD stream = 0;
    std::uint64_t number = 0; // 1, 2, ... per direction and stream; 0 for streams beyond those that are counted
    std::optional<LONGLONG> time;
    bool isBlanked = true; // privacy covers it
};

// One per transform. Thread-safe.
class SampleRecorder
{
  public:
    // Counts the sample. A covered input covers the outputs of its time, too.
    SampleIdentity Identify(SampleDirection direction, DWORD stream, IMFSample *sample, bool isCovered) noexcept;

    // Null for a null sample.
    static void Add(RecordBuilder &values, const SampleIdentity &identity, IMFSample *sample);

    // Its bytes, or of an output their hash, while the user asks for them. Nothing of a blanked one.
    static void WritePicture(const TransformRecording &transform, const SampleIdentity &identity, IMFSample *sample,
                             std::uint64_t call) noexcept;

  private:
    struct Counter
    {
        SampleDirection direction = SampleDirection::Input;
        DWORD stream = 0;
        std::uint64_t last = 0; // 0: free
    };

    std::uint64_t NextNumber(SampleDirection direction, DWORD stream) noexcept TARN_REQUIRES(lock);

    user_space_frameworks::SharedLock lock;
    std::array<Counter, 16> counters TARN_GUARDED_BY(lock);
    std::array<LONGLONG, 256> coveredTimes TARN_GUARDED_BY(lock){}; // of the last covered inputs
    std::size_t coveredCount TARN_GUARDED_BY(lock) = 0;
};

} // namespace mft_der
