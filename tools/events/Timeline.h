// The records of a session one after the other, as many as are asked for.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <limits>
#include <set>
#include <string>

#include "tools/events/RecordViews.h"

namespace tarn_host
{

// Kinds of records to choose from.
enum class RecordKind
{
    Call,   // calls but those of frames, and their returns
    Frame,  // ProcessInput, ProcessOutput, pixels, hashes
    State,  // starts, stops, creation, shutdown
    Event,  // events that the transform raised
    Ks,     // KS calls of applications
    Camera, // KS calls to the camera, its events and what it told
    Session // the rest
};
RecordKind KindOf(const Record &record) noexcept;

// Value. Nothing named means all.
struct RecordFilter
{
    double fromSeconds = 0; // since the recording began
    double toSeconds = std::numeric_limits<double>::infinity();
    std::set<std::uint32_t> threads = {};
    std::set<std::uint32_t> transforms = {};
    std::set<RecordKind> kinds = {};
    bool failuresOnly = false; // returns that failed, calls that never returned, events of a failure

    bool Passes(const RecordedSession &session, const Record &record) const;
};

// A line per record: number, seconds, thread, transform, what happened.
void WriteTimeline(const RecordedSession &session, const RecordFilter &filter, std::ostream &output);
std::string TimelineLine(const RecordedSession &session, const Record &record);
// An array of RecordJson, element by element.
void WriteTimelineJson(const RecordedSession &session, const RecordFilter &filter, std::ostream &output);

} // namespace tarn_host
