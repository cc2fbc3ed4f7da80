// What is wrong with a session, by its facts.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/diagnosis/SessionFacts.h"
#include "tools/diagnosis/Symptoms.h"

namespace tarn_host
{

struct Finding
{
    Severity severity = Severity::Wrong;
    std::int64_t timeUs = 0; // of its first sign
    std::uint64_t count = 1;
    std::string title;
    std::string cure;
};

// The worst first, of those the earliest: later ones often follow from it. Pure.
std::vector<Finding> FindingsOf(const SessionFacts &facts);

} // namespace tarn_host
