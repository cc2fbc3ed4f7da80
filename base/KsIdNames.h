// Names of the camera's KS properties and events, by id, as their documentation has them. Needs no platform header.
#pragma once

#include <array>

namespace user_space_frameworks
{

// clang-format off
// Ids count up from 0 ("KSPROPERTY_CAMERACONTROL_EXTENDED_PROPERTY enumeration (ksmedia.h)").
inline constexpr auto kExtendedCameraControlNames = std::to_array<const char *>({
    "PHOTOMODE", "PHOTOFRAMERATE", "PHOTOMAXFRAMERATE", "PHOTOTRIGGERTIME", "WARMSTART", "MAXVIDFPS_PHOTORES",
    "PHOTOTHUMBNAIL", "SCENEMODE", "TORCHMODE", "FLASHMODE", "OPTIMIZATIONHINT", "WHITEBALANCEMODE", "EXPOSUREMODE",
    "FOCUSMODE", "ISO", "FIELDOFVIEW", "EVCOMPENSATION", "CAMERAANGLEOFFSET", "METADATA", "FOCUSPRIORITY", "FOCUSSTATE",
    "ROI_CONFIGCAPS", "ROI_ISPCONTROL", "PHOTOCONFIRMATION", "ZOOM", "MCC", "ISO_ADVANCED", "VIDEOSTABILIZATION", "VFR",
    "FACEDETECTION", "VIDEOHDR", "HISTOGRAM", "OIS", "ADVANCEDPHOTO", "PROFILE", "FACEAUTH_MODE", "SECURE_MODE",
    "VIDEOTEMPORALDENOISING", "IRTORCHMODE", "RELATIVEPANELOPTIMIZATION", "EYEGAZECORRECTION", "BACKGROUNDSEGMENTATION",
    "DIGITALWINDOW_CONFIGCAPS", "DIGITALWINDOW",
});
static_assert(kExtendedCameraControlNames.size() == 44);

// "KSPROPERTY_VIDCAP_CAMERACONTROL enumeration (ksmedia.h)".
inline constexpr auto kCameraControlNames = std::to_array<const char *>({
    "PAN", "TILT", "ROLL", "ZOOM", "EXPOSURE", "IRIS", "FOCUS", "SCANMODE", "PRIVACY", "PANTILT", "PAN_RELATIVE",
    "TILT_RELATIVE", "ROLL_RELATIVE", "ZOOM_RELATIVE", "EXPOSURE_RELATIVE", "IRIS_RELATIVE", "FOCUS_RELATIVE",
    "PANTILT_RELATIVE", "FOCAL_LENGTH", "AUTO_EXPOSURE_PRIORITY",
});

// "KSPROPERTY_VIDCAP_VIDEOPROCAMP enumeration (ksmedia.h)".
inline constexpr auto kVideoProcAmpNames = std::to_array<const char *>({
    "BRIGHTNESS", "CONTRAST", "HUE", "SATURATION", "SHARPNESS", "GAMMA", "COLORENABLE", "WHITEBALANCE",
    "BACKLIGHT_COMPENSATION", "GAIN", "DIGITAL_MULTIPLIER", "DIGITAL_MULTIPLIER_LIMIT", "WHITEBALANCE_COMPONENT",
    "POWERLINE_FREQUENCY",
});

// "KSEVENT_VIDCAPTOSTI enumeration (ksmedia.h)".
inline constexpr auto kVideoCaptureEventNames = std::to_array<const char *>({"EXT_TRIGGER", "AUTO_UPDATE", "SEARCH"});
// clang-format on

} // namespace user_space_frameworks
