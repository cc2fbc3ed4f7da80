// A session as trace events, which the trace viewers of browsers open.
#pragma once

#include <iosfwd>
#include <vector>

#include "tools/events/RecordViews.h"

namespace tarn_host
{

// One JSON document: threads as rows, calls as spans, frames as flows from input to output. KS calls to the camera
// stand under the call that caused them, or are tied to it by a flow when another thread made them.
void WriteTraceEvents(const std::vector<RecordedSession> &sessions, std::ostream &output);

} // namespace tarn_host
