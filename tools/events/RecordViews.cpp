#include "tools/events/RecordViews.h"

#include <algorithm>
#include <chrono>
#include <cstring>

#include "tools/names/Format.h"
#include "tools/names/PipelineNames.h"

namespace tarn_host
{

namespace
{
constexpr std::uint64_t kSecond = 10'000'000;
constexpr std::uint64_t kSecondsFrom1601To1970 = 11'644'473'600;
constexpr std::uint32_t kTopologyFlag = 0x10000000; // KSPROPERTY_TYPE_TOPOLOGY
constexpr std::size_t kIdentifierBytes = 24;        // KSIDENTIFIER

constexpr std::uint32_t kNoMoreTypes = 0xC00D36B9;   // MF_E_NO_MORE_TYPES
constexpr std::uint32_t kNeedMoreInput = 0xC00D6D72; // MF_E_TRANSFORM_NEED_MORE_INPUT
constexpr std::uint32_t kTypeNotSet = 0xC00D6D60;    // MF_E_TRANSFORM_TYPE_NOT_SET
constexpr std::uint32_t kShutdown = 0xC00D3E85;      // MF_E_SHUTDOWN
constexpr std::uint32_t kNoEvents = 0xC00D3E80;      // MF_E_NO_EVENTS_AVAILABLE
constexpr std::uint32_t kMoreData = 0x800700EA;      // HRESULT_FROM_WIN32(ERROR_MORE_DATA)
constexpr std::uint32_t kNotFound = 0x80070490;      // HRESULT_FROM_WIN32(ERROR_NOT_FOUND)
constexpr std::uint32_t kSetNotFound = 0x80070492;   // HRESULT_FROM_WIN32(ERROR_SET_NOT_FOUND)
constexpr std::uint32_t kSupportFlags = 0x300;       // KSPROPERTY_TYPE_SETSUPPORT, KSPROPERTY_TYPE_BASICSUPPORT

std::uint32_t Word(Bytes bytes, std::size_t at) noexcept
{
    std::uint32_t word = 0;
    std::memcpy(&word, bytes.data() + at, sizeof word);
    return word;
}

// Two numbers in one attribute.
void ReadPair(const ValueList &attributes, const Guid &key, std::uint32_t &high, std::uint32_t &low)
{
    const auto value = attributes.Attribute(key);
    const std::uint64_t both = value ? value->Unsigned().value_or(0) : 0;
    high = static_cast<std::uint32_t>(both >> 32);
    low = static_cast<std::uint32_t>(both);
}
} // namespace

TypeView TypeView::Of(const ValueList &attributes)
{
    static const Guid subtypeKey = GuidNamed("MF_MT_SUBTYPE");
    static const Guid sizeKey = GuidNamed("MF_MT_FRAME_SIZE");
    static const Guid rateKey = GuidNamed("MF_MT_FRAME_RATE");
    TypeView type;
    if (const auto subtype = attributes.Attribute(subtypeKey))
    {
        type.subtype = subtype->AsGuid().value_or(Guid{});
    }
    ReadPair(attributes, sizeKey, type.width, type.height);
    ReadPair(attributes, rateKey, type.rateNumerator, type.rateDenominator);
    return type;
}

std::string TypeView::ToText() const
{
    std::string text = subtype == Guid{} ? "no subtype" : SubtypeText(subtype.bytes);
    if (width != 0 || height != 0)
    {
        text += Format(" %lux%lu", static_cast<unsigned long>(width), static_cast<unsigned long>(height));
    }
    return FrameSeconds() > 0 ? text + Format("@%.4g", 1 / FrameSeconds()) : text;
}

double TypeView::FrameSeconds() const noexcept
{
    return rateNumerator == 0 ? 0 : static_cast<double>(rateDenominator) / rateNumerator;
}

SampleView SampleView::Of(const ValueList &sample)
{
    SampleView view;
    view.number = sample.Unsigned(TARN_VALUE_NUMBER).value_or(0);
    view.time = sample.Signed(TARN_VALUE_TIME);
    view.duration = sample.Signed(TARN_VALUE_DURATION);
    view.length = sample.Unsigned(TARN_VALUE_LENGTH).value_or(0);
    view.isBlanked = sample.Unsigned(TARN_VALUE_BLANKED).value_or(0) != 0;
    return view;
}

std::vector<OutputView> OutputsOf(const Record &processOutputReturn)
{
    std::vector<OutputView> outputs;
    for (const Value &value : processOutputReturn.Values())
    {
        if (value.Name() != TARN_VALUE_BUFFER)
        {
            continue;
        }
        const ValueList buffer = value.Items();
        const auto sample = buffer.Find(TARN_VALUE_SAMPLE);
        if (sample && !sample->IsNull())
        {
            outputs.push_back({static_cast<std::uint32_t>(buffer.Unsigned(TARN_VALUE_STREAM).value_or(0)),
                               SampleView::Of(sample->Items())});
        }
    }
    return outputs;
}

std::optional<KsRequestView> KsRequestView::Of(const Record &ksCall)
{
    const auto request = ksCall.Values().Find(TARN_VALUE_REQUEST);
    if (!request || request->Payload().size() < kIdentifierBytes)
    {
        return std::nullopt;
    }
    const Bytes bytes = request->Payload();
    KsRequestView view;
    view.kind = ksCall.header.subject & TARN_KS_KIND;
    view.isToCamera = (ksCall.header.subject & TARN_KS_TO_CAMERA) != 0;
    view.set = Guid::Of(bytes);
    view.id = Word(bytes, 16);
    view.flags = Word(bytes, 20);
    if ((view.flags & kTopologyFlag) != 0 && bytes.size() >= kIdentifierBytes + 4)
    {
        view.node = Word(bytes, kIdentifierBytes);
    }
    return view;
}

std::string KsRequestView::ToText() const
{
    std::string text = GuidText(set.bytes) + " " + KsIdText(kind, set.bytes, id) + " " + KsFlagsText(kind, flags);
    return node ? text + " node " + std::to_string(*node) : text;
}

std::string TimeText(std::uint64_t time100ns)
{
    using namespace std::chrono;
    const std::uint64_t sinceUnix = time100ns / kSecond - std::min(time100ns / kSecond, kSecondsFrom1601To1970);
    const sys_seconds at{seconds{static_cast<std::int64_t>(sinceUnix)}};
    const auto day = floor<days>(at);
    const year_month_day date{day};
    const hh_mm_ss clock{at - day};
    return Format("%04d-%02u-%02u %02d:%02d:%02d.%03d UTC", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()), static_cast<int>(time100ns % kSecond / 10000));
}

