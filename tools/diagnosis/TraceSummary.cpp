#include "tools/diagnosis/TraceSummary.h"

#include <algorithm>
#include <ostream>

#include "tools/diagnosis/Findings.h"
#include "tools/diagnosis/LogFile.h"
#include "tools/diagnosis/SessionReport.h"

namespace tarn_host
{

namespace
{
constexpr std::size_t kMostSessions = 200;   // that are kept
constexpr std::size_t kMostSessionsTold = 5; // in full
constexpr std::size_t kMostProcessesAtOnce = 64;

bool IsWrong(const std::vector<Finding> &findings)
{
    return !findings.empty() && findings.front().severity == Severity::Wrong;
}
} // namespace

void TraceSummary::Read(std::istream &stream)
{
    LogFile file(stream, lastUs);
    std::uint32_t process = 0;
    for (LogRecord record; file.Next(record);)
    {
        ++records;
        lastUs = record.timeUs;
        process = record.process == 0 ? process : record.process; // a note on lost lines has none
        if (!open.contains(process) && open.size() >= kMostProcessesAtOnce)
        {
            ++skipped;
            continue;
        }
        SessionBooks &books = open[process];
        if (books.IsFollowedBy(record))
        {
            closed.push_back(books.Close());
            closed.erase(closed.begin(),
                         closed.end() - static_cast<std::ptrdiff_t>(std::min(closed.size(), kMostSessions)));
            books = {};
        }
        books.Take(record);
    }
    skipped += file.Skipped();
}

bool TraceSummary::Write(std::ostream &output)
{
    for (auto &[process, books] : open)
    {
        closed.push_back(books.Close());
    }
    open.clear();
    std::vector<std::pair<SessionFacts, std::vector<Finding>>> sessions;
    for (SessionFacts &facts : closed)
    {
        std::vector<Finding> findings = FindingsOf(facts);
        sessions.emplace_back(std::move(facts), std::move(findings));
    }
    closed.clear();
    // The latest ones matter most.
    std::stable_sort(sessions.begin(), sessions.end(), [](const auto &a, const auto &b) {
        return IsWrong(a.second) != IsWrong(b.second) ? IsWrong(a.second) : a.first.lastUs > b.first.lastUs;
    });
    for (std::size_t i = 0; i < std::min(sessions.size(), kMostSessionsTold); ++i)
    {
        output << (i == 0 ? "" : "\n");
        WriteSession(output, sessions[i].first, sessions[i].second);
    }
    output << '\n' << records << " records of " << sessions.size() << " sessions";
    if (sessions.size() > kMostSessionsTold)
    {
        output << ", " << sessions.size() - kMostSessionsTold << " not shown";
    }
    output << (skipped == 0 ? "" : ", " + std::to_string(skipped) + " lines or events of others, or damaged") << '\n';
    return sessions.empty() || !IsWrong(sessions.front().second);
}

} // namespace tarn_host
