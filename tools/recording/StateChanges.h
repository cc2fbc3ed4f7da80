// Calls that change a transform's state, and calls beside them.
#pragma once

#include <cstdint>
#include <set>

#include "tools/recording/RecordedSession.h"

namespace tarn_recording
{

// Outputs started or stopped, a flush, the end, and what applications set.
bool IsStateChange(const Record &call);
// Of a KS call: one that sets a property.
bool IsPropertySet(const Record &call);
// A question whose answer depends on the state.
bool AsksForState(const Record &call);
// Numbers of the calls that ran beside a change on another thread: which of the two came first, only chance tells.
std::set<std::uint64_t> CallsBesideChanges(const RecordedSession &session);

} // namespace tarn_recording
