/* Application interface of the Tarn device transforms: private properties, payloads, sample attributes and the camera's
   extension-unit controls. Compiles alone as C11 and as C++. All integers are little-endian, all layouts are fixed. */
#ifndef TARN_DMFT_H
#define TARN_DMFT_H

#include <assert.h>
#include <stdint.h>

#include <guiddef.h>

#if defined(__cplusplus) && __cplusplus >= 201703L
#define TARN_GUID(name, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8)                                                     \
    inline constexpr GUID name = {l, w1, w2, {b1, b2, b3, b4, b5, b6, b7, b8}}
#else
#define TARN_GUID(name, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8)                                                     \
    static const GUID name = {l, w1, w2, {b1, b2, b3, b4, b5, b6, b7, b8}}
#endif

/* Private property set of the depth transform. Send requests through IKsControl::KsProperty with a 24-byte KSPROPERTY;
   Flags is KSPROPERTY_TYPE_GET (1) or KSPROPERTY_TYPE_SET (2). A buffer that is too short gives
   HRESULT_FROM_WIN32(ERROR_MORE_DATA) and the needed size. */
TARN_GUID(KSPROPERTYSETID_TARN_DMFT_CONTROL, 0xF84AB655, 0x8931, 0x42BD, 0x8C, 0x04, 0x8A, 0xE2, 0x88, 0x14, 0x54,
          0xFE);

typedef enum KSPROPERTY_TARN_DMFT_CONTROL
{
    KSPROPERTY_TARN_DMFT_CONTROL_API_VERSION = 0,    /* get: KSPROPERTY_TARN_API_VERSION */
    KSPROPERTY_TARN_DMFT_CONTROL_DEPTH_PRESETS = 1,  /* get, set */
    KSPROPERTY_TARN_DMFT_CONTROL_CONFIDENCE_MAP = 2, /* get, set: KSPROPERTY_TARN_CONFIDENCE_MAP_CFG */
    KSPROPERTY_TARN_DMFT_CONTROL_HW_COMMAND = 3      /* get, set: KSPROPERTY_TARN_HW_COMMAND and its buffer */
} KSPROPERTY_TARN_DMFT_CONTROL;

#define TARN_API_VERSION_FIRST 0u
#define TARN_API_VERSION_SECOND 7u

typedef struct KSPROPERTY_TARN_API_VERSION
{
    uint32_t first;  /* TARN_API_VERSION_FIRST */
    uint32_t second; /* TARN_API_VERSION_SECOND */
} KSPROPERTY_TARN_API_VERSION;
static_assert(sizeof(KSPROPERTY_TARN_API_VERSION) == 8, "fixed layout");

typedef struct KSPROPERTY_TARN_CONFIDENCE_MAP_CFG
{
    uint32_t confidenceMapCfg; /* set: any value but 0 enables; get: 1 enabled, 0 disabled */
} KSPROPERTY_TARN_CONFIDENCE_MAP_CFG;
static_assert(sizeof(KSPROPERTY_TARN_CONFIDENCE_MAP_CFG) == 4, "fixed layout");

/* Header of a raw firmware command. `bufferLength` bytes follow it: what a set sends (at most 1000), where a get puts
   the answer (at most 1020). */
typedef struct KSPROPERTY_TARN_HW_COMMAND
{
    uint32_t opCode;
    uint32_t bufferLength;
    uint32_t param1;
    uint32_t param2;
    uint32_t param3;
    uint32_t param4;
} KSPROPERTY_TARN_HW_COMMAND;
static_assert(sizeof(KSPROPERTY_TARN_HW_COMMAND) == 24, "fixed layout");

#define TARN_HW_COMMAND_MAX_SET 1000u
#define TARN_HW_COMMAND_MAX_GET 1020u

/* Firmware command numbers that the transform itself sends. */
typedef enum TarnHWmonitorCommands
{
    HWmonitor_GetDeviceInfo = 59,
    HWmonitor_SetAutoRange = 166,
    HWmonitor_HDRSet = 210,
    HWmonitor_HDRConfigSet = 212
} TarnHWmonitorCommands;

