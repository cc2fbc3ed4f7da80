#include "tools/recording/StateChanges.h"

#include <algorithm>
#include <vector>

namespace tarn_recording
{

namespace
{
constexpr std::uint32_t kCommandFlush = 0;         // MFT_MESSAGE_COMMAND_FLUSH
constexpr std::uint32_t kPropertySet = 0x00000002; // KSPROPERTY_TYPE_SET
constexpr std::size_t kFlagsOffset = 20;           // of KSIDENTIFIER

bool IsCall(const Record &record)
{
    return record.header.type == TARN_RECORD_CALL || record.header.type == TARN_RECORD_KS_CALL;
}
} // namespace

bool IsPropertySet(const Record &call)
{
    const auto request = call.Values().Find(TARN_VALUE_REQUEST);
    return (call.header.subject & TARN_KS_KIND) == TARN_KS_PROPERTY && request &&
           request->Payload().size() > kFlagsOffset && (request->Payload()[kFlagsOffset] & kPropertySet) != 0;
}

bool IsStateChange(const Record &call)
{
    if (call.header.type == TARN_RECORD_KS_CALL)
    {
        return (call.header.subject & TARN_KS_TO_CAMERA) == 0 && IsPropertySet(call);
    }
    switch (call.header.subject)
    {
    case TARN_CALL_SET_OUTPUT_STREAM_STATE:
    case TARN_CALL_SHUTDOWN:
    case TARN_CALL_FLUSH_OUTPUT_STREAM:
        return call.header.type == TARN_RECORD_CALL;
    case TARN_CALL_PROCESS_MESSAGE:
        return call.header.type == TARN_RECORD_CALL &&
               call.Values().Unsigned(TARN_VALUE_MESSAGE) == std::uint64_t{kCommandFlush};
    default:
        return false;
    }
}

bool AsksForState(const Record &call)
{
    if (call.header.type == TARN_RECORD_KS_CALL)
    {
        return (call.header.subject & TARN_KS_TO_CAMERA) == 0 && !IsPropertySet(call);
    }
    switch (call.header.subject)
    {
    case TARN_CALL_GET_INPUT_CURRENT_TYPE:
    case TARN_CALL_GET_OUTPUT_CURRENT_TYPE:
    case TARN_CALL_GET_INPUT_STREAM_STATE:
    case TARN_CALL_GET_OUTPUT_STREAM_STATE:
    case TARN_CALL_GET_INPUT_STREAM_PREFERRED_STATE:
    case TARN_CALL_GET_SHUTDOWN_STATUS:
        return true;
    default:
        return false;
    }
}

std::set<std::uint64_t> CallsBesideChanges(const RecordedSession &session)
{
    const auto &records = session.Records();
    std::set<std::uint64_t> beside;
    std::vector<const Record *> open; // calls that have not returned, in the order of their entry
    for (const Record &record : records)
    {
        std::erase_if(open, [&](const Record *call) {
            const Record *const end = session.EndOf(*call);
            return end != nullptr && end->header.sequence < record.header.sequence;
        });
        if (!IsCall(record))
        {
            continue;
        }
        for (const Record *const call : open)
        {
            const bool isOther =
                call->header.thread != record.header.thread && call->header.transform == record.header.transform;
            if (isOther && IsStateChange(record))
            {
                beside.insert(call->header.sequence);
            }
            if (isOther && IsStateChange(*call))
            {
                beside.insert(record.header.sequence);
            }
        }
        open.push_back(&record);
    }
    return beside;
}

} // namespace tarn_recording
