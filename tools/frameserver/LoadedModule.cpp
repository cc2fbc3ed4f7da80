#include "tools/frameserver/LoadedModule.h"

#include <array>

#include "tools/command/ExitCode.h"
#include "tools/frameserver/RegisterModule.h"
#include "tools/command/Text.h"
#include "base/HResultFromWin32.h"

namespace tarn_host
{

namespace
{

constexpr const wchar_t *kModuleName = L"tarn_dmft.dll";

} // namespace

LoadedModule::LoadedModule(const std::filesystem::path &modulePath, ModuleAccess moduleAccess)
    : path(std::filesystem::absolute(modulePath)), access(moduleAccess)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
    {
        throw UsageError("no module at " + ToText(path) + "; name it with --dll");
    }
    if (access == ModuleAccess::Registry)
    {
        RegisterModule(path);
        return;
    }
    library = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (library == nullptr)
    {
        throw HostError(mft_utils::HResultFromLastError(), "loading " + ToText(path));
    }
}

LoadedModule::~LoadedModule()
{
    try
    {
        Unload();
    }
    catch (const HostError &)
    {
        // Without the export nobody can tell whether it is in use: it stays.
    }
}

ComPtr<IMFDeviceTransform> LoadedModule::Create(const CLSID &transformClass) const
{
    ComPtr<IMFDeviceTransform> transform;
    if (access == ModuleAccess::Registry)
    {
        ThrowIfFailed(CoCreateInstance(transformClass, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&transform)),
                      "creating the transform (is the module registered?)");
        return transform;
    }
    using GetClassObject = HRESULT(STDAPICALLTYPE *)(REFCLSID, REFIID, void **);
    const auto getClassObject = reinterpret_cast<GetClassObject>(reinterpret_cast<void *>(Export("DllGetClassObject")));
    ComPtr<IClassFactory> factory;
    ThrowIfFailed(getClassObject(transformClass, IID_PPV_ARGS(&factory)), "DllGetClassObject");
    ThrowIfFailed(factory->CreateInstance(nullptr, IID_PPV_ARGS(&transform)), "creating the transform");
    return transform;
}

std::filesystem::path LoadedModule::LoadedFrom() const
{
    std::array<wchar_t, 1024> file{};
    const HMODULE handle = Handle();
    if (handle != nullptr)
    {
        GetModuleFileNameW(handle, file.data(), static_cast<DWORD>(file.size()));
    }
    return file.data();
}

// A thread of the platform may take a moment to leave the module, and longer on a busy machine.
HRESULT LoadedModule::CanUnloadNow() const
{
    constexpr ULONGLONG kPatienceMs = 5000;
    constexpr DWORD kPollMs = 20;
    using CanUnload = HRESULT(STDAPICALLTYPE *)();
    const auto canUnload = reinterpret_cast<CanUnload>(reinterpret_cast<void *>(Export("DllCanUnloadNow")));
    const ULONGLONG end = GetTickCount64() + kPatienceMs;
    HRESULT answer = canUnload();
    while (answer != S_OK && GetTickCount64() < end)
    {
        Sleep(kPollMs);
        answer = canUnload();
    }
    return answer;
}

bool LoadedModule::Unload()
{
    if (Handle() == nullptr)
    {
        return true;
    }
    if (access == ModuleAccess::Registry)
    {
        CoFreeUnusedLibrariesEx(0, 0);
    }
    else if (library != nullptr && CanUnloadNow() == S_OK)
    {
        FreeLibrary(library);
        library = nullptr;
    }
    return Handle() == nullptr;
}

HMODULE LoadedModule::Handle() const noexcept
{
    return GetModuleHandleW(path.filename().c_str());
}

FARPROC LoadedModule::Export(const char *name) const
{
    const HMODULE handle = Handle();
    const FARPROC address = handle == nullptr ? nullptr : GetProcAddress(handle, name);
    if (address == nullptr)
    {
        throw HostError(std::string("no ") + name + " in " + ToText(path));
    }
    return address;
}

std::filesystem::path DefaultModulePath()
{
    std::array<wchar_t, 1024> program{};
    GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size()));
    return std::filesystem::path(program.data()).parent_path() / kModuleName;
}

} // namespace tarn_host
