// One configuration of processing nodes between input streams and output streams.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/InputStream.h"
#include "core/OutputTopologyNode.h"
#include "media/BufferPool.h"

namespace mft_core
{

// Owns its nodes. Activated once, after its chains are built; once deactivated it stays so. Confined to the thread that
// changes stream states.
class Topology : public user_space_frameworks::Object
{
  public:
    // Ends what Deactivate would end, without events and without waiting.
    ~Topology() override;

    // Connects each input stream and asks for it to run. Stops at the first failure.
    virtual HRESULT Activate();

    // Asks each input stream to stop, twice if need be, and flushes it. Stops at the first failure, but in any case
    // nothing of this topology reaches an output afterwards and its input streams are disconnected. Waits for queued
    // frames: hold no lock that a node needs.
    virtual HRESULT Deactivate();

    // Whether one of its chains ends in `stream`.
    bool Serves(const OutputStream &stream) const noexcept;

  protected:
    explicit Topology(std::string topologyName);

    // The end of a chain towards `stream`.
    std::shared_ptr<OutputTopologyNode> AddOutput(std::shared_ptr<OutputStream> stream);

    // The whole chain behind `firstNode` takes its memory from the topology's pool, which goes with the topology.
    void AddConnection(std::shared_ptr<InputStream> inputStream, std::shared_ptr<ITopologyNode> firstNode,
                       IMFMediaType *mediaType);

  private:
    struct ConnectionItem
    {
        std::shared_ptr<InputStream> inputStream;
        std::shared_ptr<ITopologyNode> firstNode;
        ComPtr<IMFMediaType> mediaType;
        bool isConnected = false;
    };

    void StopNodes();
    HRESULT StopInputStreams();
    void Disconnect();

    const std::shared_ptr<mft_utils::BufferPool> buffers;
    std::vector<ConnectionItem> connections;
    std::vector<std::shared_ptr<OutputTopologyNode>> outputs;
};

} // namespace mft_core
