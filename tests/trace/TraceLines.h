// Collects the lines of the debug sink for as long as it lives.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "trace/DebugTraceSink.h"

namespace tarn_test
{

class TraceLines
{
  public:
    explicit TraceLines(mft_utils::TraceLevel level = mft_utils::TraceLevel::Verbose)
    {
        mft_utils::DebugTraceSink::Instance().SetCallback(
            [](void *context, mft_utils::TraceLevel, const char *line) {
                auto *const self = static_cast<TraceLines *>(context);
                const std::scoped_lock guard(self->lock);
                self->lines.emplace_back(line);
            },
            this, level);
    }
    ~TraceLines() { mft_utils::DebugTraceSink::Instance().SetCallback(nullptr, nullptr); }
    TraceLines(const TraceLines &) = delete;
    TraceLines &operator=(const TraceLines &) = delete;

    // What follows time, thread and level: "function: text" or "event name ...".
    std::vector<std::string> Texts() const
    {
        const std::scoped_lock guard(lock);
        std::vector<std::string> texts;
        for (const std::string &line : lines)
        {
            constexpr std::size_t kHeader = sizeof("00:00:00.000000 ") - 1;
            const std::size_t afterThread = line.find_first_not_of(" 0123456789", kHeader);
            const std::size_t afterLevel = line.find(' ', afterThread);
            texts.push_back(line.substr(line.find_first_not_of(' ', afterLevel)));
        }
        return texts;
    }
    bool Contains(const std::string &part) const
    {
        const std::scoped_lock guard(lock);
        for (const std::string &line : lines)
        {
            if (line.find(part) != std::string::npos)
            {
                return true;
            }
        }
        return false;
    }

    std::vector<std::string> lines; // of one thread: under no lock

  private:
    mutable std::mutex lock;
};

} // namespace tarn_test
