// What records of certain types hold, taken apart. Views into the recording, but for texts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/recording/RecordedSession.h"

namespace tarn_host
{

using tarn_recording::Bytes;
using tarn_recording::Guid;
using tarn_recording::Record;
using tarn_recording::RecordedSession;
using tarn_recording::Value;
using tarn_recording::ValueList;

// A media type.
struct TypeView
{
    Guid subtype{};
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t rateNumerator = 0;
    std::uint32_t rateDenominator = 0;

    // From a list of attributes.
    static TypeView Of(const ValueList &attributes);
    // "D16 640x480@30"
    std::string ToText() const;
    double FrameSeconds() const noexcept; // 0 when the type does not tell
};

struct SampleView
{
    std::uint64_t number = 0;
    std::optional<std::int64_t> time; // 100 ns
    std::optional<std::int64_t> duration;
    std::uint64_t length = 0;
    bool isBlanked = false;

    static SampleView Of(const ValueList &sample);
};

// A sample that ProcessOutput gave out.
struct OutputView
{
    std::uint32_t stream = 0;
    SampleView sample;
};
std::vector<OutputView> OutputsOf(const Record &processOutputReturn);

// Who is asked for what by a KS call.
struct KsRequestView
{
    std::uint32_t kind = 0; // TARN_KS_PROPERTY, ...
    bool isToCamera = false;
    Guid set{};
    std::uint32_t id = 0;
    std::uint32_t flags = 0;
    std::optional<std::uint32_t> node;

    // Nothing when the request is too short to be one.
    static std::optional<KsRequestView> Of(const Record &ksCall);
    // "KSPROPERTYSETID_TARN_DEPTH_CONTROL LASER_POWER (1) GET|TOPOLOGY node 2"
    std::string ToText() const;
};

// "2026-11-21 19:05:33.120 UTC"; `time100ns` since 1601.
std::string TimeText(std::uint64_t time100ns);

inline double Milliseconds(std::uint64_t ticks100ns) noexcept
{
    return static_cast<double>(ticks100ns) / 1e4;
}
// 0 when they stand the other way round, as clocks of several threads may.
inline std::uint64_t Between(std::uint64_t from, std::uint64_t to) noexcept
{
    return to > from ? to - from : 0;
}

// Results that a pipeline which works meets too: the end of a list, nothing to fetch yet, a question for a size or for
// whether something is supported.
bool IsOrdinaryFailure(const RecordedSession &session, const Record &end);

} // namespace tarn_host
