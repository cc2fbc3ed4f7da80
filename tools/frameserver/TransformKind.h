// The module's transforms and their outputs, by name.
#pragma once

#include "platform/MediaFoundation.h"

namespace tarn_host
{

enum class TransformKind
{
    Depth,
    Color
};

// Outputs of the depth transform.
inline constexpr DWORD kDepthOutput = 0;
inline constexpr DWORD kInfraredOutput = 1;

const CLSID &ClassOf(TransformKind transform) noexcept;
const char *NameOf(TransformKind transform) noexcept;
// "depth", "infrared" or "color".
const char *NameOfOutput(TransformKind transform, DWORD outputId) noexcept;

} // namespace tarn_host
