// What differs between the values that a recording shows and those that a replay got.
#pragma once

#include <optional>
#include <string>

#include "tools/recording/Value.h"

namespace tarn_replay
{

struct ValueDifference
{
    std::string what; // for example "sample, attribute {..}"
    std::string expected;
    std::string got;
};

// The first value of the recording that the replay lacks or has otherwise. Attributes are found by their key, other
// values by name and place. What was recorded in part is compared as far as it goes; objects that are not told further,
// and what differs with every run (addresses, ids of work queues, numbers of samples), are not.
std::optional<ValueDifference> FindDifference(tarn_recording::ValueList recorded, tarn_recording::ValueList got);

// One line: numbers, text, the first bytes of a block.
std::string ToText(const tarn_recording::Value &value);

} // namespace tarn_replay
