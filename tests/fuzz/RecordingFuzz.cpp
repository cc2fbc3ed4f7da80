// Damaged recordings through everything that reads them: recording_fuzz [cases] [seed]. Every record before the damage
// is found, a lost record is named, and what comes out stays in proportion to the file.
#include <cstdlib>
#include <iostream>
#include <random>
#include <sstream>

#include <nlohmann/json.hpp>

#include "tests/recording/StreamingSession.h"
#include "tools/events/SessionComparison.h"
#include "tools/events/SessionSummary.h"
#include "tools/events/SummaryReport.h"
#include "tools/events/Timeline.h"
#include "tools/events/TraceEvents.h"

using namespace tarn_host;
using namespace tarn_tests;

namespace
{

using File = std::vector<std::uint8_t>;
using Random = std::mt19937_64;

unsigned long caseUnderWay = 0;
constexpr std::size_t kRecordHead = sizeof(tarn_record_header);

struct Damaged
{
    File file;
    std::size_t firstHarm;    // nothing before it was touched
    bool isDisguised = false; // checksums were made to fit again
};

std::size_t Below(Random &random, std::size_t limit)
{
    return limit == 0 ? 0 : static_cast<std::size_t>(random() % limit);
}

void Harm(Damaged &damaged, Random &random)
{
    File &file = damaged.file;
    const std::size_t at = Below(random, file.size());
    const std::size_t length = std::min(Below(random, 200), file.size() - at);
    const auto begin = file.begin() + static_cast<std::ptrdiff_t>(at);
    const auto end = begin + static_cast<std::ptrdiff_t>(length);
    damaged.firstHarm = std::min(damaged.firstHarm, at);
    switch (random() % 6)
    {
    case 0:
        file.resize(at);
        break;
    case 1:
        std::fill(begin, end, static_cast<std::uint8_t>(random() % 3 == 0 ? 0xFF : 0));
        break;
    case 2:
        file.insert(begin, begin, end); // may come as a second copy of a record
        break;
    case 3:
        file.erase(begin, end);
        break;
    default:
        for (std::size_t i = at; i < std::min(at + 1 + length % 8, file.size()); ++i)
        {
            file[i] = static_cast<std::uint8_t>(random());
        }
    }
}

// Damage inside of values, behind checksums that hold.
void Disguise(Damaged &damaged, const std::vector<std::size_t> &offsets, Random &random)
{
    damaged.isDisguised = true;
    for (int round = 0; round < 3; ++round)
    {
        const std::size_t at = offsets[Below(random, offsets.size())];
        tarn_record_header head;
        std::memcpy(&head, damaged.file.data() + at, sizeof head);
        // Kinds and lengths of values stand in the first bytes behind the head; of the head what a reader relies on.
        const std::size_t harm = 8 + Below(random, std::min<std::size_t>(head.length, random() % 2 ? 64 : 4096) - 8);
        damaged.file[at + harm] = static_cast<std::uint8_t>(random() % 4 == 0 ? random() : random() % 16);
        const auto body = std::span(damaged.file).subspan(at + 8, head.length - 8);
        const std::uint32_t checksum = user_space_frameworks::Crc32(body);
        std::memcpy(damaged.file.data() + at + 4, &checksum, sizeof checksum);
        damaged.firstHarm = std::min(damaged.firstHarm, at);
    }
}

void Require(bool holds, const char *what)
{
    if (!holds)
    {
        std::cout << "FAILED: case " << caseUnderWay << ": " << what << std::endl;
        std::abort();
    }
}

void CheckRecords(const RecordedSession &session, const RecordingBuilder &original, const Damaged &damaged)
{
    std::size_t found = 0;
    for (std::size_t i = 0; i < original.offsets.size(); ++i)
    {
        const std::size_t end = i + 1 < original.offsets.size() ? original.offsets[i + 1] : original.File().size();
        const bool isUntouched = end <= damaged.firstHarm;
        const bool isThere = session.Find(i + 1) != nullptr;
        Require(isThere || !isUntouched, "a record before the damage was not found");
        found += isThere ? 1 : 0;
    }
    // What the file header tells of its length may be harmed too.
    Require(damaged.isDisguised || damaged.firstHarm < sizeof(tarn_recording_header) ||
                found == original.offsets.size() || !session.Damages().empty(),
            "a lost record was not named");
    Require(session.Records().size() <= damaged.file.size() / kRecordHead, "more records than fit");
}

// One of the readers, since each reads all of it.
void Read(const RecordedSession &session, const RecordedSession &whole, Random &random)
{
    std::ostringstream output;
    std::vector<RecordedSession> sessions{session};
    switch (random() % 5)
    {
    case 0:
        WriteSummary(SessionSummary::Of(session), output);
        break;
    case 1:
        output
            << SummaryJson(SessionSummary::Of(session)).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
        break;
    case 2:
        WriteTimeline(session, {}, output);
        break;
    case 3:
        WriteTimelineJson(session, {}, output);
        Require(nlohmann::json::accept(output.str()), "the list is no JSON");
        break;
    default:
        WriteTraceEvents(sessions, output);
        Require(nlohmann::json::accept(output.str()), "the trace is no JSON");
        CompareSessions(whole, session);
    }
    Require(output.str().size() < 0x400000, "too much is told of a small file");
}

} // namespace

int main(int argc, char **argv)
{
    const unsigned long cases = argc > 1 ? std::strtoul(argv[1], nullptr, 0) : 3000;
    const unsigned long seed = argc > 2 ? std::strtoul(argv[2], nullptr, 0) : 1;
    std::cout << "seed " << seed << std::endl; // flushed: a fault shall not take it along
    SessionPlan plan{.frames = 4};
    plan.pixels.assign(32, 7);
    const RecordingBuilder original = StreamingSession(plan);
    const RecordedSession whole = RecordedSession::FromBytes({original.File()});
    for (unsigned long i = 0; i < cases; ++i)
    {
        Random random(seed * 1'000'003 + i);
        Damaged damaged{original.File(), original.File().size()};
        if (random() % 3 == 0)
        {
            Disguise(damaged, original.offsets, random);
        }
        for (std::size_t round = random() % 4; round != 0; --round)
        {
            Harm(damaged, random);
        }
        caseUnderWay = i;
        const RecordedSession session = RecordedSession::FromBytes({damaged.file});
        CheckRecords(session, original, damaged);
        Read(session, whole, random);
    }
    std::cout << cases << " damaged files, all read\n";
    return 0;
}
