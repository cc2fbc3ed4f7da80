// What two recordings differ in, but for times and threads.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/events/RecordViews.h"

namespace tarn_host
{

struct SessionDifference
{
    std::string lane;                 // what was compared, for example "T1 ProcessOutput 1"
    std::size_t nth = 0;              // of its lane, from 1
    const Record *expected = nullptr; // null when the other session has more
    const Record *got = nullptr;
    std::string where;        // the value of the two that differs; empty where only one is there
    std::string expectedText; // "nothing more" in place of a record that is not there
    std::string gotText;
};

struct ComparisonResult
{
    std::uint64_t compared = 0;             // calls with their returns, events and so on
    std::uint64_t differences = 0;          // lanes that differ
    std::optional<SessionDifference> first; // earliest in the expected session
};

// Threads interleave differently each time, so that calls, KS calls and events are compared in lanes: of one transform,
// of one kind, of one stream or one identifier; in each their order, arguments, results and what they gave out. Samples
// are compared in the order of their output, whichever call fetched them. Not compared: questions for a state that
// another thread was changing, addresses, handles, numbers of work queues, what the sessions say about their process.
ComparisonResult CompareSessions(const RecordedSession &expected, const RecordedSession &got);

} // namespace tarn_host
