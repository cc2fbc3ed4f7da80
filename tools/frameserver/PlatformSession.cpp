#include "tools/frameserver/PlatformSession.h"

#include "platform/MediaFoundation.h"

#include "tools/command/ExitCode.h"

namespace tarn_host
{

PlatformSession::PlatformSession()
{
    ThrowIfFailed(CoInitializeEx(nullptr, COINIT_MULTITHREADED), "CoInitializeEx");
    const HRESULT started = MFStartup(MF_VERSION, MFSTARTUP_LITE);
    if (FAILED(started))
    {
        CoUninitialize();
        throw HostError(started, "MFStartup");
    }
}

PlatformSession::~PlatformSession()
{
    MFShutdown();
    CoUninitialize();
}

} // namespace tarn_host
