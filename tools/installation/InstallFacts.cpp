#include "tools/installation/InstallFacts.h"

#include <nlohmann/json.hpp>

#include <type_traits>

namespace tarn_host
{

namespace
{

using Json = nlohmann::json;

// Null when there is none.
const Json &Member(const Json &object, const char *name)
{
    static const Json none;
    const auto found = object.is_object() ? object.find(name) : object.end();
    return !object.is_object() || found == object.end() ? none : *found;
}

void Read(const Json &json, std::string &text)
{
    text = json.is_string() ? json.get<std::string>() : std::string();
}
void Read(const Json &json, bool &flag)
{
    flag = json.is_boolean() && json.get<bool>();
}
void Read(const Json &json, std::int64_t &number)
{
    number = json.is_number_integer() ? json.get<std::int64_t>() : 0;
}

// Declared for the templates below.
void Read(const Json &json, RegistryValue &value);
void Read(const Json &json, ClassFacts &facts);
void Read(const Json &json, InterfaceFacts &facts);
void Read(const Json &json, DeviceFacts &facts);
void Read(const Json &json, PackageFacts &facts);
void Read(const Json &json, FileFacts &facts);
void Read(const Json &json, FileFacts::Access &access);
void Read(const Json &json, ServiceFacts &facts);
void Read(const Json &json, LoadedFacts &facts);
void Read(const Json &json, CrashFacts &facts);
void Read(const Json &json, SystemFacts &facts);

template <class Value>
void Read(const Json &json, std::optional<Value> &value)
{
    const bool fits = std::is_same_v<Value, std::string>    ? json.is_string()
                      : std::is_same_v<Value, bool>         ? json.is_boolean()
                      : std::is_same_v<Value, std::int64_t> ? json.is_number_integer()
                                                            : json.is_object();
    value.reset();
    if (fits)
    {
        Read(json, value.emplace());
    }
}

// A list of one may come as that one.
template <class Value>
void Read(const Json &json, std::vector<Value> &list)
{
    for (const Json &entry : json.is_array() ? json : Json::array({json}))
    {
        if (!entry.is_null())
        {
            Read(entry, list.emplace_back());
        }
    }
}

template <class Value>
void Read(const Json &object, const char *name, Value &value)
{
    Read(Member(object, name), value);
}

void Read(const Json &json, RegistryValue &value)
{
    Read(json, "type", value.type);
    Read(json, "data", value.number);
    if (!value.number)
    {
        Read(json, "data", value.texts);
    }
}

void Read(const Json &json, ClassFacts &facts)
{
    Read(json, "clsid", facts.clsid);
    Read(json, "server", facts.server);
    Read(json, "threadingModel", facts.threadingModel);
}

void Read(const Json &json, InterfaceFacts &facts)
{
    Read(json, "category", facts.category);
    Read(json, "reference", facts.reference);
    Read(json, "enabled", facts.isEnabled);
    const Json &values = Member(json, "values");
    Read(values, "CameraDeviceMftClsid", facts.transform);
    Read(values, "CameraDeviceMftCLSIDChain", facts.chain);
    Read(values, "FSSensorGroupId", facts.groupId);
}

void Read(const Json &json, DeviceFacts &facts)
{
    Read(json, "instanceId", facts.instanceId);
    Read(json, "present", facts.isPresent);
    Read(json, "problem", facts.problem);
    Read(json, "inf", facts.inf);
    Read(json, "service", facts.service);
    Read(json, "extensions", facts.extensions);
    Read(json, "containerId", facts.containerId);
    const Json &hardware = Member(json, "hardware");
    Read(hardware, "SensorCameraMode", facts.sensorCameraMode);
    Read(hardware, "SkipCameraEnumeration", facts.skipCameraEnumeration);
    Read(json, "interfaces", facts.interfaces);
    Read(json, "classes", facts.classes);
}

void Read(const Json &json, PackageFacts &facts)
{
    Read(json, "published", facts.published);
    Read(json, "version", facts.version);
}

void Read(const Json &json, FileFacts::Access &access)
{
    Read(json, "sid", access.sid);
    Read(json, "allow", access.isAllowed);
    Read(json, "rights", access.rights);
}

void Read(const Json &json, FileFacts &facts)
{
    Read(json, "path", facts.path);
    Read(json, "exists", facts.exists);
    Read(json, "machine", facts.machine);
    Read(json, "signature", facts.signature);
    Read(json, "fromWeb", facts.isFromWeb);
    Read(json, "access", facts.access);
}

void Read(const Json &json, ServiceFacts &facts)
{
    Read(json, "name", facts.name);
    Read(json, "startMode", facts.startMode);
    Read(json, "processId", facts.processId);
}

void Read(const Json &json, LoadedFacts &facts)
{
    Read(json, "processId", facts.processId);
    Read(json, "process", facts.process);
    Read(json, "path", facts.path);
}

void Read(const Json &json, CrashFacts &facts)
{
    Read(json, "time", facts.time);
    Read(json, "code", facts.code);
    Read(json, "offset", facts.offset);
}

void Read(const Json &json, SystemFacts &facts)
{
    Read(json, "build", facts.build);
    Read(json, "architecture", facts.architecture);
    Read(json, "elevated", facts.isElevated);
    Read(json, "frameServerMode", facts.frameServerMode);
    Read(json, "frameServerMode32", facts.frameServerMode32);
    Read(json, "cameraConsent", facts.cameraConsent);
    Read(json, "traceVariable", facts.traceVariable);
}

} // namespace

InstallFacts InstallFacts::Parse(std::string_view json)
{
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    json.remove_prefix(json.starts_with(kMark) ? kMark.size() : 0);
    const Json root = Json::parse(json, nullptr, false);
    std::int64_t format = 0;
    Read(root, "format", format);
    if (format != 1)
    {
        throw NotFacts(root.is_object() ? "facts of another format than 1: take script and tool from one release"
                                        : "not a file of facts");
    }
    InstallFacts facts;
    Read(root, "time", facts.time);
    Read(root, "system", facts.system);
    Read(root, "packages", facts.packages);
    Read(root, "devices", facts.devices);
    Read(root, "classes", facts.classes);
    Read(root, "classes32", facts.classes32);
    Read(root, "files", facts.files);
    Read(root, "services", facts.services);
    Read(root, "loaded", facts.loaded);
    Read(root, "crashes", facts.crashes);
    for (const Json &error : Member(root, "errors").is_array() ? Member(root, "errors") : Json::array())
    {
        std::string fact;
        Read(error, "fact", fact);
        facts.notGathered.insert(fact);
    }
    return facts;
}

} // namespace tarn_host
