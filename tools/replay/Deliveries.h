// Which frames of a session came out, of which output and when.
#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <utility>
#include <vector>

#include "tools/recording/RecordedSession.h"

namespace tarn_replay
{

using tarn_recording::Record;

bool IsHaveOutput(const Record &record);
// Time of the sample that a call brought.
std::optional<std::int64_t> TimeOf(const Record &call);

// From the announcements, which tell more, and from what was fetched. Frames are known by their time; a camera may give
// several the same one, and they are announced in their order. Views into the session, which must outlive it.
// Immutable.
class Deliveries
{
  public:
    // A frame of this time came out of this output.
    struct Delivery
    {
        std::uint32_t transform = 0;
        std::int64_t time = 0;
        std::uint32_t output = 0;
        std::uint64_t sequence = 0; // of what tells so
        bool isAnnouncement = false;
        friend auto operator<=>(const Delivery &, const Delivery &) = default;
    };

    // Of frames that share a time those beside changes, by the numbers of their calls, are taken for the lost ones.
    Deliveries(const tarn_recording::RecordedSession &session, const std::set<std::uint64_t> &besideChanges);

    // The first of the frame that the call brought; null when there is none.
    const Delivery *Of(const Record &call) const;
    // The call that brought the frame which is announced; null when none did.
    const Record *FrameOf(const Record &announcement) const;
    // The number of the last announcement of the samples that a ProcessOutput returned; 0 when there were none.
    std::uint64_t LastAnnouncementOf(const Record &fetch) const;

  private:
    using Sequences = std::vector<std::uint64_t>;

    void FindLost(const std::set<std::uint64_t> &besideChanges);
    Sequences MostAnnounced(const Record &frame, std::int64_t time) const;
    void Add(const Record &record, tarn_recording::ValueList values, tarn_recording::ValueList sample);

    // Those of one frame and output, up to a record.
    std::span<const Delivery> Among(std::uint32_t transform, std::int64_t time, std::uint32_t output,
                                    std::uint64_t before) const;

    std::vector<std::pair<std::int64_t, const Record *>> frames; // by time of the sample
    std::vector<Delivery> deliveries;                            // sorted
    std::set<const Record *> lost;                               // of several frames of one time
};

} // namespace tarn_replay
