// The summary of a trace or log, for a person.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <vector>

#include "tools/diagnosis/SessionBooks.h"

namespace tarn_host
{

// Confined.
class TraceSummary
{
  public:
    // What belongs together is read one after the other, the older file first.
    void Read(std::istream &stream);

    // Once, after the last file: a block for each time that a process had the module loaded. Those with something
    // wrong come first. False when something is wrong.
    bool Write(std::ostream &output);

    std::uint64_t Records() const noexcept
    {
        return records;
    }

  private:
    std::map<std::uint32_t, SessionBooks> open; // by process
    std::vector<SessionFacts> closed;
    std::int64_t lastUs = 0; // of the last file
    std::uint64_t records = 0;
    std::uint64_t skipped = 0;
};

} // namespace tarn_host
