// One session of a trace, as text.
#pragma once

#include <iosfwd>
#include <vector>

#include "tools/diagnosis/Findings.h"

namespace tarn_host
{

// What is wrong comes first, then the module, the first error with what led to it, outputs, counts and changes.
void WriteSession(std::ostream &output, const SessionFacts &facts, const std::vector<Finding> &findings);

} // namespace tarn_host
