#include "tools/frameserver/FrameFormat.h"

#include <array>
#include <cctype>

#include "tools/command/ExitCode.h"
#include "base/HexText.h"

namespace tarn_host
{

namespace
{

struct KnownSubtype
{
    const GUID *subtype;
    const char *name;
    PixelKind pixels;
};

const std::array<KnownSubtype, 7> kKnownSubtypes{{{&MFVideoFormat_D16, "D16", PixelKind::Depth16},
                                                  {&MFVideoFormat_L8, "L8", PixelKind::Grey8},
                                                  {&MFVideoFormat_L16, "L16", PixelKind::Grey16},
                                                  {&MFVideoFormat_YUY2, "YUY2", PixelKind::Yuy2},
                                                  {&MFVideoFormat_NV12, "NV12", PixelKind::Nv12},
                                                  {&MFVideoFormat_RGB24, "RGB24", PixelKind::Rgb24},
                                                  {&MFVideoFormat_RGB32, "RGB32", PixelKind::Rgb32}}};

// Four printable characters where the subtype carries them, its first number otherwise.
std::string NameOf(const GUID &subtype)
{
    std::string name;
    for (unsigned shift = 0; shift < 32; shift += 8)
    {
        const auto character = static_cast<unsigned char>(subtype.Data1 >> shift);
        if (std::isprint(character) == 0)
        {
            return mft_utils::HexText(subtype.Data1);
        }
        name += static_cast<char>(character);
    }
    return name;
}

} // namespace

FrameFormat FrameFormat::Of(IMFMediaType &type)
{
    GUID subtype{};
    ThrowIfFailed(type.GetGUID(MF_MT_SUBTYPE, &subtype), "reading the subtype of a media type");

    FrameFormat format;
    format.subtypeName = NameOf(subtype);
    for (const KnownSubtype &known : kKnownSubtypes)
    {
        if (IsEqualGUID(*known.subtype, subtype))
        {
            format.subtypeName = known.name;
            format.pixels = known.pixels;
        }
    }
    UINT32 denominator = 0;
    UINT32 numerator = 0;
    if (FAILED(MFGetAttributeSize(&type, MF_MT_FRAME_SIZE, &format.size.width, &format.size.height)))
    {
        format.size = {};
    }
    if (SUCCEEDED(MFGetAttributeRatio(&type, MF_MT_FRAME_RATE, &numerator, &denominator)) && denominator != 0)
    {
        format.size.framesPerSecond = numerator / denominator;
    }
    return format;
}

std::string FrameFormat::ToText() const
{
    return subtypeName + " " + size.ToText();
}

} // namespace tarn_host
