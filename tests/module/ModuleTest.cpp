// The module's boundary, seen through the loaded DLL.
#include "platform/DeviceTransform.h"

#include "tests/module/LoadedDll.h"
#include "tests/support/Expect.h"
#include "tests/support/HandleCount.h"

using namespace tarn_test;

namespace
{

std::wstring ReadString(const std::wstring &key, const wchar_t *value)
{
    std::array<wchar_t, 300> text{};
    DWORD size = sizeof(text);
    if (RegGetValueW(HKEY_LOCAL_MACHINE, (L"Software\\Classes\\CLSID\\" + key).c_str(), value, RRF_RT_REG_SZ, nullptr,
                     text.data(), &size) != ERROR_SUCCESS)
    {
        return L"(absent)";
    }
    return text.data();
}

TEST(ModuleTest, OnlyTheTwoClassesAreOffered)
{
    const LoadedDll dll;
    void *object = &object;
    EXPECT_HR(CLASS_E_CLASSNOTAVAILABLE, dll.GetClassObject(__uuidof(IMFSample), __uuidof(IClassFactory), &object));
    EXPECT_EQ(nullptr, object);
    EXPECT_HR(E_POINTER, dll.GetClassObject(kDepthClass, __uuidof(IClassFactory), nullptr));
    EXPECT_HR(E_NOINTERFACE, dll.GetClassObject(kDepthClass, __uuidof(IMFSample), &object));
    EXPECT_HR(S_OK, dll.CanUnloadNow());
    for (const CLSID &clsid : {kDepthClass, kColorClass})
    {
        ComPtr<IClassFactory> factory;
        ASSERT_HR(S_OK, dll.GetClassObject(clsid, IID_PPV_ARGS(&factory)));
        ComPtr<IMFDeviceTransform> transform;
        EXPECT_HR(S_OK, factory->CreateInstance(nullptr, IID_PPV_ARGS(&transform)));
        EXPECT_REFS(transform, 1);
        EXPECT_HR(E_POINTER, factory->CreateInstance(nullptr, __uuidof(IUnknown), nullptr));
        EXPECT_HR(E_NOINTERFACE, factory->CreateInstance(nullptr, __uuidof(IMFSample), &object));
        EXPECT_HR(CLASS_E_NOAGGREGATION, factory->CreateInstance(transform.Get(), __uuidof(IUnknown), &object));
        EXPECT_EQ(nullptr, object);
    }
}

TEST(ModuleTest, FactoriesAndLocksHoldTheModuleTransformsDoNot)
{
    const LoadedDll dll;
    ComPtr<IClassFactory> factory;
    ASSERT_HR(S_OK, dll.GetClassObject(kColorClass, IID_PPV_ARGS(&factory)));
    EXPECT_HR(S_FALSE, dll.CanUnloadNow());
    EXPECT_HR(S_OK, factory->LockServer(TRUE));
    ComPtr<IMFDeviceTransform> transform;
    ASSERT_HR(S_OK, factory->CreateInstance(nullptr, IID_PPV_ARGS(&transform)));
    IClassFactory *const released = factory.Detach();
    EXPECT_EQ(1u, released->AddRef() - 1);
    released->Release();
    EXPECT_EQ(0u, released->Release());
    EXPECT_HR(S_FALSE, dll.CanUnloadNow()); // the server lock
    ASSERT_HR(S_OK, dll.GetClassObject(kColorClass, IID_PPV_ARGS(&factory)));
    EXPECT_HR(S_OK, factory->LockServer(FALSE));
    factory.Reset();
    EXPECT_HR(S_OK, dll.CanUnloadNow()); // although a transform lives
    EXPECT_EQ(0u, transform.Detach()->Release());
}

TEST(ModuleTest, RegistrationWritesTwoClassesAndTakesThemBack)
{
    const LoadedDll dll;
    ASSERT_HR(S_OK, dll.RegisterServer());
    const std::wstring depth = L"{7F9DF308-0F2D-432E-8C8E-D36ED8F12C90}";
    const std::wstring color = L"{01BC2102-6449-429F-8F62-B8D23D1DE6D3}";
    EXPECT_EQ(L"Tarn Depth Device MFT", ReadString(depth, nullptr));
    EXPECT_EQ(L"Tarn Color Device MFT", ReadString(color, nullptr));
    for (const std::wstring &clsid : {depth, color})
    {
        EXPECT_EQ(dll.Path(), ReadString(clsid + L"\\InProcServer32", nullptr));
        EXPECT_EQ(L"Both", ReadString(clsid + L"\\InProcServer32", L"ThreadingModel"));
    }
    ASSERT_HR(S_OK, dll.RegisterServer()); // again: the same
    EXPECT_HR(S_OK, dll.UnregisterServer());
    EXPECT_EQ(L"(absent)", ReadString(depth, nullptr));
    EXPECT_EQ(L"(absent)", ReadString(color + L"\\InProcServer32", nullptr));
    EXPECT_HR(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), dll.UnregisterServer());
}

