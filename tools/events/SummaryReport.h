// A session's summary for people and for scripts.
#pragma once

#include <iosfwd>

#include <nlohmann/json_fwd.hpp>

#include "tools/events/SessionSummary.h"

namespace tarn_host
{

void WriteSummary(const SessionSummary &summary, std::ostream &output);
nlohmann::ordered_json SummaryJson(const SessionSummary &summary);

} // namespace tarn_host
