// The simplest topology: each sample of an input stream goes unchanged to one output stream.
#pragma once

#include <memory>

#include "core/Topology.h"

namespace mft_core
{

class PassThroughTopology : public Topology
{
  public:
    PassThroughTopology();

    // Fails as TopologySettings::Validate does.
    HRESULT Init(std::shared_ptr<InputStream> inputStream, std::shared_ptr<OutputStream> outputStream,
                 IMFMediaType *mediaType);
};

} // namespace mft_core
