#include "tools/replay/ConfidenceMaps.h"

#include "tools/names/PipelineNames.h"

namespace tarn_replay
{

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

} // namespace tarn_replay
