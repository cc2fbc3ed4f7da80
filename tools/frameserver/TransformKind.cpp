#include "tools/frameserver/TransformKind.h"

namespace tarn_host
{

namespace
{
constexpr CLSID kDepthTransform{0x7F9DF308, 0x0F2D, 0x432E, {0x8C, 0x8E, 0xD3, 0x6E, 0xD8, 0xF1, 0x2C, 0x90}};
constexpr CLSID kColorTransform{0x01BC2102, 0x6449, 0x429F, {0x8F, 0x62, 0xB8, 0xD2, 0x3D, 0x1D, 0xE6, 0xD3}};
} // namespace

const CLSID &ClassOf(TransformKind transform) noexcept
{
    return transform == TransformKind::Depth ? kDepthTransform : kColorTransform;
}

const char *NameOf(TransformKind transform) noexcept
{
    return transform == TransformKind::Depth ? "depth" : "color";
}

const char *NameOfOutput(TransformKind transform, DWORD outputId) noexcept
{
    if (transform == TransformKind::Color)
    {
        return "color";
    }
    return outputId == kDepthOutput ? "depth" : "infrared";
}

} // namespace tarn_host
