#include "device/nodes/TarnCalibrationTopologyNode.h"

#include "platform/CameraAttributes.h"

#include <cstddef>
#include <utility>

#include "nodes/SampleActivity.h"
#include "trace/Check.h"
#include "base/ThrowIfFailed.h"

using mft_utils::ComException;
using mft_utils::ThrowIfFailed;

namespace mft_core
{

namespace
{
// Empty when the store does not have the blob.
std::vector<UINT8> ReadBlob(IMFAttributes *attributes, const GUID &key)
{
    UINT32 size = 0;
    if (FAILED(attributes->GetBlobSize(key, &size)) || size == 0)
    {
        return {};
    }
    std::vector<UINT8> blob(size);
    ThrowIfFailed<ComException>(attributes->GetBlob(key, blob.data(), size, nullptr), "Failed to read a camera record");
    return blob;
}

HRESULT WriteBlob(IMFSample *sample, const GUID &key, const UINT8 *blob, std::size_t size)
{
    if (size != 0)
    {
        CHECK_HR(sample->SetBlob(key, blob, static_cast<UINT32>(size)));
    }
    return S_OK;
}
} // namespace

TarnCalibrationTopologyNode::TarnCalibrationTopologyNode(std::shared_ptr<ITopologyNode> successor,
                                                         const OutputStream &stream, CameraBlob frameIntrinsics)
    : ITopologyNode(std::move(successor), "Tarn calibration topology node"), intrinsics(std::move(frameIntrinsics))
{
    ComPtr<IMFAttributes> attributes;
    ThrowIfFailed<ComException>(stream.GetAttributes(attributes.GetAddressOf()),
                                "Failed to get the stream's attributes");
    extrinsics = ReadBlob(attributes.Get(), MFStreamExtension_CameraExtrinsics);
}

HRESULT TarnCalibrationTopologyNode::ProcessSample(IMFSample *sample)
{
    CHECK_POINTER(sample);
    const SampleActivity activity("mft_core::TarnCalibrationTopologyNode::ProcessSample", sample);
    const HRESULT written[] = {
        WriteBlob(sample, MFSampleExtension_PinholeCameraIntrinsics, intrinsics.data.get(), intrinsics.sizeBytes),
        WriteBlob(sample, MFSampleExtension_CameraExtrinsics, extrinsics.data(), extrinsics.size())};
    if (FAILED(written[0]) || FAILED(written[1]))
    {
        TRACE_ERROR("%s: the sample goes without a camera record", GetName());
    }
    HandOn(sample);
    return S_OK;
}

} // namespace mft_core
