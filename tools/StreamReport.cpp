#include "tools/StreamReport.h"

#include <cstdio>
#include <ostream>

#include <nlohmann/json.hpp>

namespace tarn_host
{

namespace
{

template <class... Values>
std::string Format(const char *format, Values... values)
{
    char text[256];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

unsigned long long Wide(std::uint64_t value)
{
    return value;
}

std::string ResultText(HRESULT result)
{
    return result == S_OK      ? "S_OK"
           : result == S_FALSE ? "S_FALSE"
                               : Format("0x%08lX", static_cast<unsigned long>(result));
}

} // namespace

std::vector<std::string> StreamReport::Problems() const
{
    std::vector<std::string> problems;
    for (const OutputReport &output : outputs)
    {
        const StreamSummary &summary = output.summary;
        if (!summary.Complete())
        {
            problems.push_back(Format("output %lu: %llu frames lost, %llu reordered, %llu unexpected", output.id,
                                      Wide(summary.dropped), Wide(summary.reordered), Wide(summary.unexpected)));
        }
        if (summary.framesOut == 0)
        {
            problems.push_back(Format("output %lu delivered nothing", output.id));
        }
    }
    for (const PinReport &pin : pins)
    {
        if (pin.statistics.failed != 0)
        {
            problems.push_back(
                Format("camera pin %lu could not make %llu frames", pin.id, Wide(pin.statistics.failed)));
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
        problems.push_back(Format("%u frames never returned to the camera; does --input-reference fit the module?",
                                  static_cast<unsigned>(leftovers.frames)));
    }
    if (leftovers.canUnload != S_OK || !leftovers.unloaded)
    {
        problems.push_back("the module cannot be unloaded, DllCanUnloadNow gives " + ResultText(leftovers.canUnload));
    }
    return problems;
}

void StreamReport::WriteTable(std::ostream &output) const
{
    output << transform << " transform, " << source << "\nmodule " << module << "\n\n"
           << "output  type                     in     out  dropped  reordered     fps   p50 ms   p99 ms   max ms\n";
    for (const OutputReport &one : outputs)
    {
        const StreamSummary &s = one.summary;
        output << Format("%-6lu  %-20s %6llu  %6llu  %7llu  %9llu  %6.1f  %7.3f  %7.3f  %7.3f\n", one.id,
                         one.format.c_str(), Wide(s.framesIn), Wide(s.framesOut), Wide(s.dropped), Wide(s.reordered),
                         s.framesPerSecond, s.latencyP50Ms, s.latencyP99Ms, s.latencyMaxMs);
    }
    output << "Latency from ProcessInput to delivery.\n\n";
    for (const PinReport &pin : pins)
    {
        output << Format("camera pin %lu   %llu frames delivered, %llu dropped by the camera, %llu failed\n", pin.id,
                         Wide(pin.statistics.delivered), Wide(pin.statistics.dropped), Wide(pin.statistics.failed));
    }
    output << Format("events         %llu outputs, %llu input states, %llu streams created, %llu others\n",
                     Wide(events.outputEvents), Wide(events.inputStateEvents), Wide(events.streamCreatedEvents),
                     Wide(events.otherEvents))
           << Format("left behind    %lu references on the transform, %lu on the camera, %u frames\n",
                     leftovers.transformReferences, leftovers.cameraReferences, static_cast<unsigned>(leftovers.frames))
           << "unloading      DllCanUnloadNow " << ResultText(leftovers.canUnload)
           << (leftovers.unloaded ? ", module unloaded\n" : ", module still loaded\n");
    if (!picture.empty())
    {
        output << "picture        " << picture << '\n';
    }
    output << '\n';
    const std::vector<std::string> problems = Problems();
    if (problems.empty())
    {
        output << "OK: every frame was delivered, in order\n";
    }
    for (const std::string &problem : problems)
    {
        output << "FAILED: " << problem << '\n';
    }
}

void StreamReport::WriteJson(std::ostream &output) const
{
    using Json = nlohmann::ordered_json;
    Json report;
    report["transform"] = transform;
    report["module"] = module;
    report["source"] = source;
    report["outputs"] = Json::array();
    for (const OutputReport &one : outputs)
    {
        const StreamSummary &s = one.summary;
        report["outputs"].push_back(
            {{"id", one.id},
             {"type", one.format},
             {"in", s.framesIn},
             {"out", s.framesOut},
             {"dropped", s.dropped},
             {"reordered", s.reordered},
             {"unexpected", s.unexpected},
             {"framesPerSecond", s.framesPerSecond},
             {"latencyMs", {{"p50", s.latencyP50Ms}, {"p99", s.latencyP99Ms}, {"max", s.latencyMaxMs}}}});
    }
    report["cameraPins"] = Json::array();
    for (const PinReport &pin : pins)
    {
        report["cameraPins"].push_back({{"id", pin.id},
                                        {"delivered", pin.statistics.delivered},
                                        {"dropped", pin.statistics.dropped},
                                        {"failed", pin.statistics.failed}});
    }
    report["events"] = {{"outputs", events.outputEvents},
                        {"inputStates", events.inputStateEvents},
                        {"streamsCreated", events.streamCreatedEvents},
                        {"others", events.otherEvents}};
    report["leftBehind"] = {{"transformReferences", leftovers.transformReferences},
                            {"cameraReferences", leftovers.cameraReferences},
                            {"frames", leftovers.frames},
                            {"dllCanUnloadNow", ResultText(leftovers.canUnload)},
                            {"unloaded", leftovers.unloaded}};
    report["picture"] = picture;
    report["problems"] = Problems();
    // A path of the file system may hold what is not valid UTF-8.
    output << report.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

} // namespace tarn_host
