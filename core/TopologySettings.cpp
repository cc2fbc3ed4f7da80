#include "core/TopologySettings.h"

#include "trace/Check.h"

namespace mft_core
{

HRESULT TopologySettings::Validate() const
{
    CHECK_POINTER(inputStream);
    if (outputs.empty())
    {
        TRACE_ERROR("topology without outputs");
        return E_INVALIDARG;
    }
    for (const Output &output : outputs)
    {
        CHECK_POINTER_AS("outputStream", output.stream, E_POINTER);
        CHECK_POINTER_AS("nextMediaType", output.mediaType, E_POINTER);
        CHECK_HR_AS("outputStream->IsSupported(nextMediaType)",
                    output.stream->IsSupported(output.mediaType.Get()) ? S_OK : MF_E_INVALIDMEDIATYPE);
    }
    return S_OK;
}

} // namespace mft_core
