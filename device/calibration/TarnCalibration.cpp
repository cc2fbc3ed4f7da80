#include "device/calibration/TarnCalibration.h"

#include "platform/CameraAttributes.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <span>
#include <utility>
#include <vector>

#include "tarn/tarn_formats.h"
#include "device/calibration/CameraModel.h"
#include "trace/Check.h"

namespace mft_core
{

namespace
{
static_assert(sizeof(MFPinholeCameraIntrinsics) == 48, "a count and one model");
constexpr std::size_t kTransferBytes = 1024; // the longest answer of an extension-unit control

// A frame of each size, once.
std::vector<FrameGeometry> DistinctFrames(const MediaTypeList &mtList)
{
    std::vector<FrameGeometry> frames;
    for (const auto &mediaType : mtList)
    {
        UINT32 width = 0;
        UINT32 height = 0;
        if (!mediaType || FAILED(MFGetAttributeSize(mediaType.Get(), MF_MT_FRAME_SIZE, &width, &height)) ||
            width == 0 || height == 0)
        {
            continue;
        }
        if (std::ranges::none_of(
                frames, [&](const FrameGeometry &frame) { return frame.Width() == width && frame.Height() == height; }))
        {
            frames.emplace_back(width, height);
        }
    }
    return frames;
}

MFPinholeCameraIntrinsic_IntrinsicModel ModelOf(const CalibrationTable &table, const FrameGeometry &frame)
{
    const PinholeModel pinhole = frame.PinholeOf(table);
    const DistortionCoefficients &distortion = table.distortion;
    const auto toFloat = [](double value) { return static_cast<FLOAT>(value); };
    return {frame.Width(),
            frame.Height(),
            {{toFloat(pinhole.focalLengthX), toFloat(pinhole.focalLengthY)},
             {toFloat(pinhole.principalPointX), toFloat(pinhole.principalPointY)}},
            {toFloat(distortion.radialK1), toFloat(distortion.radialK2), toFloat(distortion.radialK3),
             toFloat(distortion.tangentialP1), toFloat(distortion.tangentialP2)}};
}

CameraBlob MakeBlob(const void *source, std::size_t sizeBytes)
{
    const std::shared_ptr<UINT8[]> bytes(new UINT8[sizeBytes]);
    std::memcpy(bytes.get(), source, sizeBytes);
    return {bytes, static_cast<UINT32>(sizeBytes)};
}
} // namespace

TarnCalibration::TarnCalibration(ComPtr<IKsControl> extensionUnit, const GUID &set, ULONG controlId,
                                 const std::string &ownerName)
    : Object(ownerName + " calibration"),
      control(std::move(extensionUnit), set, controlId, ownerName + " calibration control")
{
}

HRESULT TarnCalibration::Init()
{
    CalibrationTable read;
    if (FAILED(ReadTable(read)))
    {
        TRACE_ERROR("%s: no table, streams carry neither intrinsics nor extrinsics", GetName());
        return S_OK;
    }
    table = read;
    TRACE_INFO("%s: %ux%u, focal length %.2f %.2f, principal point %.2f %.2f", GetName(), read.referenceWidth,
               read.referenceHeight, read.pinhole.focalLengthX, read.pinhole.focalLengthY, read.pinhole.principalPointX,
               read.pinhole.principalPointY);
    return S_OK;
}

HRESULT TarnCalibration::ReadTable(CalibrationTable &read)
{
    std::array<UINT8, kTransferBytes> answer{};
    ULONG bytesReturned = 0;
    CHECK_HR(control.Get(answer.data(), answer.size(), bytesReturned));
    const std::size_t length = std::min<std::size_t>(bytesReturned, answer.size());
    const CalibrationCheck check = ParseCalibrationTable(std::span(answer).first(length), read);
    if (check != CalibrationCheck::Good)
    {
        TRACE_ERROR("%s: table of %lu bytes refused: %s", GetName(), bytesReturned, CalibrationCheckName(check));
        return HRESULT_FROM_WIN32(ERROR_INVALID_DATA);
    }
    return S_OK;
}

CameraBlob TarnCalibration::CreateIntrinsics(const MediaTypeList &mtList) const
{
    const std::vector<FrameGeometry> frames = DistinctFrames(mtList);
    if (!table || frames.empty())
    {
        return {};
    }
    std::vector<MFPinholeCameraIntrinsic_IntrinsicModel> models;
    models.reserve(frames.size());
    TRACE_INFO("Intrinsics Media types subset");
    for (const FrameGeometry &frame : frames)
    {
        TRACE_INFO("  %ux%u", frame.Width(), frame.Height());
        models.push_back(ModelOf(*table, frame));
    }
    const auto count = static_cast<UINT32>(models.size());
    constexpr std::size_t kModelsAt = offsetof(MFPinholeCameraIntrinsics, IntrinsicModels);
    const std::size_t modelBytes = models.size() * sizeof(models.front());
    std::vector<UINT8> bytes(kModelsAt + modelBytes);
    std::memcpy(bytes.data(), &count, sizeof(count));
    std::memcpy(bytes.data() + kModelsAt, models.data(), modelBytes);
    return MakeBlob(bytes.data(), bytes.size());
}

CameraBlob TarnCalibration::CreateFrameIntrinsics(const FrameGeometry &frame) const
{
    if (!table || frame.Width() == 0 || frame.Height() == 0)
    {
        return {};
    }
    MFPinholeCameraIntrinsics intrinsics{};
    intrinsics.IntrinsicModelCount = 1;
    intrinsics.IntrinsicModels[0] = ModelOf(*table, frame);
    return MakeBlob(&intrinsics, sizeof(intrinsics));
}

CameraBlob TarnCalibration::CreateExtrinsics(CameraPose pose) const
{
    if (!table)
    {
        return {};
    }
    const bool isOrigin = pose == CameraPose::Origin;
    const std::array<double, 3> position = isOrigin ? std::array<double, 3>{} : TranslationInMetres(*table);
    const Quaternion orientation = isOrigin ? Quaternion{} : QuaternionOf(table->rotation);
    MFCameraExtrinsics extrinsics{};
    extrinsics.TransformCount = 1;
    MFCameraExtrinsic_CalibratedTransform &transform = extrinsics.CalibratedTransforms[0];
    transform.CalibrationId = TARN_EXTRINSICS;
    transform.Position = {static_cast<FLOAT>(position[0]), static_cast<FLOAT>(position[1]),
                          static_cast<FLOAT>(position[2])};
    transform.Orientation = {static_cast<FLOAT>(orientation.x), static_cast<FLOAT>(orientation.y),
                             static_cast<FLOAT>(orientation.z), static_cast<FLOAT>(orientation.w)};
    return MakeBlob(&extrinsics, sizeof(extrinsics));
}

} // namespace mft_core