bool IsOrdinaryFailure(const RecordedSession &session, const Record &end)
{
    const auto result = static_cast<std::uint32_t>(end.header.result);
    if (end.header.type == TARN_RECORD_KS_RETURN)
    {
        const Record *const call = session.Find(end.header.entry);
        const auto request = call != nullptr ? KsRequestView::Of(*call) : std::nullopt;
        const bool asksForSize = call != nullptr && call->Values().Unsigned(TARN_VALUE_DATA_LENGTH).value_or(0) == 0;
        const bool asksForSupport = request && (request->flags & kSupportFlags) != 0;
        return (result == kMoreData && asksForSize) ||
               ((result == kNotFound || result == kSetNotFound) && asksForSupport);
    }
    switch (end.header.subject)
    {
    case TARN_CALL_GET_INPUT_AVAILABLE_TYPE:
    case TARN_CALL_GET_OUTPUT_AVAILABLE_TYPE:
        return result == kNoMoreTypes;
    case TARN_CALL_GET_INPUT_CURRENT_TYPE:
    case TARN_CALL_GET_OUTPUT_CURRENT_TYPE:
        return result == kTypeNotSet;
    case TARN_CALL_PROCESS_OUTPUT:
        return result == kNeedMoreInput;
    case TARN_CALL_GET_EVENT:
    case TARN_CALL_BEGIN_GET_EVENT:
    case TARN_CALL_END_GET_EVENT:
        return result == kShutdown || result == kNoEvents;
    default:
        return false;
    }
}

} // namespace tarn_host
