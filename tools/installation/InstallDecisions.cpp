#include "tools/installation/InstallDecisions.h"

#include <array>

#include "tools/installation/FactQueries.h"
#include "tools/installation/Judges.h"

namespace tarn_host
{

namespace
{

struct Decision
{
    std::string_view row;
    std::string_view fact; // of the list or member that it looks at first
    Outcome (*judge)(const InstallFacts &);
    std::string_view says; // when it does not hold
    std::string_view todo;
};

constexpr std::string_view kReinstall = "reinstall: install.cmd";
constexpr std::string_view kEditors = "reinstall; look for software that edits the value";

// Null: the one that looks at this tool's version.
constexpr auto kDecisions = std::to_array<Decision>({
    {"elevated", "system", judges::Elevated, "processes of services could not be looked into",
     "run check-install.ps1 from an elevated prompt"},
    {"architecture", "system", judges::Architecture, "only x64 is built", "-"},
    {"build", "system", judges::Build, "Windows is older than version 1709", "update Windows"},
    {"package", "packages", judges::Package, "the package is not in the driver store", "install.cmd"},
    {"package-one", "packages", judges::PackageOne, "several versions: date, then version wins, per extension id",
     "install.cmd /uninstall, then install.cmd"},
    {"package-version", "packages", nullptr, "another version than this tool's", "take both from one release"},
    {"filters", "devices", judges::Filters, "the filter is missing: not plugged in, other hardware id, or blocked",
     "device manager; check-install.ps1 -HardwareId"},
    {"problem", "devices", judges::Problem, "the device does not start", "device manager, setupapi.dev.log"},
    {"driver", "devices", judges::Driver, "the filter does not run on the inbox driver", "remove the other driver"},
    {"extension", "devices", judges::Extension, "the package was not applied to this filter",
     "hardware id and build decoration: setupapi.dev.log"},
    {"container", "devices", judges::Container, "Windows takes the filters for two cameras",
     "firmware: container id descriptor"},
    {"interfaces", "devices", judges::Interfaces, "category is missing or off",
     "pnputil /restart-device; INF section .Interfaces"},
    {"value", "devices", judges::Value, "no transform is named, or two values are (the chain then wins)", kEditors},
    {"value-class", "devices", judges::ValueClass, "another transform is named", kEditors},
    {"value-alone", "devices", judges::ValueAlone, "another transform is in the chain", "compare without it"},
    {"group", "devices", judges::Group, "applications see two cameras", kReinstall},
    {"sensor", "devices", judges::Sensor, "the depth filter shows up as a webcam", "reinstall; INF section .HW"},
    {"class", "classes", judges::Class, "the class is not registered in the way of this build, or where is not known",
     "reinstall; on build 26100 and later start the Camera app and run again"},
    {"class-form", "classes", judges::ClassForm, "registered in the form of newer builds, which this one does not read",
     "INF: decoration for this build"},
    {"class-left", "classes", judges::ClassLeft, "left over from regsvr32", "regsvr32 /u of that file"},
    {"class-32", "classes32", judges::Class32, "a 32-bit registration: there is no 32-bit module", "remove it"},
    {"server", "classes", judges::Server, "the class names no file that can be loaded",
     "INF: flags 0x00020000, no quotes in the value"},
    {"threading", "classes", judges::Threading, "other threading model", kReinstall},
    {"file", "files", judges::File, "the class names a file that is gone", "reinstall, or regsvr32 again"},
    {"store", "files", judges::Store, "a development registration", "regsvr32 /u, reinstall"},
    {"machine", "files", judges::Machine, "not an x64 DLL", "-"},
    {"signature", "files", judges::Signature, "changed after signing, not signed, or not trusted",
     "reinstall; certificate into Root and TrustedPublisher"},
    {"web", "files", judges::Web, "marked as downloaded: the service refuses it", "Unblock-File"},
    {"access", "files", judges::Access, "the camera service may not read the file", "icacls FILE /grant *S-1-5-19:RX"},
    {"services", "services", judges::Services, "the camera service is missing or disabled",
     "sc config FrameServer start= demand"},
    {"mode", "system", judges::Mode, "applications load the camera in process", "delete EnableFrameServerMode"},
    {"consent", "system", judges::Consent, "camera access is off for this machine", "Settings, Privacy, Camera"},
    {"loaded", "loaded", judges::Loaded, "the camera service has not loaded it",
     "start the Camera app, run again; an application that has it loads it in process"},
    {"loaded-file", "loaded", judges::LoadedFile, "the service still runs another file",
     "net stop FrameServerMonitor, net stop FrameServer"},
    {"crashes", "crashes", judges::Crashes, "the module crashed", "dump and symbols: docs/troubleshooting.md"},
    {"trace", "system", judges::Trace, "the text log is on: it costs time on every frame",
     "remove TARN_TRACE, restart the services"},
});

} // namespace

std::vector<Judgement> Decide(const InstallFacts &facts, std::string_view hostVersion)
{
    std::vector<Judgement> judgements;
    for (const Decision &decision : kDecisions)
    {
        if (facts.notGathered.contains(std::string(decision.fact)))
        {
            judgements.push_back({decision.row, Verdict::Unknown,
                                  "could not be gathered, \"errors\" of the file says why",
                                  "run check-install.ps1 from an elevated prompt"});
            continue;
        }
        const Outcome outcome =
            decision.judge == nullptr ? judges::PackageVersion(facts, hostVersion) : decision.judge(facts);
        const bool holds = outcome.verdict == Verdict::Ok || outcome.verdict == Verdict::Skipped;
        const std::string found = outcome.found.empty() ? std::string() : " (" + outcome.found + ")";
        judgements.push_back({decision.row, outcome.verdict, holds ? std::string() : std::string(decision.says) + found,
                              holds ? std::string_view() : decision.todo});
    }
    return judgements;
}

} // namespace tarn_host
