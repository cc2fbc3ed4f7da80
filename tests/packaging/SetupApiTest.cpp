// The generated INF files through the platform's own reader: they open, and their sections write what is expected.
#include <windows.h>

#include <setupapi.h>

#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace
{

constexpr wchar_t kScratchKey[] = L"Software\\TarnSetupApiTest";

struct Value
{
    DWORD type = REG_NONE;
    std::wstring text; // of a number its digits
};
using Values = std::map<std::wstring, Value>; // by "key\\name"

Value ReadValue(HKEY key, const std::wstring &name)
{
    DWORD type = REG_NONE;
    std::vector<wchar_t> buffer(512);
    auto size = static_cast<DWORD>(buffer.size() * sizeof(wchar_t));
    if (RegQueryValueExW(key, name.c_str(), nullptr, &type, reinterpret_cast<BYTE *>(buffer.data()), &size) !=
        ERROR_SUCCESS)
    {
        return {};
    }
    if (type == REG_DWORD)
    {
        return {type, std::to_wstring(*reinterpret_cast<const DWORD *>(buffer.data()))};
    }
    return {type, buffer.data()};
}

void ReadTree(HKEY key, const std::wstring &path, Values &values)
{
    std::wstring name(256, L'\0');
    auto length = static_cast<DWORD>(name.size());
    for (DWORD index = 0;
         RegEnumValueW(key, index, name.data(), &length, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
         ++index, length = static_cast<DWORD>(name.size()))
    {
        values[path + name.c_str()] = ReadValue(key, name.c_str());
    }
    length = static_cast<DWORD>(name.size());
    for (DWORD index = 0;
         RegEnumKeyExW(key, index, name.data(), &length, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
         ++index, length = static_cast<DWORD>(name.size()))
    {
        HKEY child = nullptr;
        ASSERT_EQ(RegOpenKeyExW(key, name.c_str(), 0, KEY_READ, &child), ERROR_SUCCESS);
        ReadTree(child, path + name.c_str() + L"\\", values);
        RegCloseKey(child);
    }
}

// The parameter names the kind of INF.
class SetupApiTest : public testing::TestWithParam<const char *>
{
  protected:
    void SetUp() override
    {
        const char *const folder = std::getenv("TARN_INF_DIR");
        ASSERT_NE(folder, nullptr);
        const std::string path = std::string(folder) + "\\" + GetParam() + "\\tarn.inf";
        UINT line = 0;
        inf = SetupOpenInfFileW(std::wstring(path.begin(), path.end()).c_str(), nullptr, INF_STYLE_WIN4, &line);
        ASSERT_NE(inf, INVALID_HANDLE_VALUE) << path << " line " << line << " error " << std::hex << GetLastError();
    }

    void TearDown() override
    {
        SetupCloseInfFile(inf);
    }

    // What the section's AddReg writes; an empty key stands in for the device's key and for the class root.
    Values Install(const std::wstring &section)
    {
        HKEY scratch = nullptr;
        EXPECT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, kScratchKey, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
                                  nullptr, &scratch, nullptr),
                  ERROR_SUCCESS);
        EXPECT_EQ(RegOverridePredefKey(HKEY_CLASSES_ROOT, scratch), ERROR_SUCCESS);
        EXPECT_TRUE(SetupInstallFromInfSectionW(nullptr, inf, section.c_str(), SPINST_REGISTRY, scratch, nullptr, 0,
                                                nullptr, nullptr, nullptr, nullptr));
        RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr);
        Values values;
        ReadTree(scratch, L"", values);
        RegCloseKey(scratch);
        RegDeleteTreeW(HKEY_CURRENT_USER, kScratchKey);
        return values;
    }

    // A field of the first line with that key, tokens replaced.
    std::wstring Field(const std::wstring &section, const wchar_t *key, DWORD index)
    {
        INFCONTEXT line{};
        std::wstring text(260, L'\0');
        DWORD size = 0;
        if (!SetupFindFirstLineW(inf, section.c_str(), key, &line) ||
            !SetupGetStringFieldW(&line, index, text.data(), static_cast<DWORD>(text.size()), &size))
        {
            return L"";
        }
        return text.c_str();
    }

    HINF inf = INVALID_HANDLE_VALUE;
};

