// What a topology is built from, checked before any running topology is touched.
#pragma once

#include <memory>
#include <vector>

#include "core/InputStream.h"
#include "core/OutputStream.h"

namespace mft_core
{

struct TopologySettings
{
    struct Output
    {
        std::shared_ptr<OutputStream> stream;
        ComPtr<IMFMediaType> mediaType;
    };

    std::shared_ptr<InputStream> inputStream;
    std::vector<Output> outputs;

    // E_POINTER for a missing stream or type, E_INVALIDARG without outputs, MF_E_INVALIDMEDIATYPE for a type that its
    // output stream does not offer.
    HRESULT Validate() const;
};

} // namespace mft_core
