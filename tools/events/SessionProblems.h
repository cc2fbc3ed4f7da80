// What looks wrong in a session, in words.
#pragma once

#include <string>
#include <vector>

namespace tarn_host
{

struct SessionSummary;

// The gravest first. Needs everything else of the summary.
std::vector<std::string> ProblemsOf(const SessionSummary &summary);

} // namespace tarn_host