struct Filter
{
    const wchar_t *name;
    const wchar_t *clsid;
    const wchar_t *description;
};
constexpr Filter kFilters[] = {
    {L"Depth", L"{7F9DF308-0F2D-432E-8C8E-D36ED8F12C90}", L"Tarn Depth Device MFT"},
    {L"Color", L"{01BC2102-6449-429F-8F62-B8D23D1DE6D3}", L"Tarn Color Device MFT"},
};

bool NamesTheModule(const std::wstring &path)
{
    return path.ends_with(L"\\tarn_dmft.dll") && path.find_first_of(L"\"%") == std::wstring::npos;
}

TEST_P(SetupApiTest, ClassesAreRegisteredInTheWayOfEachBuild)
{
    for (const Filter &filter : kFilters)
    {
        const std::wstring name = filter.name;
        for (const auto &[generation, root] : {std::pair{L"A", L"CLSID\\"}, {L"B", L"Classes\\CLSID\\"}})
        {
            Values values = Install(name + generation);
            const std::wstring key = std::wstring(root) + filter.clsid + L"\\";
            EXPECT_EQ(values.size(), 3u);
            EXPECT_EQ(values[key].text, filter.description);
            EXPECT_EQ(values[key + L"InprocServer32\\"].type, static_cast<DWORD>(REG_EXPAND_SZ));
            EXPECT_PRED1(NamesTheModule, values[key + L"InprocServer32\\"].text);
            EXPECT_EQ(values[key + L"InprocServer32\\ThreadingModel"].text, L"Both");
        }
        const std::wstring server = Field(name + L"C.COM", L"AddComServer", 3);
        EXPECT_EQ(Field(server, L"ServerType", 1), L"1");
        EXPECT_PRED1(NamesTheModule, Field(server, L"ServerBinary", 1));
        EXPECT_EQ(Field(server, L"AddComClass", 1), filter.clsid);
        EXPECT_EQ(Field(Field(server, L"AddComClass", 3), L"ThreadingModel", 1), L"Both");
    }
}

TEST_P(SetupApiTest, TheDepthFilterIsASensor)
{
    for (const wchar_t *const section : {L"DepthA.HW", L"DepthB.HW", L"DepthC.HW"})
    {
        Values values = Install(section);
        EXPECT_EQ(values.size(), 2u);
        for (const wchar_t *const name : {L"SensorCameraMode", L"SkipCameraEnumeration"})
        {
            EXPECT_EQ(values[name].type, static_cast<DWORD>(REG_DWORD));
            EXPECT_EQ(values[name].text, L"1");
        }
    }
}

TEST_P(SetupApiTest, InterfacesNameTheTransformAndOneGroup)
{
    std::wstring group;
    for (const Filter &filter : kFilters)
    {
        const std::wstring section = Field(std::wstring(filter.name) + L"C.Interfaces", L"AddInterface", 3);
        Values values = Install(section);
        EXPECT_EQ(values[L"CameraDeviceMftClsid"].type, static_cast<DWORD>(REG_SZ));
        EXPECT_EQ(values[L"CameraDeviceMftClsid"].text, filter.clsid);
        EXPECT_FALSE(values[L"FSSensorGroupName"].text.empty());
        const std::wstring own = values[L"FSSensorGroupId"].text;
        EXPECT_EQ(own.size(), 38u);
        EXPECT_TRUE(group.empty() || group == own);
        group = own;
    }
}

INSTANTIATE_TEST_SUITE_P(Inf, SetupApiTest, testing::Values("extension", "base"));

} // namespace
