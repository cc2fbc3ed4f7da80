// What holds of an installation, and what does not: one row for each decision.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tools/installation/InstallFacts.h"

namespace tarn_host
{

enum class Verdict : std::uint8_t
{
    Ok,
    Skipped, // nothing to judge: a row before says why
    Unknown, // the fact is missing
    Advice,  // it may be meant
    Wrong    // the camera will not work as it should
};

// What was found, for example the device that does not do; empty where the row's own words suffice.
struct Outcome
{
    Verdict verdict = Verdict::Ok;
    std::string found;
};

struct Judgement
{
    std::string_view row;
    Verdict verdict;
    std::string says; // empty when it holds
    std::string_view todo;
};

// In the order of docs/check-install-facts.md. `hostVersion` is this tool's own. Pure.
std::vector<Judgement> Decide(const InstallFacts &facts, std::string_view hostVersion);

} // namespace tarn_host
