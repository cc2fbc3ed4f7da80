// One event of a trace that was turned into XML, in the form of the platform's event schema.
#pragma once

#include <string_view>

#include "tools/diagnosis/LogRecord.h"

namespace tarn_host
{

// From "<Event" to "</Event>". False when it is not one of the module, or tells no time.
bool ReadXmlEvent(std::string_view xml, LogRecord &record);

} // namespace tarn_host
