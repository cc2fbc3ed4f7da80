#include "nodes/SplitterTopologyNode.h"

#include "platform/CameraAttributes.h"

#include <utility>

#include "nodes/SampleActivity.h"
#include "trace/Check.h"
#include "media/IMFSampleUtils.h"

namespace mft_core
{

SplitterTopologyNode::SplitterTopologyNode(std::shared_ptr<ITopologyNode> successor, BranchSamples samples,
                                           const char *nodeName)
    : ITopologyNode(std::move(successor), nodeName), branchSamples(samples)
{
}

HRESULT SplitterTopologyNode::ProcessSample(IMFSample *sample)
{
    CHECK_POINTER(sample);
    SampleActivity activity("mft_core::SplitterTopologyNode::ProcessSample", sample);
    const auto &branches = NextNodes();
    for (std::size_t i = 0; i < branches.size(); ++i)
    {
        ComPtr<IMFSample> branchSample = sample;
        // The last branch may have the original: nobody reads it afterwards.
        if (branchSamples == BranchSamples::Separate && i + 1 < branches.size())
        {
            const HRESULT result = CopyForBranch(branchSample.ReleaseAndGetAddressOf(), sample);
            if (FAILED(result))
            {
                activity.Write(mft_utils::TraceLevel::Error, "Failed to copy sample for a branch",
                               {mft_utils::TraceField::Hex32("hr", result)});
                continue;
            }
        }
        branches[i]->Process(branchSample.Get());
    }
    return S_OK;
}

HRESULT SplitterTopologyNode::CopyForBranch(IMFSample **branchSample, IMFSample *sample)
{
    ComPtr<IMFSample> copy;
    CHECK_HR(mft_utils::IMFSampleUtils::Copy(copy.GetAddressOf(), sample));
    DWORD count = 0;
    CHECK_HR(sample->GetBufferCount(&count));
    for (DWORD i = 0; i < count; ++i)
    {
        ComPtr<IMFMediaBuffer> buffer;
        CHECK_HR(sample->GetBufferByIndex(i, buffer.GetAddressOf()));
        CHECK_HR(copy->AddBuffer(buffer.Get()));
    }

    ComPtr<IMFAttributes> store;
    if (SUCCEEDED(sample->GetUnknown(MFSampleExtension_CaptureMetadata, IID_PPV_ARGS(&store))) && store)
    {
        ComPtr<IMFAttributes> ownStore;
        CHECK_HR(MFCreateAttributes(ownStore.GetAddressOf(), 0));
        CHECK_HR(store->CopyAllItems(ownStore.Get()));
        CHECK_HR(copy->SetUnknown(MFSampleExtension_CaptureMetadata, ownStore.Get()));
    }
    *branchSample = copy.Detach();
    return S_OK;
}

} // namespace mft_core
