// Names for what stands as a number or a GUID in a recording, from the headers that define it. What has no name is told
// as the number or GUID that it is.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "tools/names/Guid.h"

namespace tarn_host
{

using GuidBytes = std::span<const std::uint8_t, 16>;

// "MF_MT_FRAME_SIZE", "KSPROPERTYSETID_TARN_DEPTH_CONTROL"; otherwise {...}.
std::string GuidText(GuidBytes guid);
// The GUID of a name that the headers define. Throws std::logic_error for any other.
Guid GuidNamed(std::string_view name);
// Of a media subtype: "D16", "YUY2"; of formats of our own the four characters, "INVZ".
std::string SubtypeText(GuidBytes guid);

// "METransformHaveOutput"
std::string EventTypeText(std::uint32_t mediaEventType);
// "MFT_MESSAGE_COMMAND_FLUSH"
std::string MessageText(std::uint32_t message);
// Of a DeviceStreamState: "stop", "pause", "run", "disabled".
std::string StreamStateText(std::uint32_t state);

// "PRIVACY (8)"; `kind` is the kind of the KS call as a recording has it.
std::string KsIdText(std::uint32_t kind, GuidBytes set, std::uint32_t id);
// "GET|TOPOLOGY"
std::string KsFlagsText(std::uint32_t kind, std::uint32_t flags);

// Of a recording's record type, of the call or the change that it is about: "CALL", "ProcessInput", "output emptied".
std::string RecordTypeText(std::uint16_t type);
std::string ChangeText(std::uint16_t change);
std::string CallText(std::uint16_t call);

} // namespace tarn_host
