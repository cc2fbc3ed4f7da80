// One record of a session.
#pragma once

#include <cstdint>

#include "tools/recording/Value.h"

namespace tarn_recording
{

inline constexpr std::uint64_t kHaveOutput = 602; // METransformHaveOutput, in TARN_VALUE_EVENT_TYPE

// A view into the recording's bytes, which must outlive it. Immutable.
struct Record
{
    tarn_record_header header{};
    Bytes body;               // behind the header
    std::uint64_t offset = 0; // in its file

    ValueList Values() const noexcept
    {
        return ValueList(body);
    }
    bool Failed() const noexcept
    {
        return header.result < 0;
    }
    bool Is(std::uint16_t type, std::uint16_t subject) const noexcept
    {
        return header.type == type && header.subject == subject;
    }
};

} // namespace tarn_recording
