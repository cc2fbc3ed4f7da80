#include "module/ProcessAttach.h"

#include "device/TarnGuidNames.h"
#include "module/ModuleHandle.h"
#include "recorder/RecordingShare.h"
#include "trace/Check.h"
#include "trace/GuidTranslator.h"
#include "trace/KsIdentifierTranslator.h"
#include "trace/MediaTypeTranslator.h"
#include "trace/Tracing.h"

namespace mft_utils
{

namespace
{
// The first failure skips the rest: logs then spell names plainly.
HRESULT CreateTranslators()
{
    CHECK_HR(GuidTranslator::Create());
    CHECK_HR(MediaTypeTranslator::Create());
    CHECK_HR(KsIdentifierTranslator::Create());
    return S_OK;
}
} // namespace

void OnDllProcessAttach(HMODULE module) noexcept
{
    SetDllModuleHandle(module);
    // Fails for every DLL whose runtime has a TLS directory, as this toolchain's has. Thread notifications are ignored.
    DisableThreadLibraryCalls(module);
    InitializeTracing();
    TRACE_INFO("module started");
    if (SUCCEEDED(CreateTranslators()))
    {
        mft_core::RegisterTarnGuidNames();
    }
}

void OnDllProcessDetach() noexcept
{
    mft_der::RecordingShare::ForgetSessions();
    KsIdentifierTranslator::Destroy();
    MediaTypeTranslator::Destroy();
    GuidTranslator::Destroy();
    ShutdownTracing();
}

} // namespace mft_utils
