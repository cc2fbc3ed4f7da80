#include "core/TopologySlot.h"

#include <utility>

#include "trace/Guard.h"

namespace mft_core
{

namespace
{
bool IsRunning(const OutputStream &stream)
{
    return stream.GetState() == DeviceStreamState_Run;
}
} // namespace

TopologySlot::TopologySlot(const CheckTexts &checkTexts) : texts(checkTexts) {}

void TopologySlot::Add(std::shared_ptr<OutputStream> outputStream)
{
    outputs.push_back(std::move(outputStream));
}

HRESULT TopologySlot::Start(const std::shared_ptr<OutputStream> &outputStream, IMFMediaType *nextMediaType,
                            const Build &build, const std::function<void()> &whenEnded)
{
    std::shared_ptr<Topology> next;
    CHECK_HR_AS("BuildTopology(outputStream, nextMediaType, topology)",
                mft_utils::Guarded([&] { return build(next); }));
    const HRESULT result =
        mft_utils::Guarded([&] { return Run(outputStream, nextMediaType, whenEnded, std::move(next)); });
    if (FAILED(result))
    {
        // The old topology is gone and the new one does not run: say so rather than stall.
        StopOutputs();
    }
    return result;
}

HRESULT TopologySlot::Run(const std::shared_ptr<OutputStream> &outputStream, IMFMediaType *nextMediaType,
                          const std::function<void()> &whenEnded, std::shared_ptr<Topology> next)
{
    CHECK_HR_AS(texts.deactivate, Deactivate());
    if (whenEnded)
    {
        whenEnded();
    }
    if (IsRunning(*outputStream))
    {
        CHECK_HR(outputStream->Flush()); // what is queued has the former media type
    }
    CHECK_HR(outputStream->SetCurrentMediaType(nextMediaType));
    CHECK_HR(outputStream->SetState(DeviceStreamState_Run));
    topology = std::move(next);
    CHECK_HR_AS(texts.activate, topology->Activate());
    return S_OK;
}

HRESULT TopologySlot::Stop(const std::shared_ptr<OutputStream> &outputStream, IMFMediaType *nextMediaType)
{
    CHECK_HR(outputStream->SetState(DeviceStreamState_Stop));
    CHECK_HR(outputStream->SetCurrentMediaType(nextMediaType));
    if (!AnyOutputRuns())
    {
        CHECK_HR_AS(texts.deactivate, Deactivate());
    }
    return S_OK;
}

void TopologySlot::End()
{
    if (FAILED(mft_utils::Guarded([&] { return Deactivate(); })))
    {
        TRACE_ERROR("%s failed", texts.deactivate);
    }
}

HRESULT TopologySlot::Deactivate()
{
    const std::shared_ptr<Topology> ending = std::exchange(topology, nullptr);
    return ending ? ending->Deactivate() : S_OK;
}

bool TopologySlot::AnyOutputRuns() const
{
    bool anyRuns = false;
    for (const auto &stream : outputs)
    {
        if (IsRunning(*stream))
        {
            TRACE_INFO("output %u (%s) still runs", stream->GetID(), stream->GetName());
            anyRuns = true;
        }
    }
    return anyRuns;
}

void TopologySlot::StopOutputs()
{
    End();
    for (const auto &stream : outputs)
    {
        if (IsRunning(*stream))
        {
            TRACE_ERROR("output %u (%s) is stopped", stream->GetID(), stream->GetName());
            stream->SetState(DeviceStreamState_Stop);
        }
    }
}

bool TopologySlot::Runs() const noexcept
{
    return topology != nullptr;
}

bool TopologySlot::Serves(const OutputStream &outputStream) const noexcept
{
    return topology != nullptr && topology->Serves(outputStream);
}

} // namespace mft_core
