// The generated INF files through the platform's own reader: they open, and their sections write what is expected.
#include <windows.h>

#include <setupapi.h>

#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

namespace
{

constexpr wchar_t kScratchKey[] = L"Software\\TarnSetupApiTest";

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
        RegDeleteTreeW(HKEY_CURRENT_USER, kScratchKey);
    }

    // Writes what the section's AddReg says; an empty key stands in for the device's key and for the class root.
    void Install(const std::wstring &section) const
    {
        HKEY scratch = nullptr;
        RegDeleteTreeW(HKEY_CURRENT_USER, kScratchKey);
        EXPECT_EQ(RegCreateKeyW(HKEY_CURRENT_USER, kScratchKey, &scratch), ERROR_SUCCESS);
        EXPECT_EQ(RegOverridePredefKey(HKEY_CLASSES_ROOT, scratch), ERROR_SUCCESS);
        EXPECT_TRUE(SetupInstallFromInfSectionW(nullptr, inf, section.c_str(), SPINST_REGISTRY, scratch, nullptr, 0,
                                                nullptr, nullptr, nullptr, nullptr));
        RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr);
        RegCloseKey(scratch);
    }

    // A number comes as one character; empty when the value is missing or of another type.
    static std::wstring Written(const std::wstring &key, const wchar_t *name, DWORD type = REG_SZ)
    {
        wchar_t text[512] = {};
        DWORD size = sizeof(text) - sizeof(*text);
        DWORD found = REG_NONE;
        RegGetValueW(HKEY_CURRENT_USER, (std::wstring(kScratchKey) + key).c_str(), name, RRF_RT_ANY | RRF_NOEXPAND,
                     &found, text, &size);
        return found == type ? text : L"";
    }

    // A field of the first line with that key, tokens replaced.
    std::wstring Field(const std::wstring &section, const wchar_t *key, DWORD index) const
    {
        INFCONTEXT line{};
        wchar_t text[260] = {};
        return SetupFindFirstLineW(inf, section.c_str(), key, &line) &&
                       SetupGetStringFieldW(&line, index, text, static_cast<DWORD>(std::size(text)), nullptr)
                   ? text
                   : L"";
    }

    HINF inf = INVALID_HANDLE_VALUE;
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
        for (const auto &[generation, root] : {std::pair{L"A", L"\\CLSID\\"}, {L"B", L"\\Classes\\CLSID\\"}})
        {
            Install(name + generation);
            const std::wstring key = std::wstring(root) + filter.clsid;
            EXPECT_EQ(Written(key, L""), filter.description);
            EXPECT_PRED1(NamesTheModule, Written(key + L"\\InprocServer32", L"", REG_EXPAND_SZ));
            EXPECT_EQ(Written(key + L"\\InprocServer32", L"ThreadingModel"), L"Both");
        }
        const std::wstring server = Field(name + L"C.COM", L"AddComServer", 3);
        EXPECT_EQ(Field(server, L"ServerType", 1), L"1");
        EXPECT_PRED1(NamesTheModule, Field(server, L"ServerBinary", 1));
        EXPECT_EQ(Field(server, L"AddComClass", 1), filter.clsid);
        EXPECT_EQ(Field(Field(server, L"AddComClass", 3), L"ThreadingModel", 1), L"Both");
    }
}

TEST_P(SetupApiTest, TheDepthFilterIsASensorAndInterfacesNameTheTransformAndOneGroup)
{
    for (const wchar_t *const section : {L"DepthA.HW", L"DepthB.HW", L"DepthC.HW"})
    {
        Install(section);
        EXPECT_EQ(Written(L"", L"SensorCameraMode", REG_DWORD), L"\1");
        EXPECT_EQ(Written(L"", L"SkipCameraEnumeration", REG_DWORD), L"\1");
    }
    std::wstring group;
    for (const Filter &filter : kFilters)
    {
        Install(Field(std::wstring(filter.name) + L"C.Interfaces", L"AddInterface", 3));
        EXPECT_EQ(Written(L"", L"CameraDeviceMftClsid"), filter.clsid);
        EXPECT_FALSE(Written(L"", L"FSSensorGroupName").empty());
        const std::wstring own = Written(L"", L"FSSensorGroupId");
        EXPECT_EQ(own.size(), 38u);
        EXPECT_TRUE(group.empty() || group == own);
        group = own;
    }
}

INSTANTIATE_TEST_SUITE_P(Inf, SetupApiTest, testing::Values("extension", "base"));

} // namespace
