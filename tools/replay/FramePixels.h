// The pixels of a session's input frames.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "tools/recording/RecordedSession.h"

namespace tarn_replay
{

// As recorded; where they were not, a pattern that depends on the frame's number alone. The session must outlive it.
// Immutable after Init.
class FramePixels
{
  public:
    explicit FramePixels(const tarn_recording::RecordedSession &session);

    // Of the frame that this ProcessInput brings.
    std::vector<std::uint8_t> Of(const tarn_recording::Record &call) const;

  private:
    std::map<std::uint64_t, tarn_recording::Bytes> recorded; // by the number of the call
};

} // namespace tarn_replay
