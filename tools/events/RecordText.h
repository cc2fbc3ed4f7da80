// A record in one line, and as JSON.
#pragma once

#include <string>

#include <nlohmann/json_fwd.hpp>

#include "tools/events/RecordViews.h"

namespace tarn_host
{

// What happened: "ProcessInput  stream 0, sample #12 at 100.000 ms, 614400 bytes". Without time, thread and number.
std::string RecordText(const RecordedSession &session, const Record &record);
// Of a call: what was called with which arguments.
std::string CallLine(const RecordedSession &session, const Record &call);
// The values alone, by name.
std::string ValuesText(const ValueList &values);
// The result of a return: "S_OK", "MF_E_SHUTDOWN (0xC00D3E85)".
std::string EndText(const Record &end);
// "stream"; of an attribute its key.
std::string ValueNameText(const Value &value);
nlohmann::ordered_json RecordJson(const RecordedSession &session, const Record &record);

// Of a KS call or its return, without whom it addresses.
std::string KsText(const RecordedSession &session, const Record &record);
// Of a record's call, event or KS request: what a table of calls counts under. Empty for other records.
std::string SubjectText(const RecordedSession &session, const Record &record);

} // namespace tarn_host
