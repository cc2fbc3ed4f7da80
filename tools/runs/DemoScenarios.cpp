#include "tools/runs/DemoScenarios.h"

namespace tarn_host
{

namespace
{

constexpr VideoSize kOrdinary{640, 480, 30};
constexpr VideoSize kFast{640, 480, 60};
constexpr VideoSize kFaceLogin{360, 360, 60};
constexpr std::uint64_t kFrames = 60; // of each output in each phase

Phase Start(const char *caption, std::vector<OutputChoice> outputs)
{
    Phase phase;
    phase.caption = caption;
    phase.start = std::move(outputs);
    phase.frames = kFrames;
    return phase;
}

Phase Stop(const char *caption, DWORD outputId)
{
    Phase phase;
    phase.caption = caption;
    phase.stop = {outputId};
    phase.frames = kFrames;
    return phase;
}

Phase SwitchConfidenceMap(const char *caption, bool on)
{
    Phase phase;
    phase.caption = caption;
    phase.confidenceMap = on;
    phase.frames = kFrames;
    return phase;
}

Phase StartFaceLogin()
{
    Phase phase = Start("face login", {{kInfraredOutput, kFaceLogin}});
    phase.faceLogin = true;
    return phase;
}

} // namespace

std::vector<DemoScenario> DemoScenarios()
{
    const TransformKind depth = TransformKind::Depth;
    return {
        {{"1. Depth alone", depth, {Start("depth", {{kDepthOutput, kOrdinary}})}}, {{0, kDepthOutput, false}}},
        {{"2. Infrared alone", depth, {Start("infrared", {{kInfraredOutput, kOrdinary}})}},
         {{0, kInfraredOutput, false}}},
        {{"3. Depth and infrared from one pin, 60 frames a second",
          depth,
          {Start("both", {{kDepthOutput, kFast}, {kInfraredOutput, kFast}})}},
         {}},
        {{"4. Both, one stopped and started again under way",
          depth,
          {Start("depth first", {{kDepthOutput, kOrdinary}}), Start("infrared joins", {{kInfraredOutput, kOrdinary}}),
           Stop("depth stops", kDepthOutput), Start("depth comes back", {{kDepthOutput, kOrdinary}})}},
         {}},
        {{"5. Confidence map switched while depth runs",
          depth,
          {Start("depth", {{kDepthOutput, kOrdinary}}), SwitchConfidenceMap("confidence map on", true),
           SwitchConfidenceMap("confidence map off", false)}},
         {{1, kDepthOutput, true}}},
        {{"6. Face login", depth, {StartFaceLogin()}}, {{0, kInfraredOutput, false}}},
    };
}

} // namespace tarn_host
