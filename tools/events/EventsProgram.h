// What "events" does, for every program that offers it.
#pragma once

#include <iosfwd>
#include <stdexcept>
#include <string>
#include <vector>

#include "tools/events/Timeline.h"

namespace CLI
{
class App;
}

namespace tarn_host
{

// A file or an option that cannot be used; one line.
class EventsInputError : public std::runtime_error
{
  public:
    using std::runtime_error::runtime_error;
};

// Options are given by the command line; confined.
class EventsProgram
{
  public:
    void AddOptions(CLI::App &app);
    // 0, or 1 when recordings that are compared differ. Throws EventsInputError.
    int Run(std::ostream &output);

  private:
    RecordFilter ReadFilter() const;
    void WriteSummaries(const std::vector<RecordedSession> &sessions, std::ostream &output) const;
    void WriteLists(const std::vector<RecordedSession> &sessions, std::ostream &output) const;
    void WriteTrace(const std::vector<RecordedSession> &sessions, std::ostream &output) const;
    void WriteFrames(const std::vector<RecordedSession> &sessions, std::ostream &output) const;
    int Compare(const std::vector<RecordedSession> &sessions, std::ostream &output) const;

    std::vector<std::string> files;
    std::vector<std::string> compareFiles;
    std::string traceFile;
    std::string framesFolder;
    bool list = false;
    bool json = false;
    RecordFilter filter;
    std::vector<std::uint32_t> threads;
    std::vector<std::uint32_t> transforms;
    std::vector<std::string> kinds;
};

} // namespace tarn_host
