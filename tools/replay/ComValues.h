// Attribute stores, media types and samples from recorded values, and back.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstdint>
#include <optional>
#include <span>

#include "tools/replay/ValueWriter.h"

namespace tarn_replay
{

// All of them throw HostError when the platform fails.

// What the recording does not tell further is left out.
void Fill(IMFAttributes &store, tarn_recording::ValueList attributes);
ComPtr<IMFAttributes> MakeAttributes(tarn_recording::ValueList attributes);
// Null where a null pointer was recorded, or nothing.
ComPtr<IMFMediaType> MakeMediaType(const std::optional<tarn_recording::Value> &recorded);
// With one buffer that holds these bytes; without a buffer for none.
ComPtr<IMFSample> MakeSample(tarn_recording::ValueList recorded, std::span<const std::uint8_t> pixels);
GUID ToGuid(const tarn_recording::Guid &guid);

void Put(ValueWriter &values, std::uint16_t name, IMFAttributes *store);
// `number` is the sample's in its stream.
void Put(ValueWriter &values, std::uint16_t name, IMFSample *sample, std::uint64_t number);
void Put(ValueWriter &values, std::uint16_t name, const PROPVARIANT &value);

// FNV-1a 64 of the bytes of all buffers.
std::uint64_t HashOf(IMFSample &sample);

} // namespace tarn_replay
