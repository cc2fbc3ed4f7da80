#include "device/nodes/FramePrivacy.h"

#include <cstddef>
#include <mutex>
#include <utility>

#include "device/nodes/FrameMetadataReader.h"
#include "trace/Check.h"

namespace mft_core
{

namespace
{
const char *NameOf(FramePrivacy::State state)
{
    switch (state)
    {
    case FramePrivacy::State::Off:
        return "off";
    case FramePrivacy::State::On:
        return "on";
    case FramePrivacy::State::Unknown:
        break;
    }
    return "unknown";
}

// Drivers want the whole record as the request, too.
HRESULT Request(IKsControl *filter, ULONG flags, void *reply, ULONG replySize, ULONG &returned)
{
    KSPROPERTY_CAMERACONTROL_S request{};
    request.Property.Set = PROPSETID_VIDCAP_CAMERACONTROL;
    request.Property.Id = KSPROPERTY_CAMERACONTROL_PRIVACY;
    request.Property.Flags = flags;
    return filter->KsProperty(&request.Property, sizeof(request), reply, replySize, &returned);
}

bool AnnouncesPrivacy(IKsControl *filter)
{
    ULONG accessFlags = 0;
    ULONG returned = 0;
    const HRESULT result = Request(filter, KSPROPERTY_TYPE_BASICSUPPORT, &accessFlags, sizeof(accessFlags), returned);
    if (FAILED(result))
    {
        TRACE_INFO("no privacy control, hr 0x%08lX", static_cast<unsigned long>(result));
        return false;
    }
    return returned >= sizeof(accessFlags) && (accessFlags & KSPROPERTY_TYPE_GET) != 0;
}

HRESULT ReadPrivacy(IKsControl *filter, bool &isOn)
{
    KSPROPERTY_CAMERACONTROL_S reply{};
    ULONG returned = 0;
    CHECK_HR(Request(filter, KSPROPERTY_TYPE_GET, &reply, sizeof(reply), returned));
    if (returned < offsetof(KSPROPERTY_CAMERACONTROL_S, Flags))
    {
        TRACE_ERROR("privacy answer of %lu bytes", returned);
        return E_FAIL;
    }
    isOn = reply.Value != 0;
    return S_OK;
}
} // namespace

FramePrivacy::FramePrivacy(const std::string &ownerName) : Object(ownerName + " frame privacy") {}

void FramePrivacy::AskCamera(IKsControl *filter)
{
    if (filter == nullptr || !AnnouncesPrivacy(filter))
    {
        return;
    }
    std::uint64_t toldBefore = 0;
    {
        const std::scoped_lock guard(lock);
        toldBefore = framesThatTold;
    }
    bool isOn = false;
    if (FAILED(ReadPrivacy(filter, isOn)))
    {
        TRACE_ERROR("%s: the camera does not answer, privacy stays %s", GetName(), NameOf(Now()));
        return;
    }
    const std::scoped_lock guard(lock);
    // Which is newer cannot be known when frames told meanwhile: the careful answer holds until the next frame tells.
    const bool doubt = framesThatTold != toldBefore && state == State::On;
    SetState(isOn || doubt ? State::On : State::Off);
    toldAtArrival = State::Unknown;
}

bool FramePrivacy::Covers(IMFSample *sample)
{
    const auto record = FrameMetadataReader(sample).Record(kFrameRecordHead);
    if (!record)
    {
        return IsOn();
    }
    const bool isOn = (record->flags & TARN_FRAME_FLAG_PRIVACY) != 0;
    Tell(isOn);
    return isOn;
}

bool FramePrivacy::MayCover(IMFSample *sample)
{
    const auto record = FrameMetadataReader(sample).Record(kFrameRecordHead);
    const std::scoped_lock guard(lock);
    if (record)
    {
        toldAtArrival = (record->flags & TARN_FRAME_FLAG_PRIVACY) != 0 ? State::On : State::Off;
        return toldAtArrival == State::On;
    }
    return toldAtArrival == State::On || state == State::On;
}

void FramePrivacy::Tell(bool isOn)
{
    const std::scoped_lock guard(lock);
    ++framesThatTold;
    SetState(isOn ? State::On : State::Off);
}

FramePrivacy::State FramePrivacy::Now() const
{
    const std::scoped_lock guard(lock);
    return state;
}

bool FramePrivacy::IsOn() const
{
    return Now() == State::On;
}

void FramePrivacy::SetState(State next)
{
    const State former = state;
    state = next;
    if (former != next)
    {
        TRACE_INFO("%s: privacy %s, was %s", GetName(), NameOf(next), NameOf(former));
    }
}

} // namespace mft_core
