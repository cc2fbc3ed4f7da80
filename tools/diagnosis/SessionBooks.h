// Keeps the facts of one process while its records are read.
#pragma once

#include <deque>

#include "tools/diagnosis/LogRecord.h"
#include "tools/diagnosis/SessionFacts.h"

namespace tarn_host
{

// What it keeps is bounded, however long the log is. Confined.
class SessionBooks
{
  public:
    void Take(const LogRecord &record);
    // Once, after the last record.
    SessionFacts Close();

    // Whether this record tells that the module was loaded anew, so that another session begins.
    bool IsFollowedBy(const LogRecord &record) const;

  private:
    void TakeFrame(const LogRecord &record);
    void TakeOutputMessage(const LogRecord &record);
    void TakeChange(const LogRecord &record);
    void TakeDrop(const LogRecord &record);
    void TakeKsResult(const LogRecord &record);
    void TakeError(const LogRecord &record);
    void StartOutput(OutputFacts &output, std::int64_t timeUs) const;
    void EndRun(OutputFacts &output, std::int64_t timeUs) const;
    OutputFacts *Output(const std::string &name);

    SessionFacts facts;
    std::deque<NotedLine> lately; // what went before an error
    std::uint32_t threadOfError = 0;
    std::uint64_t refusedSinceStart = 0; // as the module counts
};

} // namespace tarn_host
