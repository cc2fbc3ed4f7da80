// End of a chain: passes each sample unchanged to an output stream until its topology is deactivated.
#pragma once

#include <memory>

#include "core/ITopologyNode.h"
#include "core/OutputStream.h"
#include "base/CriticalSection.h"

namespace mft_core
{

// Owned by its topology. After Close returns nothing of the topology reaches the stream, whatever thread still works
// on a sample. Its lock is taken before the stream's. Thread-safe.
class OutputTopologyNode : public ITopologyNode
{
  public:
    explicit OutputTopologyNode(std::shared_ptr<OutputStream> stream);

    HRESULT ProcessSample(IMFSample *sample) override;

    void Close();

    bool LeadsTo(const OutputStream &stream) const noexcept;

  private:
    const std::shared_ptr<OutputStream> outputStream;
    user_space_frameworks::CriticalSection lock;
    bool closed TARN_GUARDED_BY(lock) = false;
};

} // namespace mft_core
