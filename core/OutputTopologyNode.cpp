#include "core/OutputTopologyNode.h"

#include <mutex>
#include <utility>

#include "trace/Check.h"

namespace mft_core
{

OutputTopologyNode::OutputTopologyNode(std::shared_ptr<OutputStream> stream)
    : ITopologyNode(nullptr, "Output topology node"), outputStream(std::move(stream))
{
}

HRESULT OutputTopologyNode::ProcessSample(IMFSample *sample)
{
    const std::scoped_lock guard(lock);
    if (closed)
    {
        TRACE_INFO("%s: late sample dropped", GetName());
        return S_OK;
    }
    CHECK_HR(outputStream->ProcessSample(sample));
    return S_OK;
}

void OutputTopologyNode::Close()
{
    const std::scoped_lock guard(lock);
    closed = true;
}

bool OutputTopologyNode::LeadsTo(const OutputStream &stream) const noexcept
{
    return outputStream.get() == &stream;
}

} // namespace mft_core
