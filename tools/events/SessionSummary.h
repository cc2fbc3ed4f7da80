// What a recorded session was and did, and what looks wrong in it.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tools/events/FrameBooks.h"

namespace tarn_host
{

// Calls of one kind.
struct CallBooks
{
    std::uint64_t count = 0;
    std::uint64_t failed = 0;                     // but for ordinary failures
    std::map<std::string, std::uint64_t> results; // other than S_OK, ordinary ones too
    std::vector<std::uint64_t> ticks;             // of those that returned
    std::uint64_t firstFailureAt = 0;             // clock
    std::uint64_t slowestTicks = 0;
    std::uint64_t slowestAt = 0; // clock
};

struct UnfinishedCall
{
    std::uint64_t sequence;
    std::uint64_t clock;
    std::uint64_t ticks; // until the recording's last record
    std::uint32_t thread;
    std::uint32_t transform;
    std::string text;
};

struct StateChange
{
    std::uint64_t clock;
    std::uint32_t transform;
    std::string text;
};

// Value.
struct SessionSummary
{
    std::string module;
    std::string machine;
    std::string process;
    std::uint32_t processId = 0;
    std::uint64_t startTime = 0;  // UTC, 100 ns since 1601
    std::uint64_t startClock = 0; // of the first record
    std::uint64_t ticks = 0;      // to the last record
    std::uint64_t records = 0;
    std::uint64_t droppedRecords = 0;
    std::uint64_t droppedBytes = 0;
    bool isClosed = false;
    bool holdsPictures = false;
    bool lacksBeginning = false;
    std::map<std::uint32_t, std::string> transforms;
    std::vector<StateChange> changes;                   // starts and stops
    std::map<std::uint32_t, std::uint64_t> inputFrames; // per transform
    std::vector<OutputBooks> outputs;
    std::map<std::string, CallBooks> calls;
    std::map<std::string, CallBooks> applicationKs;
    std::map<std::string, CallBooks> cameraKs;
    std::map<std::string, std::uint64_t> deviceEvents;
    std::map<std::string, std::uint64_t> events;
    std::vector<UnfinishedCall> unfinished;
    std::vector<std::string> damages;
    std::vector<std::string> problems; // in words, the gravest first

    static SessionSummary Of(const RecordedSession &session);
    double Seconds(std::uint64_t clock) const noexcept
    {
        return static_cast<double>(Between(startClock, clock)) / 1e7;
    }
};

} // namespace tarn_host
