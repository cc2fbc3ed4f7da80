// Numbers as the simulated camera's controls and firmware take them.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstdint>

#include <tarn/calibration_table.h>
#include <tarn/tarn_dmft.h>

namespace tarn_sim
{

// Controls of the depth extension unit.
inline constexpr auto kControlLaserPower = static_cast<ULONG>(KSPROPERTY_XU_TARN_DEPTH::LASER_POWER);
inline constexpr auto kControlAccuracy = static_cast<ULONG>(KSPROPERTY_XU_TARN_DEPTH::ACCURACY);
inline constexpr auto kControlMotionVersusRange = static_cast<ULONG>(KSPROPERTY_XU_TARN_DEPTH::MOTION_VS_RANGE_TRADE);
inline constexpr auto kControlDepthError = static_cast<ULONG>(KSPROPERTY_XU_TARN_DEPTH::XU_ERROR);
inline constexpr auto kControlFilterOption = static_cast<ULONG>(KSPROPERTY_XU_TARN_DEPTH::FILTER_OPTION);
inline constexpr auto kControlConfidenceThreshold = static_cast<ULONG>(KSPROPERTY_XU_TARN_DEPTH::CONFIDENCE_THRESHHOLD);
inline constexpr auto kControlCommand = static_cast<ULONG>(KSPROPERTY_XU_TARN_DEPTH::COMMAND);
inline constexpr ULONG kControlCalibration = TARN_CALIBRATION_CONTROL; // of both extension units

// Controls of the color extension unit.
inline constexpr auto kControlExposurePriority = static_cast<ULONG>(KSPROPERTY_XU_TARN_COLOR::EXPOSURE_PRIORITY);
inline constexpr auto kControlAutoFlicker = static_cast<ULONG>(KSPROPERTY_XU_TARN_COLOR::AUTO_FLICKER);
inline constexpr auto kControlColorError = static_cast<ULONG>(KSPROPERTY_XU_TARN_COLOR::XU_ERROR);
inline constexpr auto kControlExposureGranularity = static_cast<ULONG>(KSPROPERTY_XU_TARN_COLOR::EXPOSURE_GRANULARITY);

// Firmware commands that the transform does not send itself.
inline constexpr std::uint32_t kOpcodeEcho = 0xEC;   // answers the data sent, or its parameters over and over
inline constexpr std::uint32_t kOpcodeRecall = 0xED; // answers the data of the last echo that carried any

} // namespace tarn_sim
