#include "sim/FrameComposer.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

#include <tarn/tarn_formats.h>

#include "sim/FrameMetadata.h"
#include "base/ThrowIfFailed.h"

using mft_utils::ThrowIfFailed;

namespace tarn_sim
{

namespace
{
// The planes of a subtype, each taking a 16-bit plane's room.
struct Layout
{
    const GUID *subtype;
    std::array<Plane, 2> planes;
    std::uint32_t planeCount;
};

constexpr std::array kLayouts{
    Layout{&CUSTOM_GUID_KELP_Z, {Plane::DepthEighthMm}, 1},
    Layout{&MFVideoFormat_D16, {Plane::DepthEighthMm}, 1},
    Layout{&CUSTOM_GUID_KELP_ZI, {Plane::Infrared, Plane::DepthEighthMm}, 2},
    Layout{&CUSTOM_GUID_KELP_ZC, {Plane::Confidence, Plane::DepthEighthMm}, 2},
    Layout{&CUSTOM_GUID_KELP_FACE_LOGIN, {Plane::Infrared}, 1},
    Layout{&MFVideoFormat_L16, {Plane::Infrared}, 1},
    Layout{&MFVideoFormat_YUY2, {Plane::Yuy2}, 1},
};

const Layout *FindLayout(const GUID &subtype)
{
    const auto *const found = std::ranges::find_if(
        kLayouts, [&subtype](const Layout &layout) { return IsEqualGUID(*layout.subtype, subtype) != FALSE; });
    return found == kLayouts.end() ? nullptr : found;
}
} // namespace

bool operator==(const FrameFormat &left, const FrameFormat &right) noexcept
{
    return IsEqualGUID(left.subtype, right.subtype) && left.width == right.width && left.height == right.height &&
           left.interval100ns == right.interval100ns;
}

HRESULT ReadFrameFormat(IMFMediaType *type, FrameFormat &format)
{
    FrameFormat read;
    UINT32 numerator = 0;
    UINT32 denominator = 0;
    if (type == nullptr || FAILED(type->GetGUID(MF_MT_SUBTYPE, &read.subtype)) ||
        FAILED(MFGetAttributeSize(type, MF_MT_FRAME_SIZE, &read.width, &read.height)) ||
        FAILED(MFGetAttributeRatio(type, MF_MT_FRAME_RATE, &numerator, &denominator)) || numerator == 0 ||
        denominator == 0 || FrameBytes(read) == 0)
    {
        return MF_E_INVALIDTYPE;
    }
    read.interval100ns = std::int64_t{10000000} * denominator / numerator;
    format = read;
    return S_OK;
}

DWORD FrameBytes(const FrameFormat &format)
{
    constexpr UINT32 largestSide = 8192;
    const Layout *const layout = FindLayout(format.subtype);
    if (layout == nullptr || format.width > largestSide || format.height > largestSide)
    {
        return 0;
    }
    return format.width * format.height * 2 * layout->planeCount;
}

bool IsIlluminated(const FrameFormat &format, std::uint64_t frameNumber)
{
    return !IsEqualGUID(format.subtype, CUSTOM_GUID_KELP_FACE_LOGIN) || frameNumber % 2 == 0;
}

ComPtr<IMFSample> ComposeFrame(const FrameToCompose &frame, IFrameSource &source, const CameraControls &controls,
                               const std::shared_ptr<BufferAccount> &account)
{
    const FrameFormat &format = frame.format;
    const Layout *const layout = FindLayout(format.subtype);
    const DWORD size = FrameBytes(format);
    if (layout == nullptr || size == 0)
    {
        throw std::runtime_error("the media type has no frame layout");
    }
    const auto buffer =
        user_space_frameworks::MakeCom<CameraBuffer>(size, frame.guardPage, account); // zeroed, as fresh pages are
    const FrameRequest request{frame.number, format.width, format.height, IsIlluminated(format, frame.number)};
    const std::size_t planeBytes = std::size_t{size} / layout->planeCount;
    for (std::uint32_t i = 0; i < layout->planeCount; ++i)
    {
        source.Render(request, layout->planes.at(i), buffer->Data() + i * planeBytes);
    }
    if (frame.fault.isShort)
    {
        ThrowIfFailed(buffer->SetCurrentLength(size / 2), "SetCurrentLength");
    }

    ComPtr<IMFSample> sample;
    ThrowIfFailed(MFCreateSample(&sample), "MFCreateSample");
    ThrowIfFailed(sample->AddBuffer(buffer.Get()), "AddBuffer");
    ThrowIfFailed(sample->SetSampleTime(frame.time100ns), "SetSampleTime");
    ThrowIfFailed(sample->SetSampleDuration(format.interval100ns), "SetSampleDuration");
    AttachMetadata(sample.Get(), MakeRecord(frame, request.illuminated, controls), frame.fault.metadata);
    return sample;
}

} // namespace tarn_sim
