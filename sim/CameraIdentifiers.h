// Identifiers of the simulated camera: media subtypes, extension-unit sets and controls, firmware opcodes.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstdint>

namespace tarn_sim
{

// clang-format off
inline constexpr GUID kSubtypeDepth              = {0x5A564E49, 0x2D90, 0x4A58, {0x92, 0x0B, 0x77, 0x3F, 0x1F, 0x2C, 0x55, 0x6B}}; // INVZ
inline constexpr GUID kSubtypeInfraredDepth      = {0x495A4E49, 0x1A66, 0xA242, {0x90, 0x65, 0xD0, 0x18, 0x14, 0xA8, 0xEF, 0x8A}}; // INZI
inline constexpr GUID kSubtypeConfidenceDepth    = {0x435A4E49, 0xB602, 0x480F, {0x97, 0x8C, 0xE4, 0xE8, 0x8A, 0xE8, 0x9B, 0x89}}; // INZC
inline constexpr GUID kSubtypeFaceLogin          = {0x52494150, 0x8536, 0x4841, {0xB6, 0xBF, 0x8F, 0xC6, 0xFF, 0xB0, 0x83, 0xA8}}; // PAIR
inline constexpr GUID kSubtypeYuy2               = {0x32595559, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}}; // YUY2
inline constexpr GUID kSubtypeD16                = {0x00000050, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
inline constexpr GUID kSubtypeL16                = {0x00000051, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

inline constexpr GUID kDepthExtensionUnit        = {0xA55751A1, 0xF3C5, 0x4A5E, {0x8D, 0x5A, 0x68, 0x54, 0xB8, 0xFA, 0x27, 0x16}};
inline constexpr GUID kColorExtensionUnit        = {0xB8EC416E, 0xA3AC, 0x4580, {0x8D, 0x5C, 0x0B, 0xEE, 0x15, 0x97, 0xE4, 0x3D}};
// clang-format on

// Controls of the depth extension unit.
inline constexpr ULONG kControlLaserPower = 1;
inline constexpr ULONG kControlAccuracy = 2;
inline constexpr ULONG kControlMotionVersusRange = 3;
inline constexpr ULONG kControlDepthError = 4;
inline constexpr ULONG kControlFilterOption = 5;
inline constexpr ULONG kControlConfidenceThreshold = 6;
inline constexpr ULONG kControlCommand = 7;
inline constexpr ULONG kControlCalibration = 8;

// Controls of the color extension unit.
inline constexpr ULONG kControlExposurePriority = 1;
inline constexpr ULONG kControlAutoFlicker = 2;
inline constexpr ULONG kControlColorError = 3;
inline constexpr ULONG kControlExposureGranularity = 4;

// Hardware-monitor commands that the firmware answers; every other opcode is refused.
inline constexpr std::uint32_t kOpcodeDeviceInfo = 0x3B;
inline constexpr std::uint32_t kOpcodeSetAutoRange = 0xA6;
inline constexpr std::uint32_t kOpcodeHdr = 0xD2;
inline constexpr std::uint32_t kOpcodeHdrConfiguration = 0xD4;
inline constexpr std::uint32_t kOpcodeEcho = 0xEC;   // answers the data sent, or its parameters over and over
inline constexpr std::uint32_t kOpcodeRecall = 0xED; // answers the data of the last echo that carried any
inline constexpr std::uint32_t kOpcodeRefused = 0xEE;

} // namespace tarn_sim
