#include "tools/runs/StreamReport.h"

#include <ostream>

#include <nlohmann/json.hpp>

#include "tools/command/Text.h"
#include "tools/names/ResultNames.h"

namespace tarn_host
{

namespace
{

using Json = nlohmann::ordered_json;

Json JsonOf(const OutputReport &output)
{
    const StreamSummary &s = output.summary;
    const AttachmentCounts &carried = output.attachments;
    return {{"output", output.name},
            {"id", output.id},
            {"type", output.format},
            {"in", s.framesIn},
            {"out", s.framesOut},
            {"between", s.between},
            {"cutOff", s.cutOff},
            {"lost", s.lost},
            {"reordered", s.reordered},
            {"unexpected", s.unexpected},
            {"fps", s.framesPerSecond},
            {"p50Ms", s.latencyP50Ms},
            {"p99Ms", s.latencyP99Ms},
            {"maxMs", s.latencyMaxMs},
            {"records", carried.records},
            {"lenses", carried.intrinsics},
            {"maps", carried.confidenceMaps},
            {"lit", carried.illuminated}};
}

// Problems of one output during one phase.
void AddProblems(std::vector<std::string> &problems, const PhaseReport &phase, const OutputReport &output,
                 bool interrupted)
{
    const StreamSummary &summary = output.summary;
    const std::string where = phase.caption + ": output " + output.name;
    if (!summary.Complete())
    {
        problems.push_back(where + Format(": %llu frames lost, %llu reordered, %llu unexpected", Wide(summary.lost),
                                          Wide(summary.reordered), Wide(summary.unexpected)));
    }
    if (interrupted)
    {
        return; // Nothing may have come yet.
    }
    if (summary.framesOut == 0)
    {
        problems.push_back(where + " delivered nothing");
    }
    else if (output.confidenceMapIsOn && output.attachments.confidenceMaps == 0)
    {
        problems.push_back(where + " delivered no confidence map");
    }
}

} // namespace

double StreamReport::ProcessorMicrosecondsPerFrame() const noexcept
{
    std::uint64_t frames = 0;
    for (const PinReport &pin : pins)
    {
        frames += pin.statistics.delivered;
    }
    return frames == 0 ? 0 : static_cast<double>(processorTime.count()) / static_cast<double>(frames);
}

std::vector<std::string> StreamReport::Problems() const
{
    std::vector<std::string> problems;
    for (const PhaseReport &phase : phases)
    {
        for (const OutputReport &output : phase.outputs)
        {
            AddProblems(problems, phase, output, interrupted);
        }
    }
    for (const PinReport &pin : pins)
    {
        if (pin.statistics.failed != 0)
        {
            problems.push_back(
                Format("camera pin %lu could not make %llu frames", pin.id, Wide(pin.statistics.failed)));
        }
        if (pin.statistics.delivered != pin.taken.in + pin.taken.between)
        {
            problems.push_back(Format("camera pin %lu delivered %llu frames, but %llu are in the books", pin.id,
                                      Wide(pin.statistics.delivered), Wide(pin.taken.in + pin.taken.between)));
        }
    }
    if (stalled)
    {
        problems.emplace_back("no more frames came although the camera had not sent all of them");
    }
    if (leftovers.transformReferences != 0)
    {
        problems.push_back(Format("%lu references on the transform left", leftovers.transformReferences));
    }
    if (leftovers.cameraReferences != 0)
    {
        problems.push_back(Format("%lu references on the camera left", leftovers.cameraReferences));
    }
    if (leftovers.frames != 0)
    {
        problems.push_back(Format("%u frames never returned to the camera", static_cast<unsigned>(leftovers.frames)));
    }
    if (leftovers.canUnload != S_OK || !leftovers.unloaded)
    {
        problems.push_back("the module cannot be unloaded, DllCanUnloadNow gives " +
                           ResultText(static_cast<std::uint32_t>(leftovers.canUnload)));
    }
    return problems;
}

void StreamReport::WriteTable(std::ostream &output) const
{
    output
        << title << "\n"
        << transform << " transform, " << source << "\nmodule " << module << "\n\n"
        << "  output    type               in    out  between  cut off  lost  reordered    fps  p50 ms  p99 ms  max ms"
           "  records  lenses  maps  lit\n";
    for (const PhaseReport &phase : phases)
    {
        output << phase.caption << "   (camera: " << phase.pin << ")\n";
        for (const OutputReport &one : phase.outputs)
        {
            const StreamSummary &s = one.summary;
            output << Format("  %-8s  %-15s %5llu  %5llu  %7llu  %7llu  %4llu  %9llu  %5.1f  %6.2f  %6.2f  %6.2f",
                             one.name.c_str(), one.format.c_str(), Wide(s.framesIn), Wide(s.framesOut), Wide(s.between),
                             Wide(s.cutOff), Wide(s.lost), Wide(s.reordered), s.framesPerSecond, s.latencyP50Ms,
                             s.latencyP99Ms, s.latencyMaxMs)
                   << Format("  %7llu  %6llu  %4llu  %3llu\n", Wide(one.attachments.records),
                             Wide(one.attachments.intrinsics), Wide(one.attachments.confidenceMaps),
                             Wide(one.attachments.illuminated));
        }
    }
    output << '\n';
    for (const PinReport &pin : pins)
    {
        output << Format("camera pin %lu   %llu frames delivered (%llu in, %llu between), %llu dropped by the camera, "
                         "%llu failed\n",
                         pin.id, Wide(pin.statistics.delivered), Wide(pin.taken.in), Wide(pin.taken.between),
                         Wide(pin.statistics.dropped), Wide(pin.statistics.failed));
    }
    output << Format("processor      %.0f us per frame, camera and frame server included\n",
                     ProcessorMicrosecondsPerFrame())
           << Format("events         %llu outputs, %llu input states, %llu streams created, %llu others\n",
                     Wide(events.outputEvents), Wide(events.inputStateEvents), Wide(events.streamCreatedEvents),
                     Wide(events.otherEvents))
           << Format("left behind    %lu references on the transform, %lu on the camera, %u frames\n",
                     leftovers.transformReferences, leftovers.cameraReferences, static_cast<unsigned>(leftovers.frames))
           << "unloading      DllCanUnloadNow " << ResultText(static_cast<std::uint32_t>(leftovers.canUnload))
           << (leftovers.unloaded ? ", module unloaded\n" : ", module still loaded\n") << '\n';
    const std::vector<std::string> problems = Problems();
    if (interrupted)
    {
        output << "INTERRUPTED: Ctrl-C came before the end; these are the results so far\n";
    }
    else if (problems.empty())
    {
        output << "OK: every frame was delivered, in order\n";
    }
    for (const std::string &problem : problems)
    {
        output << "FAILED: " << problem << '\n';
    }
}

void StreamReport::WriteLegend(std::ostream &output)
{
    output << "In: given to the transform while the output ran. Between: came while it was started, stopped or "
              "restarted.\n"
              "Cut off: in, and still on their way when the output was stopped or restarted. Latency (p50, p99, max) "
              "from\n"
              "ProcessInput to delivery.\n"
              "Samples with metadata record, camera intrinsics (lenses), confidence map, and lit by the laser.\n";
}

std::string StreamReport::ToJson() const
{
    Json report;
    report["title"] = title;
    report["transform"] = transform;
    report["module"] = module;
    report["source"] = source;
    report["phases"] = Json::array();
    for (const PhaseReport &phase : phases)
    {
        Json outputs = Json::array();
        for (const OutputReport &one : phase.outputs)
        {
            outputs.push_back(JsonOf(one));
        }
        report["phases"].push_back({{"caption", phase.caption}, {"pin", phase.pin}, {"outputs", outputs}});
    }
    report["cameraPins"] = Json::array();
    for (const PinReport &pin : pins)
    {
        report["cameraPins"].push_back({{"id", pin.id},
                                        {"delivered", pin.statistics.delivered},
                                        {"in", pin.taken.in},
                                        {"between", pin.taken.between},
                                        {"dropped", pin.statistics.dropped},
                                        {"failed", pin.statistics.failed}});
    }
    report["processorMicrosecondsPerFrame"] = ProcessorMicrosecondsPerFrame();
    report["events"] = {{"outputs", events.outputEvents},
                        {"inputStates", events.inputStateEvents},
                        {"streamsCreated", events.streamCreatedEvents},
                        {"others", events.otherEvents}};
    report["leftBehind"] = {{"transformReferences", leftovers.transformReferences},
                            {"cameraReferences", leftovers.cameraReferences},
                            {"frames", leftovers.frames},
                            {"dllCanUnloadNow", ResultText(static_cast<std::uint32_t>(leftovers.canUnload))},
                            {"unloaded", leftovers.unloaded}};
    report["interrupted"] = interrupted;
    report["problems"] = Problems();
    // A path of the file system may hold what is not valid UTF-8.
    return report.dump(2, ' ', false, Json::error_handler_t::replace);
}

} // namespace tarn_host
