// Collects the lines of the debug sink for as long as it lives.
#pragma once

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
                static_cast<TraceLines *>(context)->lines.emplace_back(line);
            },
            this, level);
    }
    ~TraceLines()
    {
        mft_utils::DebugTraceSink::Instance().SetCallback(nullptr, nullptr);
    }
    TraceLines(const TraceLines &) = delete;
    TraceLines &operator=(const TraceLines &) = delete;

    // What follows time, thread and level: "function: text" or "event name ...".
    std::vector<std::string> Texts() const
    {
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

    std::vector<std::string> lines;
};

} // namespace tarn_test
