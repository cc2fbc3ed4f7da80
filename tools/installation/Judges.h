// The decisions one by one; docs/check-install-facts.md has their table.
#pragma once

#include "tools/installation/InstallDecisions.h"

namespace tarn_host::judges
{

// System and package.
Outcome Elevated(const InstallFacts &facts);
Outcome Architecture(const InstallFacts &facts);
Outcome Build(const InstallFacts &facts);
Outcome Package(const InstallFacts &facts);
Outcome PackageOne(const InstallFacts &facts);
Outcome PackageVersion(const InstallFacts &facts, std::string_view hostVersion);

// Devices and their interfaces.
Outcome Filters(const InstallFacts &facts);
Outcome Problem(const InstallFacts &facts);
Outcome Driver(const InstallFacts &facts);
Outcome Extension(const InstallFacts &facts);
Outcome Container(const InstallFacts &facts);
Outcome Interfaces(const InstallFacts &facts);
Outcome Value(const InstallFacts &facts);
Outcome ValueClass(const InstallFacts &facts);
Outcome ValueAlone(const InstallFacts &facts);
Outcome Group(const InstallFacts &facts);
Outcome Sensor(const InstallFacts &facts);

// Classes and the files that they name.
Outcome Class(const InstallFacts &facts);
Outcome ClassForm(const InstallFacts &facts);
Outcome ClassLeft(const InstallFacts &facts);
Outcome Class32(const InstallFacts &facts);
Outcome Server(const InstallFacts &facts);
Outcome Threading(const InstallFacts &facts);
Outcome File(const InstallFacts &facts);
Outcome Store(const InstallFacts &facts);
Outcome Machine(const InstallFacts &facts);
Outcome Signature(const InstallFacts &facts);
Outcome Web(const InstallFacts &facts);
Outcome Access(const InstallFacts &facts);

// What runs.
Outcome Services(const InstallFacts &facts);
Outcome Mode(const InstallFacts &facts);
Outcome Consent(const InstallFacts &facts);
Outcome Loaded(const InstallFacts &facts);
Outcome LoadedFile(const InstallFacts &facts);
Outcome Crashes(const InstallFacts &facts);
Outcome Trace(const InstallFacts &facts);

} // namespace tarn_host::judges
