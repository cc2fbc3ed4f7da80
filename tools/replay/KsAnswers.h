// What the camera's filter answered in a session, to be given once more.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "tools/recording/RecordedSession.h"

namespace tarn_replay
{

// A KS request as the filter gets it.
struct KsRequest
{
    std::uint16_t kind = TARN_KS_PROPERTY; // or TARN_KS_METHOD, TARN_KS_EVENT
    tarn_recording::Bytes request;         // identifier and what follows it
    tarn_recording::Bytes data;            // in
    std::uint32_t dataLength = 0;          // as the caller gave it

    // Set, id, flags and node as text.
    std::string ToText() const;
};

// One list of answers for each identifier (kind, set, id, flags, node), given in the recorded order, whoever asks.
// Views into the session, which must outlive it. Thread-safe.
class KsAnswers
{
  public:
    KsAnswers(const tarn_recording::RecordedSession &session, std::uint32_t transform);

    struct Answer
    {
        std::int32_t result = 0;
        tarn_recording::Bytes data; // out
        std::optional<std::uint32_t> bytesReturned;
        std::string difference; // why this is not what was recorded; empty when it is
    };
    // What was asked more often than recorded gets the last answer again, what never was asked ERROR_NOT_FOUND; what is
    // set to something else its recorded answer. All three are differences.
    Answer Give(const KsRequest &request);

    // Whether the recorded request of this number has been made by now.
    bool WasAsked(std::uint64_t sequence) const;
    // The first recorded request that was not made and whose number is not above `last`.
    std::optional<std::string> FirstNotAsked(std::uint64_t last) const;

  private:
    struct Exchange
    {
        const tarn_recording::Record *call = nullptr;
        const tarn_recording::Record *answer = nullptr; // null when it never came
    };
    struct Line
    {
        std::vector<Exchange> exchanges;
        std::size_t given = 0;
    };
    using Key = std::vector<std::uint8_t>;

    static Key KeyOf(const KsRequest &request);
    static KsRequest RequestOf(const tarn_recording::Record &call);

    mutable std::mutex lock;
    std::map<Key, Line> lines; // guarded by lock
};

} // namespace tarn_replay
