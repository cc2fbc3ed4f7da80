// Where the topology that serves some outputs runs, one at a time, and how another takes its place.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "core/OutputStream.h"
#include "core/Topology.h"

namespace mft_core
{

// Each output belongs to one slot. Confined to the thread that changes stream states: its transform guards it.
class TopologySlot
{
  public:
    // What the log calls the failing steps; literals.
    struct CheckTexts
    {
        const char *activate;
        const char *deactivate;
    };

    // Sets `topology` on success only.
    using Build = std::function<HRESULT(std::shared_ptr<Topology> &topology)>;

    explicit TopologySlot(const CheckTexts &checkTexts);

    // The slot's topologies serve this output too. Before the first start.
    void Add(std::shared_ptr<OutputStream> outputStream);

    // Starts an output of the slot: builds a topology, ends the one that runs, calls `whenEnded` and runs the new one.
    // One that cannot be built changes nothing: what ran runs on. After any other failure every output of the slot is
    // stopped, and nothing runs. Does not throw.
    HRESULT Start(const std::shared_ptr<OutputStream> &outputStream, IMFMediaType *nextMediaType, const Build &build,
                  const std::function<void()> &whenEnded = {});

    // Stops an output and, when no other output of the slot runs, the topology. Its failure is returned; it is gone all
    // the same.
    HRESULT Stop(const std::shared_ptr<OutputStream> &outputStream, IMFMediaType *nextMediaType);

    // Ends the topology and leaves the outputs' states alone. A failure is traced.
    void End();

    bool Runs() const noexcept;
    // Whether the topology that runs has `outputStream` among its outputs.
    bool Serves(const OutputStream &outputStream) const noexcept;

  private:
    HRESULT Run(const std::shared_ptr<OutputStream> &outputStream, IMFMediaType *nextMediaType,
                const std::function<void()> &whenEnded, std::shared_ptr<Topology> next);
    HRESULT Deactivate();
    bool AnyOutputRuns() const;
    void StopOutputs();

    CheckTexts texts;
    std::vector<std::shared_ptr<OutputStream>> outputs;
    std::shared_ptr<Topology> topology;
};

} // namespace mft_core
