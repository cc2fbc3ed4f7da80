// What is known of the camera's privacy control.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstdint>
#include <string>

#include "base/CriticalSection.h"
#include "base/Object.h"

namespace mft_core
{

// One per transform, shared with the nodes of all its topologies, so that a new topology begins with what is known.
// Thread-safe; the lock is held for moments only.
class FramePrivacy : public user_space_frameworks::Object
{
  public:
    enum class State : std::uint8_t
    {
        Unknown, // nothing has told yet; frames are shown
        Off,
        On
    };

    // `ownerName` is for the trace.
    explicit FramePrivacy(const std::string &ownerName);

    // Asks the camera's filter, when it announces a privacy control that can be read. A camera that has none, or does
    // not answer, changes nothing. When an output starts; waits for the camera: hold no lock that frames need.
    void AskCamera(IKsControl *filter);

    // Whether this frame must be blanked: its own record tells, and what it tells is kept; a frame without a record
    // that holds is treated by what is known.
    bool Covers(IMFSample *sample);
    // For the recorder, which sees frames when they arrive, before the nodes do: the same, but in doubt true, and
    // nothing is kept that the nodes would go by.
    bool MayCover(IMFSample *sample);
    // A frame's record told.
    void Tell(bool isOn);

    State Now() const;
    // Whether a frame that does not tell must be blanked.
    bool IsOn() const;

  private:
    void SetState(State next) TARN_REQUIRES(lock);

    mutable user_space_frameworks::CriticalSection lock;
    State state TARN_GUARDED_BY(lock) = State::Unknown;
    State toldAtArrival TARN_GUARDED_BY(lock) = State::Unknown;
    std::uint64_t framesThatTold TARN_GUARDED_BY(lock) = 0;
};

} // namespace mft_core
