// The verdicts on an installation as a table for people.
#pragma once

#include <iosfwd>
#include <vector>

#include "tools/installation/InstallDecisions.h"

namespace tarn_host
{

// The first thing that is wrong, then every row. False when something is wrong.
bool WriteInstallReport(std::ostream &output, const std::vector<Judgement> &judgements);

} // namespace tarn_host
