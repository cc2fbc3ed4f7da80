// Records by which a known fault is told.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "tools/diagnosis/LogRecord.h"

namespace tarn_host
{

enum class Severity : std::uint8_t
{
    Advice,
    Wrong
};

struct Symptom
{
    std::string_view source; // part of the function's or the event's name
    std::string_view text;   // part of the message
    Severity severity;
    std::string_view title;
    std::string_view cure;
};

std::span<const Symptom> KnownSymptoms() noexcept;

// The first that fits, or null.
const Symptom *FindSymptom(const LogRecord &record) noexcept;

} // namespace tarn_host
