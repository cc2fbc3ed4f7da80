#include "module/ProcessAttach.h"

#include "device/TarnGuidNames.h"
#include "module/ModuleHandle.h"
#include "utils/Check.h"
#include "utils/GuidTranslator.h"
#include "utils/KsIdentifierTranslator.h"
#include "utils/MediaTypeTranslator.h"
#include "utils/Tracing.h"

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
    KsIdentifierTranslator::Destroy();
    MediaTypeTranslator::Destroy();
    GuidTranslator::Destroy();
    ShutdownTracing();
}

} // namespace mft_utils
