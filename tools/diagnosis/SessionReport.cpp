#include "tools/diagnosis/SessionReport.h"

#include <algorithm>
#include <ostream>

#include "tools/diagnosis/ClockText.h"
#include "tools/names/Format.h"

namespace tarn_host
{

namespace
{

constexpr std::size_t kMostRows = 15;

void WriteFindings(std::ostream &output, const std::vector<Finding> &findings)
{
    if (findings.empty() || findings.front().severity != Severity::Wrong)
    {
        output << "OK      nothing wrong in this session\n";
    }
    for (std::size_t i = 0; i < std::min(findings.size(), kMostRows); ++i)
    {
        const Finding &one = findings[i];
        output << (one.severity == Severity::Wrong ? "WRONG   " : "advice  ") << one.title << " (";
        if (one.count > 1)
        {
            output << one.count << " times, first ";
        }
        output << TimeOfDayText(one.timeUs) << ")\n        " << one.cure << '\n';
    }
}

void WriteModule(std::ostream &output, const SessionFacts &facts)
{
    const auto field = [&](const char *name) {
        const auto found = facts.module.find(name);
        return found == facts.module.end() ? std::string() : found->second;
    };
    output << '\n';
    if (facts.module.empty())
    {
        output << "module   not told: the start of the log is missing\n";
    }
    else
    {
        output << "module   version " << field("Version") << ", " << field("Path") << "\nprocess  " << facts.process
               << ", " << field("Process") << "\nmachine  " << field("Machine") << ", Windows " << field("Windows")
               << '\n';
    }
    const std::string date = DateText(facts.firstUs);
    output << "time     " << (date.empty() ? "" : date + " ") << TimeOfDayText(facts.firstUs) << " to "
           << TimeOfDayText(facts.lastUs) << ", " << DurationText(facts.lastUs - facts.firstUs) << ", " << facts.records
           << " records" << (facts.hasEnded ? "" : "; the end is missing, or it still ran") << '\n';
    if (!facts.hasFrameEvents)
    {
        output << "         frames were not recorded: no rates\n";
    }
}

void WriteFirstError(std::ostream &output, const SessionFacts &facts)
{
    if (!facts.firstError)
    {
        return;
    }
    const auto write = [&](const char *mark, const NotedLine &line) {
        output << "  " << mark << ' ' << TimeOfDayText(line.timeUs) << "  " << line.text << '\n';
    };
    output << "\nfirst error, with what led to it\n";
    for (const NotedLine &line : facts.beforeFirstError)
    {
        write(" ", line);
    }
    write(">", *facts.firstError);
    for (const NotedLine &line : facts.afterFirstError)
    {
        write(" ", line);
    }
}

void WriteOutputs(std::ostream &output, const SessionFacts &facts)
{
    if (std::none_of(facts.outputs.begin(), facts.outputs.end(),
                     [](const auto &one) { return one.second.starts + one.second.frames != 0; }))
    {
        return;
    }
    output << "\noutputs                              starts  first frame   frames    fps  longest gap  type\n";
    for (const auto &[name, one] : facts.outputs)
    {
        if (one.starts == 0 && one.frames == 0)
        {
            continue;
        }
        const std::string first = one.firstFrameAfterUs ? DurationText(*one.firstFrameAfterUs) : "-";
        output << Format("  %-34s %6u  %11s  %7llu  %5.1f  %11s  ", name.c_str(), static_cast<unsigned>(one.starts),
                         first.c_str(), Wide(one.frames), one.Fps(),
                         one.intervals == 0 ? "-" : DurationText(one.longestGapUs).c_str())
               << one.type << (one.measured.empty() ? "" : "; measured " + one.measured) << '\n';
    }
    output << "  " << facts.inputs << " frames came from the camera\n";
}

void WriteCounts(std::ostream &output, const char *title, const Counts &counts)
{
    if (counts.empty())
    {
        return;
    }
    std::vector<std::pair<std::string, Counted>> rows(counts.begin(), counts.end());
    std::stable_sort(rows.begin(), rows.end(),
                     [](const auto &a, const auto &b) { return a.second.firstUs < b.second.firstUs; });
    output << '\n' << title << '\n';
    for (std::size_t i = 0; i < std::min(rows.size(), kMostRows); ++i)
    {
        output << Format("  %6llu  %s  ", Wide(rows[i].second.count), TimeOfDayText(rows[i].second.firstUs).c_str())
               << rows[i].first << '\n';
    }
    if (rows.size() > kMostRows)
    {
        output << "  and " << rows.size() - kMostRows << " others\n";
    }
}

void WriteChanges(std::ostream &output, const SessionFacts &facts)
{
    if (facts.changes.empty())
    {
        return;
    }
    output << "\nchanges of state\n";
    for (const NotedLine &line : facts.changes)
    {
        output << "  " << TimeOfDayText(line.timeUs) << "  " << line.text << '\n';
    }
    if (facts.changesLeftOut != 0)
    {
        output << "  and " << facts.changesLeftOut << " more\n";
    }
}

} // namespace

void WriteSession(std::ostream &output, const SessionFacts &facts, const std::vector<Finding> &findings)
{
    WriteFindings(output, findings);
    WriteModule(output, facts);
    WriteFirstError(output, facts);
    WriteOutputs(output, facts);
    WriteCounts(output, "frames lost, by reason", facts.drops);
    WriteCounts(output, "KS calls that failed",
                facts.ksFailures.empty() ? facts.ksFailuresFromEvents : facts.ksFailures);
    WriteCounts(output, "errors", facts.errors);
    WriteChanges(output, facts);
}

} // namespace tarn_host
