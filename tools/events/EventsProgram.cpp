#include "tools/events/EventsProgram.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
#include <map>
#include <ostream>

#include "tools/events/FrameExport.h"
#include "tools/events/RecordText.h"
#include "tools/events/SessionComparison.h"
#include "tools/events/SummaryReport.h"
#include "tools/events/TraceEvents.h"
#include "tools/names/Format.h"

namespace tarn_host
{

namespace
{
using Json = nlohmann::ordered_json;
using Sessions = std::vector<RecordedSession>;
using tarn_recording::PathOf;
using tarn_recording::PathText;

constexpr std::size_t kSurroundings = 10;

const std::map<std::string, RecordKind> kKinds{{"call", RecordKind::Call},      {"frame", RecordKind::Frame},
                                               {"state", RecordKind::State},    {"event", RecordKind::Event},
                                               {"ks", RecordKind::Ks},          {"camera", RecordKind::Camera},
                                               {"session", RecordKind::Session}};

// Throws for what cannot be read, and when nothing of it is a recording.
Sessions Open(const std::vector<std::string> &names)
{
    std::vector<std::filesystem::path> paths;
    std::ranges::transform(names, std::back_inserter(paths), PathOf);
    Sessions sessions;
    try
    {
        sessions = RecordedSession::Open(paths);
    }
    catch (const std::runtime_error &error)
    {
        throw EventsInputError(error.what());
    }
    for (const RecordedSession &session : sessions)
    {
        for (const auto &damage : session.Damages())
        {
            if (damage.kind == tarn_recording::DamageKind::NoRecording)
            {
                throw EventsInputError(damage.file + ": " + damage.ToText());
            }
        }
    }
    return sessions;
}

Json FilesJson(const RecordedSession &session)
{
    Json names = Json::array();
    for (const auto &file : session.Files())
    {
        names.push_back(PathText(file.path));
    }
    return names;
}

std::string Dump(const Json &json)
{
    return json.dump(2, ' ', false, Json::error_handler_t::replace);
}

// The records of a session up to this one, of which its thread's are the nearest.
void WriteSurroundings(const char *title, const RecordedSession &session, const Record *record, std::ostream &output)
{
    if (record == nullptr)
    {
        return;
    }
    std::vector<const Record *> before;
    for (const Record *at = record; at >= session.Records().data() && before.size() <= kSurroundings; --at)
    {
        if (at->header.thread == record->header.thread)
        {
            before.push_back(at);
        }
        if (at == session.Records().data())
        {
            break;
        }
    }
    output << title << '\n';
    for (auto at = before.rbegin(); at != before.rend(); ++at)
    {
        output << "  " << TimelineLine(session, **at) << '\n';
    }
}

Json DifferenceJson(const ComparisonResult &result)
{
    Json json{{"compared", result.compared}, {"differences", result.differences}};
    if (result.first)
    {
        json["first"] = {{"what", result.first->lane},
                         {"nth", result.first->nth},
                         {"where", result.first->where},
                         {"expected", result.first->expectedText},
                         {"got", result.first->gotText}};
    }
    return json;
}

void WriteDifference(const ComparisonResult &result, const RecordedSession &expected, const RecordedSession &got,
                     std::ostream &output)
{
    if (!result.first)
    {
        output << "no difference in " << result.compared << " calls and events\n";
        return;
    }
    const SessionDifference &first = *result.first;
    output << "first difference: " << first.lane << ", number " << first.nth
           << (first.where.empty() ? "" : ", in " + first.where) << '\n'
           << "  expected: " << first.expectedText << '\n'
           << "  got:      " << first.gotText << '\n'
           << result.differences << " kinds of calls or events differ, " << result.compared
           << " calls and events are alike\n";
    WriteSurroundings("its thread before, expected:", expected, first.expected, output);
    WriteSurroundings("its thread before, got:", got, first.got, output);
}

} // namespace

void EventsProgram::AddOptions(CLI::App &app)
{
    app.add_option("files", files, "recordings; the other parts of a session are found beside them")
        ->required()
        ->type_name("FILE");
    app.add_flag("--list", list, "every record in its order instead of the summary");
    app.add_option("--from", filter.fromSeconds, "with --list: from so many seconds after the beginning")
        ->type_name("S");
    app.add_option("--to", filter.toSeconds, "with --list: up to so many seconds after the beginning")->type_name("S");
    app.add_option("--thread", threads, "with --list: of these threads")->type_name("ID");
    app.add_option("--transform", transforms, "with --list: of these transforms, 1 is the first")->type_name("N");
    app.add_option("--kind", kinds, "with --list: call, frame, state, event, ks, camera, session")->type_name("KIND");
    app.add_flag("--failures", filter.failuresOnly, "with --list: what failed or never returned");
    app.add_flag("--json", json, "as JSON");
    app.add_option("--trace", traceFile, "writes trace events for a browser's trace viewer")->type_name("OUT.json");
    app.add_option("--frames", framesFolder, "writes the recorded pixels as a folder for the other --frames options")
        ->type_name("DIR");
    app.add_option("--compare", compareFiles, "tells where another recording differs, but for times and threads")
        ->type_name("OTHER");
}

RecordFilter EventsProgram::ReadFilter() const
{
    RecordFilter read = filter;
    read.threads.insert(threads.begin(), threads.end());
    read.transforms.insert(transforms.begin(), transforms.end());
    for (const std::string &word : kinds)
    {
        const auto found = kKinds.find(word);
        if (found == kKinds.end())
        {
            throw EventsInputError("--kind: '" + word + "' is none of call, frame, state, event, ks, camera, session");
        }
        read.kinds.insert(found->second);
    }
    return read;
}

int EventsProgram::Run(std::ostream &output)
{
    const Sessions sessions = Open(files);
    if (!compareFiles.empty())
    {
        return Compare(sessions, output);
    }
    if (!traceFile.empty())
    {
        WriteTrace(sessions, output);
    }
    if (!framesFolder.empty())
    {
        WriteFrames(sessions, output);
    }
    if (list)
    {
        WriteLists(sessions, output);
    }
    else if (traceFile.empty() && framesFolder.empty())
    {
        WriteSummaries(sessions, output);
    }
    return 0;
}

void EventsProgram::WriteSummaries(const Sessions &sessions, std::ostream &output) const
{
    Json all = Json::array();
    for (const RecordedSession &session : sessions)
    {
        const SessionSummary summary = SessionSummary::Of(session);
        if (json)
        {
            all.push_back(SummaryJson(summary));
            all.back()["files"] = FilesJson(session);
            continue;
        }
        for (const auto &file : session.Files())
        {
            output << PathText(file.path) << '\n';
        }
        WriteSummary(summary, output);
        output << '\n';
    }
    if (json)
    {
        output << Dump(all) << '\n';
    }
}

void EventsProgram::WriteLists(const Sessions &sessions, std::ostream &output) const
{
    const RecordFilter read = ReadFilter();
    const char *before = json ? "[" : "";
    for (const RecordedSession &session : sessions)
    {
        if (json)
        {
            output << before;
            WriteTimelineJson(session, read, output);
            before = ",\n";
            continue;
        }
        output << PathText(session.Files().front().path) << '\n';
        for (const auto &damage : session.Damages())
        {
            output << "  damage: " << damage.ToText() << '\n';
        }
        WriteTimeline(session, read, output);
    }
    output << (json ? "]\n" : "");
}

void EventsProgram::WriteTrace(const Sessions &sessions, std::ostream &output) const
{
    std::ofstream file(PathOf(traceFile), std::ios::binary);
    WriteTraceEvents(sessions, file);
    if (!file.flush())
    {
        throw EventsInputError("cannot write " + traceFile);
    }
    output << "wrote " << traceFile << '\n';
}

void EventsProgram::WriteFrames(const Sessions &sessions, std::ostream &output) const
{
    FrameExportResult result;
    try
    {
        result = ExportFrames(sessions, PathOf(framesFolder));
    }
    catch (const std::runtime_error &error)
    {
        throw EventsInputError(error.what());
    }
    if (result.frames + result.raw == 0)
    {
        throw EventsInputError("--frames: the recording holds no pictures");
    }
    output << "wrote " << result.frames << " frames as pictures, " << result.raw << " as their bytes, to "
           << framesFolder
           << (result.skipped == 0 ? "" : Format("; %llu skipped", static_cast<unsigned long long>(result.skipped)))
           << '\n';
}

int EventsProgram::Compare(const Sessions &sessions, std::ostream &output) const
{
    const Sessions others = Open(compareFiles);
    if (sessions.size() != 1 || others.size() != 1)
    {
        throw EventsInputError("--compare: one session on each side can be compared");
    }
    const ComparisonResult result = CompareSessions(sessions.front(), others.front());
    if (json)
    {
        output << Dump(DifferenceJson(result)) << '\n';
    }
    else
    {
        WriteDifference(result, sessions.front(), others.front(), output);
    }
    return result.first ? 1 : 0;
}

} // namespace tarn_host
