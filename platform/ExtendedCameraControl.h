// Extended camera controls ("Extended camera controls", ksmedia.h).
#pragma once

#include "platform/MediaFoundation.h"

inline constexpr GUID KSPROPERTYSETID_ExtendedCameraControl = {
    0x1CB79112, 0xC0D2, 0x4213, {0x9C, 0xA6, 0xCD, 0x4F, 0xDB, 0x92, 0x79, 0x72}};

inline constexpr ULONG KSPROPERTY_CAMERACONTROL_EXTENDED_WARMSTART = 4;
inline constexpr ULONG KSPROPERTY_CAMERACONTROL_EXTENDED_FACEAUTH_MODE = 35;

struct KSCAMERA_EXTENDEDPROP_HEADER
{
    ULONG Version;
    ULONG PinId;
    ULONG Size;
    ULONG Result;
    ULONGLONG Flags;
    ULONGLONG Capability;
};
static_assert(sizeof(KSCAMERA_EXTENDEDPROP_HEADER) == 32);

struct KSCAMERA_EXTENDEDPROP_VALUE
{
    union {
        double dbl;
        ULONGLONG ull;
        ULONG ul;
        ULARGE_INTEGER ratio;
        LONG l;
        LONGLONG ll;
    } Value;
};
static_assert(sizeof(KSCAMERA_EXTENDEDPROP_VALUE) == 8);

inline constexpr ULONG KSCAMERA_EXTENDEDPROP_FILTERSCOPE = 0xFFFFFFFF;
inline constexpr ULONGLONG KSCAMERA_EXTENDEDPROP_CAPS_ASYNCCONTROL = 0x8000000000000000;
inline constexpr ULONGLONG KSCAMERA_EXTENDEDPROP_WARMSTART_MODE_DISABLED = 0;
inline constexpr ULONGLONG KSCAMERA_EXTENDEDPROP_WARMSTART_MODE_ENABLED = 1;
inline constexpr ULONGLONG KSCAMERA_EXTENDEDPROP_FACEAUTH_MODE_DISABLED = 1;
inline constexpr ULONGLONG KSCAMERA_EXTENDEDPROP_FACEAUTH_MODE_ALTERNATIVE_FRAME_ILLUMINATION = 2;
