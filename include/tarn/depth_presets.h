/* Depth presets: named settings of the depth camera, and the payload of the private property that selects one.
   C and C++. */
#ifndef TARN_DEPTH_PRESETS_H
#define TARN_DEPTH_PRESETS_H

#include <stdint.h>

/* Every id that is not listed is refused. */
typedef enum TARN_DEPTH_PRESET
{
    TARN_DEPTH_PRESET_DEFAULT = 0,       /* in force after start */
    TARN_DEPTH_PRESET_CLOSE_UP = 1,      /* 20 to 60 cm */
    TARN_DEPTH_PRESET_LONG_DISTANCE = 2, /* up to 2 m, slower */
    TARN_DEPTH_PRESET_STILL_SCENE = 3,   /* least noise, for things that do not move */
    TARN_DEPTH_PRESET_FAST_MOTION = 4,   /* least blur */
    TARN_DEPTH_PRESET_HIGH_CONTRAST = 5, /* very dark and very bright surfaces together */
    TARN_DEPTH_PRESET_LOW_POWER = 6,     /* weak laser */
    TARN_DEPTH_PRESET_FACE_LOGIN = 14    /* in force while face-login frames stream */
} TARN_DEPTH_PRESET;

/* Payload of KSPROPERTY_TARN_DMFT_CONTROL_DEPTH_PRESETS, get and set. */
typedef struct KSPROPERTY_TARN_DEPTH_PRESET
{
    uint32_t preset; /* TARN_DEPTH_PRESET */
} KSPROPERTY_TARN_DEPTH_PRESET;

#ifdef __cplusplus
static_assert(sizeof(KSPROPERTY_TARN_DEPTH_PRESET) == 4, "fixed layout");
#else
_Static_assert(sizeof(KSPROPERTY_TARN_DEPTH_PRESET) == 4, "fixed layout");
#endif

#endif
