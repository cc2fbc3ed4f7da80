/* Calibration table of the Tarn camera, as control 8 of its extension units answers it. C and C++. */
#ifndef TARN_CALIBRATION_TABLE_H
#define TARN_CALIBRATION_TABLE_H

#include <stdint.h>

#define TARN_CALIBRATION_CONTROL 8u /* of the depth and the color extension unit; read only */

#define TARN_CALIBRATION_MAGIC 0x4C414354u /* "TCAL" in memory */
#define TARN_CALIBRATION_VERSION 1u

#pragma pack(push, 1)

/* Little-endian, 104 bytes. Lengths are in pixels of the reference size unless stated. */
typedef struct TARN_CALIBRATION_TABLE
{
    uint32_t magic;           /*   0 */
    uint16_t version;         /*   4 */
    uint16_t size;            /*   6  of the table in bytes, checksum included */
    uint32_t referenceWidth;  /*   8  4:3 */
    uint32_t referenceHeight; /*  12 */
    float focalLengthX;       /*  16 */
    float focalLengthY;       /*  20 */
    float principalPointX;    /*  24  from the centre of the top left pixel */
    float principalPointY;    /*  28 */
    float radialK1;           /*  32 */
    float radialK2;           /*  36 */
    float radialK3;           /*  40 */
    float tangentialP1;       /*  44 */
    float tangentialP2;       /*  48 */
    float rotation[9];        /*  52  depth to color camera, row by row */
    float translationMm[3];   /*  88  depth camera's origin in the color camera's axes */
    uint32_t checksum;        /* 100  CRC-32 (ISO 3309) of all bytes before */
} TARN_CALIBRATION_TABLE;

#pragma pack(pop)

#ifdef __cplusplus
static_assert(sizeof(TARN_CALIBRATION_TABLE) == 104, "fixed layout");
#else
_Static_assert(sizeof(TARN_CALIBRATION_TABLE) == 104, "fixed layout");
#endif

#endif
