#include "core/PassThroughTopology.h"

#include <utility>

#include "core/TopologySettings.h"
#include "trace/Check.h"

namespace mft_core
{

PassThroughTopology::PassThroughTopology() : Topology("Pass Through Topology") {}

HRESULT PassThroughTopology::Init(std::shared_ptr<InputStream> inputStream, std::shared_ptr<OutputStream> outputStream,
                                  IMFMediaType *mediaType)
{
    const TopologySettings settings{inputStream, {{outputStream, mediaType}}};
    CHECK_HR(settings.Validate());
    AddConnection(std::move(inputStream), AddOutput(std::move(outputStream)), mediaType);
    return S_OK;
}

} // namespace mft_core