/* Blob on a depth sample while the confidence map is enabled: 2 * width * height bytes, of which the first
   width * height hold one confidence of 0 to 15 per pixel. */
TARN_GUID(ORRIN_SAMPLE_TARN_CONFIDENCE_MAP, 0xFB5019B1, 0x2CBA, 0x4E3A, 0xBE, 0x31, 0x24, 0x51, 0x39, 0x7D, 0xB0, 0xB8);

/* Calibration id in the camera extrinsics of a stream or a sample. */
TARN_GUID(TARN_EXTRINSICS, 0x43F99C3A, 0xB957, 0x40F4, 0x89, 0x20, 0xE3, 0x07, 0x14, 0x4F, 0xA1, 0x3A);

/* Extension units of the camera's filters; all ids of these sets are passed on to the camera. */
TARN_GUID(KSPROPERTYSETID_TARN_DEPTH_CONTROL, 0xA55751A1, 0xF3C5, 0x4A5E, 0x8D, 0x5A, 0x68, 0x54, 0xB8, 0xFA, 0x27,
          0x16);
TARN_GUID(KSPROPERTYSETID_TARN_COLOR_CONTROL, 0xB8EC416E, 0xA3AC, 0x4580, 0x8D, 0x5C, 0x0B, 0xEE, 0x15, 0x97, 0xE4,
          0x3D);

/* Control ids: KSPROPERTY_XU_TARN_DEPTH::LASER_POWER in C++, KSPROPERTY_XU_TARN_DEPTH_LASER_POWER in C. Both units have
   an XU_ERROR, so the plain names cannot stand side by side. THRESHHOLD is spelled so in the interface. */
#define TARN_DEPTH_CONTROLS(CONTROL)                                                                                   \
    CONTROL(KSPROPERTY_XU_TARN_DEPTH, LASER_POWER, 1)                                                                  \
    CONTROL(KSPROPERTY_XU_TARN_DEPTH, ACCURACY, 2)                                                                     \
    CONTROL(KSPROPERTY_XU_TARN_DEPTH, MOTION_VS_RANGE_TRADE, 3)                                                        \
    CONTROL(KSPROPERTY_XU_TARN_DEPTH, XU_ERROR, 4)                                                                     \
    CONTROL(KSPROPERTY_XU_TARN_DEPTH, FILTER_OPTION, 5)                                                                \
    CONTROL(KSPROPERTY_XU_TARN_DEPTH, CONFIDENCE_THRESHHOLD, 6)                                                        \
    CONTROL(KSPROPERTY_XU_TARN_DEPTH, COMMAND, 7)

#define TARN_COLOR_CONTROLS(CONTROL)                                                                                   \
    CONTROL(KSPROPERTY_XU_TARN_COLOR, EXPOSURE_PRIORITY, 1)                                                            \
    CONTROL(KSPROPERTY_XU_TARN_COLOR, AUTO_FLICKER, 2)                                                                 \
    CONTROL(KSPROPERTY_XU_TARN_COLOR, XU_ERROR, 3)                                                                     \
    CONTROL(KSPROPERTY_XU_TARN_COLOR, EXPOSURE_GRANULARITY, 4)

#ifdef __cplusplus
#define TARN_CONTROL_ID(set, control, id) control = id,
enum class KSPROPERTY_XU_TARN_DEPTH : uint32_t
{
    TARN_DEPTH_CONTROLS(TARN_CONTROL_ID)
};
enum class KSPROPERTY_XU_TARN_COLOR : uint32_t
{
    TARN_COLOR_CONTROLS(TARN_CONTROL_ID)
};
#else
#define TARN_CONTROL_ID(set, control, id) set##_##control = id,
typedef enum KSPROPERTY_XU_TARN_DEPTH
{
    TARN_DEPTH_CONTROLS(TARN_CONTROL_ID)
} KSPROPERTY_XU_TARN_DEPTH;
typedef enum KSPROPERTY_XU_TARN_COLOR
{
    TARN_COLOR_CONTROLS(TARN_CONTROL_ID)
} KSPROPERTY_XU_TARN_COLOR;
#endif
#undef TARN_CONTROL_ID

#endif /* TARN_DMFT_H */
