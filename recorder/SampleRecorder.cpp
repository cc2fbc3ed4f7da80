#include "recorder/SampleRecorder.h"

#include <algorithm>
#include <mutex>
#include <vector>

#include "base/LockedBuffer.h"
#include "recorder/AttributeEncoder.h"
#include "tarn/tarn_dmft.h"

namespace mft_der
{

namespace
{
// The confidence map is a picture. What a frame brings with it in objects is told once, with the input.
constexpr BlobRule kInputBlobs{4096, ORRIN_SAMPLE_TARN_CONFIDENCE_MAP};
constexpr BlobRule kOutputBlobs{4096, ORRIN_SAMPLE_TARN_CONFIDENCE_MAP, false};

constexpr std::uint64_t kHashStart = 0xCBF29CE484222325;

// FNV-1a 64.
std::uint64_t Hash(Bytes bytes, std::uint64_t hash) noexcept
{
    for (const std::uint8_t byte : bytes)
    {
        hash = (hash ^ byte) * 0x100000001B3;
    }
    return hash;
}

// The buffers of a sample, locked.
class SampleBytes
{
  public:
    // Throws std::bad_alloc; holds nothing of a buffer that cannot be locked.
    explicit SampleBytes(IMFSample *sample)
    {
        DWORD count = 0;
        sample->GetBufferCount(&count);
        for (DWORD i = 0; i < std::min<DWORD>(count, kMostBuffers); ++i)
        {
            ComPtr<IMFMediaBuffer> buffer;
            if (SUCCEEDED(sample->GetBufferByIndex(i, &buffer)) && SUCCEEDED(locks[used].Lock(buffer.Get())))
            {
                pieces[used] = {locks[used].data, locks[used].length};
                total += pieces[used].size();
                ++used;
            }
        }
    }

    std::span<const Bytes> Pieces() const noexcept
    {
        return std::span(pieces).first(used);
    }
    std::uint64_t Total() const noexcept
    {
        return total;
    }

  private:
    static constexpr std::size_t kMostBuffers = 8;

    std::array<user_space_frameworks::LockedBuffer, kMostBuffers> locks;
    std::array<Bytes, kMostBuffers> pieces;
    std::size_t used = 0;
    std::uint64_t total = 0;
};
} // namespace

SampleIdentity SampleRecorder::Identify(SampleDirection direction, DWORD stream, IMFSample *sample,
                                        bool isCovered) noexcept
{
    LONGLONG ticks = 0;
    std::optional<LONGLONG> time;
    if (sample != nullptr && SUCCEEDED(sample->GetSampleTime(&ticks)))
    {
        time = ticks;
    }
    const std::scoped_lock guard(lock);
    SampleIdentity identity{direction, stream, NextNumber(direction, stream), time, isCovered};
    if (direction == SampleDirection::Input && isCovered && time)
    {
        coveredTimes[coveredCount++ % coveredTimes.size()] = *time;
    }
    else if (direction == SampleDirection::Output && time)
    {
        const auto end =
            coveredTimes.begin() + static_cast<std::ptrdiff_t>(std::min(coveredCount, coveredTimes.size()));
        identity.isBlanked |= std::find(coveredTimes.begin(), end, *time) != end;
    }
    return identity;
}

std::uint64_t SampleRecorder::NextNumber(SampleDirection direction, DWORD stream) noexcept
{
    for (Counter &counter : counters)
    {
        if (counter.last == 0)
        {
            counter = {direction, stream, 0};
        }
        if (counter.direction == direction && counter.stream == stream)
        {
            return ++counter.last;
        }
    }
    return 0;
}

void SampleRecorder::Add(RecordBuilder &values, const SampleIdentity &identity, IMFSample *sample)
{
    if (sample == nullptr)
    {
        values.Null(TARN_VALUE_SAMPLE);
        return;
    }
    values.List(TARN_VALUE_SAMPLE, [&] {
        values.U64(TARN_VALUE_NUMBER, identity.number);
        LONGLONG duration = 0;
        if (identity.time)
        {
            values.I64(TARN_VALUE_TIME, *identity.time);
        }
        if (SUCCEEDED(sample->GetSampleDuration(&duration)))
        {
            values.I64(TARN_VALUE_DURATION, duration);
        }
        DWORD length = 0;
        sample->GetTotalLength(&length);
        values.U64(TARN_VALUE_LENGTH, length);
        if (identity.isBlanked)
        {
            values.U32(TARN_VALUE_BLANKED, 1);
        }
        AddAttributes(values, TARN_VALUE_ATTRIBUTES, sample,
                      identity.direction == SampleDirection::Input ? kInputBlobs : kOutputBlobs);
    });
}

void SampleRecorder::WritePicture(const TransformRecording &transform, const SampleIdentity &identity,
                                  IMFSample *sample, std::uint64_t call) noexcept
{
    if (sample == nullptr || identity.isBlanked || !transform.TakesPictures())
    {
        return;
    }
    mft_utils::Guarded([&] {
        const SampleBytes bytes(sample);
        const auto identify = [&](RecordBuilder &values) {
            values.U32(TARN_VALUE_STREAM, identity.stream).U64(TARN_VALUE_NUMBER, identity.number);
        };
        if (identity.direction == SampleDirection::Output)
        {
            std::uint64_t hash = kHashStart;
            for (const Bytes &piece : bytes.Pieces())
            {
                hash = Hash(piece, hash);
            }
            transform.Write({.type = TARN_RECORD_OUTPUT_HASH, .entry = call}, [&](RecordBuilder &values) {
                identify(values);
                values.U64(TARN_VALUE_LENGTH, bytes.Total()).U64(TARN_VALUE_HASH, hash);
            });
            return S_OK;
        }
        transform.WritePieces(
            {.type = TARN_RECORD_PIXELS, .entry = call, .isPicture = true}, bytes.Pieces(), [&](RecordBuilder &values) {
                identify(values);
                values.HeadOf(TARN_VALUE_PIXELS, TARN_KIND_BYTES, static_cast<std::uint32_t>(bytes.Total()));
            });
        return S_OK;
    });
}

} // namespace mft_der
