#include "core/Topology.h"

#include <algorithm>
#include <utility>

#include "core/AsyncTopologyNode.h"
#include "trace/Guard.h"

namespace mft_core
{

Topology::Topology(std::string topologyName)
    : Object(std::move(topologyName)), buffers(std::make_shared<mft_utils::BufferPool>())
{
}

Topology::~Topology()
{
    mft_utils::Guarded([&]() -> HRESULT {
        StopNodes();
        Disconnect();
        return S_OK;
    });
}

std::shared_ptr<OutputTopologyNode> Topology::AddOutput(std::shared_ptr<OutputStream> stream)
{
    return outputs.emplace_back(std::make_shared<OutputTopologyNode>(std::move(stream)));
}

void Topology::AddConnection(std::shared_ptr<InputStream> inputStream, std::shared_ptr<ITopologyNode> firstNode,
                             IMFMediaType *mediaType)
{
    firstNode->Propagate(PropagateOrder::CallLambdaAndPropagate, [this](ITopologyNode *node) -> HRESULT {
        node->UseBuffers(buffers);
        return S_OK;
    });
    connections.push_back({std::move(inputStream), std::move(firstNode), mediaType, false});
}

HRESULT Topology::Activate()
{
    TRACE_INFO("%s: activate", GetName());
    for (ConnectionItem &i : connections)
    {
        CHECK_HR(i.inputStream->Connect(i.firstNode));
        i.isConnected = true;
        CHECK_HR_AS("i.inputStream->SetPreferredState(DeviceStreamState::DeviceStreamState_Run, i.mediaType)",
                    i.inputStream->SetPreferredState(DeviceStreamState_Run, i.mediaType.Get()));
    }
    return S_OK;
}

HRESULT Topology::Deactivate()
{
    TRACE_INFO("%s: deactivate", GetName());
    StopNodes();
    const HRESULT result = StopInputStreams();
    Disconnect();
    return result;
}

bool Topology::Serves(const OutputStream &stream) const noexcept
{
    return std::any_of(outputs.begin(), outputs.end(), [&](const auto &output) { return output->LeadsTo(stream); });
}

HRESULT Topology::StopInputStreams()
{
    for (ConnectionItem &i : connections)
    {
        HRESULT told = i.inputStream->SetPreferredState(DeviceStreamState_Stop, i.mediaType.Get());
        if (FAILED(told))
        {
            // Once more: a camera that does not hear of it films on for nobody.
            told = i.inputStream->SetPreferredState(DeviceStreamState_Stop, i.mediaType.Get());
        }
        CHECK_HR_AS("i.inputStream->SetPreferredState(DeviceStreamState::DeviceStreamState_Stop, i.mediaType)", told);
        CHECK_HR(i.inputStream->Flush());
    }
    return S_OK;
}

void Topology::StopNodes()
{
    for (const auto &output : outputs)
    {
        output->Close();
    }
    for (const ConnectionItem &i : connections)
    {
        i.firstNode->Propagate(PropagateOrder::CallLambdaAndPropagate, [](ITopologyNode *node) -> HRESULT {
            if (auto *asyncNode = dynamic_cast<AsyncTopologyNode *>(node))
            {
                asyncNode->Stop();
            }
            return S_OK;
        });
    }
}

void Topology::Disconnect()
{
    for (ConnectionItem &i : connections)
    {
        // Another topology may have taken the input stream over in the meantime only if this one let go of it.
        if (std::exchange(i.isConnected, false))
        {
            i.inputStream->Disconnect();
        }
    }
}

} // namespace mft_core
