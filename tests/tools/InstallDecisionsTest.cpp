#include "tools/installation/InstallDecisions.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <sstream>

#include "tools/installation/InstallReport.h"

namespace
{

using nlohmann::json;
using tarn_host::Decide;
using tarn_host::InstallFacts;
using tarn_host::Judgement;
using tarn_host::Verdict;

constexpr char kFile[] = R"(C:\Windows\System32\DriverStore\FileRepository\tarn.inf_amd64_1\tarn_dmft.dll)";
constexpr char kDepthClass[] = "{7F9DF308-0F2D-432E-8C8E-D36ED8F12C90}";
constexpr char kColorClass[] = "{01BC2102-6449-429F-8F62-B8D23D1DE6D3}";

json Value(const char *type, json data)
{
    return {{"type", type}, {"data", std::move(data)}};
}

json Class(const char *clsid)
{
    return {{"clsid", clsid}, {"server", Value("ExpandString", kFile)}, {"threadingModel", "Both"}};
}

json Device(const std::string &pin, const char *clsid)
{
    json interfaces = json::array();
    for (const char *const category :
         {"{e5323777-f976-4f5b-9b55-b94699c46e44}", "{65E8773D-8F56-11D0-A3B9-00A0C9223196}",
          "{6994AD05-93EF-11D0-A3CC-00A0C9223196}", "{24E552D7-6523-47F7-A647-D3465BF1F5CA}"})
    {
        interfaces.push_back({{"category", category},
                              {"reference", "GLOBAL"},
                              {"enabled", true},
                              {"values",
                               {{"CameraDeviceMftClsid", Value("String", clsid)},
                                {"CameraDeviceMftCLSIDChain", nullptr},
                                {"FSSensorGroupId", Value("String", "{11111111-2222-3333-4444-555555555555}")}}}});
    }
    return {{"instanceId", "USB\\VID_1234&PID_5678&MI_" + pin + "\\7&0&0"},
            {"present", true},
            {"problem", 0},
            {"inf", "usbvideo.inf"},
            {"service", "usbvideo"},
            {"extensions", {"oem42.inf:USB\\VID_1234&PID_5678&MI_" + pin + ",X"}},
            {"containerId", "5c6d7e8f"},
            {"hardware", {{"SensorCameraMode", Value("DWord", 1)}, {"SkipCameraEnumeration", Value("DWord", 1)}}},
            {"interfaces", interfaces},
            {"classes", json::array()}};
}

// An installation that holds, as builds of each generation have it.
json Healthy(char generation)
{
    json facts = {{"format", 1},
                  {"time", "2026-11-21T09:15:02Z"},
                  {"system",
                   {{"build", generation == 'A'   ? 19045
                              : generation == 'B' ? 25398
                                                  : 26100},
                    {"architecture", "AMD64"},
                    {"elevated", true},
                    {"frameServerMode", nullptr},
                    {"cameraConsent", "Allow"},
                    {"traceVariable", nullptr}}},
                  {"packages", {{{"published", "oem42.inf"}, {"version", "0.1.0.0"}}}},
                  {"devices", {Device("00", kDepthClass), Device("02", kColorClass)}},
                  {"classes", json::array()},
                  {"classes32", json::array()},
                  {"files",
                   {{{"path", kFile},
                     {"exists", true},
                     {"machine", 34404},
                     {"signature", "Valid"},
                     {"fromWeb", false},
                     {"access", {{{"sid", "S-1-5-32-545"}, {"allow", true}, {"rights", 1179817}}}}}}},
                  {"services",
                   {{{"name", "FrameServer"}, {"startMode", "Manual"}, {"processId", 4321}},
                    {{"name", "FrameServerMonitor"}, {"startMode", "Manual"}, {"processId", 0}}}},
                  {"loaded", {{{"processId", 4321}, {"process", "svchost"}, {"path", kFile}}}},
                  {"crashes", json::array()},
                  {"errors", json::array()}};
    if (generation == 'A')
    {
        facts["classes"] = {Class(kDepthClass), Class(kColorClass)};
    }
    if (generation == 'B')
    {
        facts["devices"][0]["classes"] = json::array({Class(kDepthClass)});
        facts["devices"][1]["classes"] = json::array({Class(kColorClass)});
    }
    return facts;
}

std::vector<Judgement> Judge(const json &facts)
{
    return Decide(InstallFacts::Parse(facts.dump()), "0.1.0");
}

TEST(InstallDecisionsTest, WhatHoldsIsFoundToHoldInEachGeneration)
{
    for (const char generation : {'A', 'B', 'C'})
    {
        for (const Judgement &one : Judge(Healthy(generation)))
        {
            EXPECT_LE(one.verdict, Verdict::Skipped) << generation << ' ' << one.row << ": " << one.says;
            EXPECT_TRUE(one.verdict == Verdict::Ok || generation == 'C') << generation << ' ' << one.row;
        }
    }
}

// Where the facts change, the new value (null stands for a fact that is missing), and the row that says so.
struct Fault
{
    const char *row;
    char generation;
    const char *where;
    const char *value;
    Verdict verdict;
};

constexpr char kDenied[] =
    R"([{"sid":"S-1-1-0","allow":true,"rights":2032127},{"sid":"S-1-5-19","allow":false,"rights":33}])";

constexpr Fault kFaults[] = {
    {"elevated", 'C', "/system/elevated", "false", Verdict::Unknown},
    {"architecture", 'C', "/system/architecture", "\"ARM64\"", Verdict::Wrong},
    {"build", 'A', "/system/build", "15063", Verdict::Wrong},
    {"build", 'A', "/system", "null", Verdict::Unknown},
    {"package", 'C', "/packages", "[]", Verdict::Advice},
    {"package-one", 'C', "/packages/1", R"({"published":"oem43.inf","version":"0.2.0.0"})", Verdict::Advice},
    {"package-version", 'C', "/packages/0/version", "\"0.1.1.0\"", Verdict::Advice},
    {"filters", 'C', "/devices/1/present", "false", Verdict::Wrong},
    {"filters", 'C', "/errors/0", R"({"fact":"devices","message":"x"})", Verdict::Unknown},
    {"problem", 'C', "/devices/1/problem", "39", Verdict::Wrong},
    {"driver", 'C', "/devices/0/service", "\"other\"", Verdict::Wrong},
    {"extension", 'C', "/devices/0/extensions", "[]", Verdict::Wrong},
    {"container", 'C', "/devices/1/containerId", "\"x\"", Verdict::Wrong},
    {"interfaces", 'C', "/devices/0/interfaces/3/enabled", "false", Verdict::Wrong},
    {"interfaces", 'C', "/devices/1/interfaces/0/reference", "\"\"", Verdict::Wrong},
    {"value", 'C', "/devices/0/interfaces/0/values/CameraDeviceMftClsid", "null", Verdict::Wrong},
    {"value", 'C', "/devices/0/interfaces/0/values/CameraDeviceMftClsid/type", "\"DWord\"", Verdict::Wrong},
    {"value", 'C', "/devices/0/interfaces/0/values/CameraDeviceMftCLSIDChain",
     R"({"type":"MultiString","data":["{7F9DF308-0F2D-432E-8C8E-D36ED8F12C90}"]})", Verdict::Advice},
    {"value-class", 'C', "/devices/1/interfaces/2/values/CameraDeviceMftClsid/data",
     "\"{7F9DF308-0F2D-432E-8C8E-D36ED8F12C90}\"", Verdict::Wrong},
    {"value-alone", 'C', "/devices/1/interfaces/2/values/CameraDeviceMftCLSIDChain",
     R"({"type":"MultiString","data":["{01bc2102-6449-429f-8f62-b8d23d1de6d3}","{0}"]})", Verdict::Advice},
    {"group", 'C', "/devices/1/interfaces/2/values/FSSensorGroupId/data", "\"{x}\"", Verdict::Wrong},
    {"sensor", 'C', "/devices/0/hardware/SkipCameraEnumeration", "null", Verdict::Wrong},
    {"class", 'A', "/classes/1", "null", Verdict::Wrong},
    {"class", 'B', "/devices/0/classes", "[]", Verdict::Wrong},
    {"class", 'C', "/loaded", "[]", Verdict::Unknown},
    {"class-form", 'B', "/system/build", "19045", Verdict::Wrong},
    {"class-left", 'A', "/system/build", "26100", Verdict::Advice},
    {"class-32", 'A', "/classes32/0", R"({"clsid":"{x}"})", Verdict::Advice},
    {"server", 'A', "/classes/0/server", "null", Verdict::Wrong},
    {"server", 'B', "/devices/0/classes/0/server/data", R"("\"C:\\tarn_dmft.dll\"")", Verdict::Wrong},
    {"server", 'A', "/classes/0/server/type", "\"None\"", Verdict::Wrong},
    {"threading", 'B', "/devices/1/classes/0/threadingModel", "\"Apartment\"", Verdict::Wrong},
    {"file", 'A', "/files/0/exists", "false", Verdict::Wrong},
    {"file", 'A', "/files", "[]", Verdict::Unknown},
    {"machine", 'A', "/files/0/machine", "332", Verdict::Wrong},
    {"signature", 'A', "/files/0/signature", "\"HashMismatch\"", Verdict::Wrong},
    {"signature", 'C', "/files/0/signature", "\"NotSigned\"", Verdict::Advice},
    {"web", 'C', "/files/0/fromWeb", "true", Verdict::Wrong},
    {"access", 'A', "/files/0/access/0/rights", "1", Verdict::Wrong},
    {"access", 'C', "/files/0/access", kDenied, Verdict::Wrong},
    {"services", 'C', "/services/1/startMode", "\"Disabled\"", Verdict::Wrong},
    {"mode", 'C', "/system/frameServerMode32", "0", Verdict::Wrong},
    {"consent", 'C', "/system/cameraConsent", "\"Deny\"", Verdict::Wrong},
    {"loaded", 'C', "/loaded/0/processId", "77", Verdict::Advice},
    {"loaded-file", 'A', "/loaded/0/path", R"("C:\\old\\tarn_dmft.dll")", Verdict::Wrong},
    {"crashes", 'C', "/crashes/0", R"({"time":"2026-11-20T17:03:11Z","code":"c0000374","offset":"12"})",
     Verdict::Wrong},
    {"crashes", 'C', "/crashes/0", R"({"time":"2026-10-20T17:03:11Z","code":"c0000005","offset":"12"})",
     Verdict::Advice},
    {"trace", 'C', "/system/traceVariable", "\"8\"", Verdict::Advice},
};

TEST(InstallDecisionsTest, EachFaultIsFoundByItsRow)
{
    for (const Fault &fault : kFaults)
    {
        json facts = Healthy(fault.generation);
        facts[json::json_pointer(fault.where)] = json::parse(fault.value);
        const auto judgements = Judge(facts);
        const auto row = std::find_if(judgements.begin(), judgements.end(),
                                      [&](const Judgement &one) { return one.row == fault.row; });
        ASSERT_NE(judgements.end(), row) << fault.row;
        EXPECT_EQ(fault.verdict, row->verdict) << fault.row << ' ' << fault.where << ' ' << fault.value;
        std::ostringstream text;
        EXPECT_EQ(fault.verdict != Verdict::Wrong, tarn_host::WriteInstallReport(text, judgements)) << text.str();
        EXPECT_NE(std::string::npos, text.str().find(row->says)) << text.str();
    }
}

TEST(InstallDecisionsTest, FactsOfADevelopmentMachineAndDamagedOnesAreJudgedToo)
{
    json facts = Healthy('A');
    for (json &one : facts["classes"])
    {
        one["server"]["data"] = R"(%SystemDrive%\tarn\tarn_dmft.dll)";
    }
    facts["files"][0]["path"] = R"(C:\Tarn\tarn_dmft.dll)";
    facts["loaded"][0]["path"] = R"(c:\tarn\TARN_DMFT.dll)";
    std::vector<std::string_view> advised;
    for (const Judgement &one : Judge(facts))
    {
        EXPECT_LE(one.verdict, Verdict::Advice) << one.row << ": " << one.says;
        if (one.verdict == Verdict::Advice)
        {
            advised.push_back(one.row);
        }
    }
    EXPECT_EQ(std::vector<std::string_view>{"store"}, advised);

    for (const char *const text : {"", "[]", "{\"format\":2}", "{\"format\":\"1\"}", "{"})
    {
        EXPECT_THROW(InstallFacts::Parse(text), tarn_host::NotFacts) << text;
    }
    // Any member of another type.
    const char *const others[] = {"null", "-1", "\"\"", "[1]", "{}", "true"};
    std::size_t next = 0;
    const json healthy = Healthy('A');
    const json members = healthy.flatten();
    for (const auto &[where, value] : members.items())
    {
        json damaged = healthy;
        damaged[json::json_pointer(where)] = json::parse(others[next++ % std::size(others)]);
        if (damaged["format"] == 1)
        {
            EXPECT_EQ(Judge(healthy).size(), Judge(damaged).size()) << where;
        }
    }
}

} // namespace
