#include "tools/replay/KsAnswers.h"

#include <algorithm>
#include <cstring>

#include "tools/names/PipelineNames.h"
#include "tools/replay/ValueDifference.h"

namespace tarn_replay
{

using tarn_recording::Bytes;
using tarn_recording::Record;
using tarn_recording::Value;

namespace
{
constexpr std::size_t kIdentifierBytes = 24;
constexpr std::size_t kNodeBytes = 28;
constexpr std::uint32_t kTopology = 0x10000000; // KSPROPERTY_TYPE_TOPOLOGY
constexpr std::uint32_t kSet = 0x2;             // KSPROPERTY_TYPE_SET
constexpr std::int32_t kNotFound = -2147023728; // HRESULT_FROM_WIN32(ERROR_NOT_FOUND)

std::uint32_t NumberAt(Bytes bytes, std::size_t offset)
{
    std::uint32_t number = 0;
    if (offset + sizeof number <= bytes.size())
    {
        std::memcpy(&number, bytes.data() + offset, sizeof number);
    }
    return number;
}

std::uint32_t FlagsOf(Bytes request)
{
    return NumberAt(request, 20);
}

bool HasNode(Bytes request)
{
    return (FlagsOf(request) & kTopology) != 0 && request.size() >= kNodeBytes;
}

// Of a KS event they are the caller's handles, of a request that reads what lies there by chance.
bool DataCount(const KsRequest &request)
{
    return request.kind == TARN_KS_PROPERTY && (FlagsOf(request.request) & kSet) != 0;
}

std::string BytesText(Bytes bytes)
{
    return ToText(Value(0, TARN_KIND_BYTES, bytes, 0));
}
} // namespace

std::string KsRequest::ToText() const
{
    if (request.size() < kIdentifierBytes)
    {
        return kind == TARN_KS_EVENT ? "the end of a KS event" : "a KS call without identifier";
    }
    const auto set = tarn_host::Guid::Of(request);
    return tarn_host::GuidText(set.bytes) + " " + tarn_host::KsIdText(kind, set.bytes, NumberAt(request, 16)) + " " +
           tarn_host::KsFlagsText(kind, FlagsOf(request)) +
           (HasNode(request) ? " node " + std::to_string(NumberAt(request, kIdentifierBytes)) : "");
}

KsAnswers::KsAnswers(const tarn_recording::RecordedSession &session, std::uint32_t transform)
{
    for (const Record &record : session.Records())
    {
        if (record.header.type == TARN_RECORD_KS_CALL && record.header.transform == transform &&
            (record.header.subject & TARN_KS_TO_CAMERA) != 0)
        {
            lines[KeyOf(RequestOf(record))].exchanges.push_back({&record, session.EndOf(record)});
        }
    }
}

KsRequest KsAnswers::RequestOf(const Record &call)
{
    const auto values = call.Values();
    const auto request = values.Find(TARN_VALUE_REQUEST);
    const auto data = values.Find(TARN_VALUE_DATA);
    return {static_cast<std::uint16_t>(call.header.subject & TARN_KS_KIND), request ? request->Payload() : Bytes{},
            data ? data->Payload() : Bytes{},
            static_cast<std::uint32_t>(values.Unsigned(TARN_VALUE_DATA_LENGTH).value_or(0))};
}

KsAnswers::Key KsAnswers::KeyOf(const KsRequest &request)
{
    const Bytes bytes = request.request;
    const std::size_t length = HasNode(bytes) ? kNodeBytes : std::min(bytes.size(), kIdentifierBytes);
    Key key(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length));
    key.push_back(static_cast<std::uint8_t>(request.kind));
    return key;
}

KsAnswers::Answer KsAnswers::Give(const KsRequest &request)
{
    const std::scoped_lock hold(lock);
    const auto found = lines.find(KeyOf(request));
    if (found == lines.end())
    {
        return {kNotFound, {}, std::nullopt, "the camera was never asked for " + request.ToText()};
    }
    Line &line = found->second;
    const bool isFurther = line.given == line.exchanges.size();
    const Exchange &exchange = isFurther ? line.exchanges.back() : line.exchanges[line.given];
    Answer answer;
    if (isFurther)
    {
        answer.difference =
            "the camera was asked " + std::to_string(line.given) + " times and not once more for " + request.ToText();
    }
    else
    {
        ++line.given;
        const KsRequest recorded = RequestOf(*exchange.call);
        if (DataCount(request) &&
            !std::ranges::equal(recorded.data, request.data.first(std::min(request.data.size(), recorded.data.size()))))
        {
            answer.difference = "the camera was given other data with " + request.ToText() + ": expected " +
                                BytesText(recorded.data) + ", got " + BytesText(request.data);
        }
        else if (recorded.dataLength != request.dataLength)
        {
            answer.difference = "the camera was given another data length with " + request.ToText() + ": expected " +
                                std::to_string(recorded.dataLength) + ", got " + std::to_string(request.dataLength);
        }
    }
    if (exchange.answer != nullptr)
    {
        const auto values = exchange.answer->Values();
        const auto data = values.Find(TARN_VALUE_DATA);
        const auto returned = values.Unsigned(TARN_VALUE_BYTES_RETURNED);
        answer.result = exchange.answer->header.result;
        answer.data = data ? data->Payload() : Bytes{};
        answer.bytesReturned = returned ? std::optional(static_cast<std::uint32_t>(*returned)) : std::nullopt;
    }
    return answer;
}

bool KsAnswers::WasAsked(std::uint64_t sequence) const
{
    const std::scoped_lock hold(lock);
    for (const auto &[key, line] : lines)
    {
        const auto found = std::ranges::find(line.exchanges, sequence,
                                             [](const Exchange &exchange) { return exchange.call->header.sequence; });
        if (found != line.exchanges.end())
        {
            return static_cast<std::size_t>(found - line.exchanges.begin()) < line.given;
        }
    }
    return true;
}

std::optional<std::string> KsAnswers::FirstNotAsked(std::uint64_t last) const
{
    const std::scoped_lock hold(lock);
    const Exchange *first = nullptr;
    for (const auto &[key, line] : lines)
    {
        if (line.given < line.exchanges.size())
        {
            const Exchange &next = line.exchanges[line.given];
            const std::uint64_t sequence = next.call->header.sequence;
            first = sequence <= last && (first == nullptr || sequence < first->call->header.sequence) ? &next : first;
        }
    }
    return first == nullptr ? std::nullopt
                            : std::optional("the camera was not asked for " + RequestOf(*first->call).ToText());
}

} // namespace tarn_replay
