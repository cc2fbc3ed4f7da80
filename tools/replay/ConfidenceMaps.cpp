#include "tools/replay/ConfidenceMaps.h"

#include <algorithm>

#include "tools/events/RecordViews.h"
#include "tools/names/PipelineNames.h"
#include "tools/recording/StateChanges.h"

namespace tarn_replay
{

namespace
{
constexpr std::uint32_t kConfidenceMap = 2; // KSPROPERTY_TARN_DMFT_CONTROL_CONFIDENCE_MAP
}

ConfidenceMaps::ConfidenceMaps(const tarn_recording::RecordedSession &session)
{
    static const tarn_host::Guid map = tarn_host::GuidNamed("ORRIN_SAMPLE_TARN_CONFIDENCE_MAP");
    for (const auto &record : session.Records())
    {
        for (const auto &buffer : record.Values())
        {
            const auto sample = buffer.Items().Items(TARN_VALUE_SAMPLE);
            const auto time = sample.Signed(TARN_VALUE_TIME);
            if (time && sample.Items(TARN_VALUE_ATTRIBUTES).Attribute(map))
            {
                samples.emplace(record.header.transform, *time);
            }
        }
    }
}

bool ConfidenceMaps::AreSwitchedOff(const tarn_recording::Record &call)
{
    static const tarn_host::Guid control = tarn_host::GuidNamed("KSPROPERTYSETID_TARN_DMFT_CONTROL");
    if (call.header.type != TARN_RECORD_KS_CALL || !tarn_recording::IsPropertySet(call))
    {
        return false;
    }
    const auto request = tarn_host::KsRequestView::Of(call);
    const auto data = call.Values().Find(TARN_VALUE_DATA);
    return request && !request->isToCamera && request->set.bytes == control.bytes && request->id == kConfidenceMap &&
           data && std::ranges::all_of(data->Payload(), [](std::uint8_t byte) { return byte == 0; });
}

} // namespace tarn_replay