TEST(ModuleTest, AFailureHalfWayLeavesTheRegistrationAsItWas)
{
    const std::wstring classes = L"Software\\Classes\\CLSID\\";
    const std::wstring depth = L"{7F9DF308-0F2D-432E-8C8E-D36ED8F12C90}";
    const std::wstring color = L"{01BC2102-6449-429F-8F62-B8D23D1DE6D3}";
    const auto set = [&](const std::wstring &key, const wchar_t *value) {
        EXPECT_EQ(ERROR_SUCCESS, RegSetKeyValueW(HKEY_LOCAL_MACHINE, (classes + key).c_str(), nullptr, REG_SZ, value,
                                                 static_cast<DWORD>((wcslen(value) + 1) * sizeof(wchar_t))));
    };
    // Nothing that stays can be created below a key that does not.
    const auto block = [&](const std::wstring &key) {
        HKEY made = nullptr;
        ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExW(HKEY_LOCAL_MACHINE, (classes + key).c_str(), 0, nullptr,
                                                 REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr, &made, nullptr));
        RegCloseKey(made);
    };
    const LoadedDll dll;
    block(color);
    EXPECT_HR(HRESULT_FROM_WIN32(ERROR_CHILD_MUST_BE_VOLATILE), dll.RegisterServer());
    EXPECT_EQ(L"(absent)", ReadString(depth + L"\\InProcServer32", nullptr)); // all or none
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegDeleteTreeW(HKEY_LOCAL_MACHINE, (classes + depth).c_str()));
    EXPECT_EQ(L"(absent)", ReadString(color, nullptr));

    set(depth + L"\\InProcServer32", L"of another version"); // and no threading model
    set(color, L"mine");
    EXPECT_HR(HRESULT_FROM_WIN32(ERROR_CHILD_MUST_BE_VOLATILE), dll.RegisterServer());
    EXPECT_EQ(L"(absent)", ReadString(depth, nullptr));
    EXPECT_EQ(L"of another version", ReadString(depth + L"\\InProcServer32", nullptr));
    EXPECT_EQ(L"(absent)", ReadString(depth + L"\\InProcServer32", L"ThreadingModel"));
    EXPECT_EQ(L"mine", ReadString(color, nullptr));

    // What is left of it is taken back although the first is missing.
    EXPECT_EQ(ERROR_SUCCESS, RegDeleteTreeW(HKEY_LOCAL_MACHINE, (classes + depth).c_str()));
    EXPECT_HR(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), dll.UnregisterServer());
    EXPECT_EQ(L"(absent)", ReadString(color, nullptr));
}

TEST(ModuleTest, LoadingAndUnloadingLeavesNothing)
{
    int before = 0;
    for (int round = 0; round < 60; ++round)
    {
        {
            const LoadedDll dll;
            ComPtr<IClassFactory> factory;
            ASSERT_HR(S_OK, dll.GetClassObject(kDepthClass, IID_PPV_ARGS(&factory)));
            ComPtr<IMFDeviceTransform> transform;
            ASSERT_HR(S_OK, factory->CreateInstance(nullptr, IID_PPV_ARGS(&transform)));
        }
        if (round == 5)
        {
            before = CountHandles();
        }
    }
    EXPECT_LE(CountHandles(), before);
    EXPECT_EQ(nullptr, GetModuleHandleW(L"tarn_dmft.dll"));
}

} // namespace
