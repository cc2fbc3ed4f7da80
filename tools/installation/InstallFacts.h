// Facts of an installation, as packaging/check-install.ps1 gathers them; docs/check-install-facts.md describes each.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace tarn_host
{

// The text is not a file of facts, or one of another format.
class NotFacts : public std::runtime_error
{
  public:
    using std::runtime_error::runtime_error;
};

struct RegistryValue
{
    std::string type;
    std::vector<std::string> texts; // one, but of a MultiString
    std::optional<std::int64_t> number;
};

struct ClassFacts
{
    std::string clsid;
    std::optional<RegistryValue> server;
    std::string threadingModel;
};

struct InterfaceFacts
{
    std::string category;
    std::string reference;
    bool isEnabled = false;
    std::optional<RegistryValue> transform; // the value of one transform
    std::optional<RegistryValue> chain;     // that of several
    std::optional<RegistryValue> groupId;
};

struct DeviceFacts
{
    std::string instanceId;
    bool isPresent = false;
    std::int64_t problem = 0;
    std::string inf;
    std::string service;
    std::vector<std::string> extensions;
    std::string containerId;
    std::optional<RegistryValue> sensorCameraMode;
    std::optional<RegistryValue> skipCameraEnumeration;
    std::vector<InterfaceFacts> interfaces;
    std::vector<ClassFacts> classes;
};

struct PackageFacts
{
    std::string published;
    std::string version;
};

struct FileFacts
{
    struct Access
    {
        std::string sid;
        bool isAllowed = false;
        std::int64_t rights = 0;
    };

    std::string path;
    bool exists = false;
    std::int64_t machine = 0;
    std::string signature;
    bool isFromWeb = false;
    std::vector<Access> access;
};

struct ServiceFacts
{
    std::string name;
    std::string startMode;
    std::int64_t processId = 0;
};

struct LoadedFacts
{
    std::int64_t processId = 0;
    std::string process;
    std::string path;
};

struct CrashFacts
{
    std::string time;
    std::string code;
    std::string offset;
};

struct SystemFacts
{
    std::optional<std::int64_t> build;
    std::string architecture;
    std::optional<bool> isElevated;
    std::optional<std::int64_t> frameServerMode;
    std::optional<std::int64_t> frameServerMode32;
    std::optional<std::string> cameraConsent;
    std::optional<std::string> traceVariable;
};

// Value. What is missing or of another type than it should be is empty.
struct InstallFacts
{
    std::string time;
    SystemFacts system;
    std::vector<PackageFacts> packages;
    std::vector<DeviceFacts> devices;
    std::vector<ClassFacts> classes;
    std::vector<ClassFacts> classes32;
    std::vector<FileFacts> files;
    std::vector<ServiceFacts> services;
    std::vector<LoadedFacts> loaded;
    std::vector<CrashFacts> crashes;
    std::set<std::string> notGathered; // names of the lists above

    // Throws NotFacts.
    static InstallFacts Parse(std::string_view json);
};

} // namespace tarn_host
