/* Per-frame metadata record of the Tarn camera: the payload of its custom metadata item. Compiles alone as C11 and as
   C++. */
#ifndef TARN_FRAME_METADATA_H
#define TARN_FRAME_METADATA_H

#include <assert.h>
#include <stdint.h>

/* Id of the metadata item whose payload is the record. */
#define TARN_FRAME_METADATA_ITEM_ID 0x80000000u

#define TARN_FRAME_METADATA_MAGIC 0x444D4654u /* "TFMD" in memory */
#define TARN_FRAME_METADATA_VERSION 1u

/* Bits of TARN_FRAME_METADATA::flags. */
#define TARN_FRAME_FLAG_CONFIDENCE_SUPPRESSED 0x01u /* the confidence plane holds nothing of use */
#define TARN_FRAME_FLAG_PRIVACY 0x02u               /* the camera's privacy control is on */
#define TARN_FRAME_FLAG_HDR 0x04u                   /* captured with high dynamic range */

/* Little-endian, 64 bytes, no padding. Later versions only append; `size` tells how much there is. */
typedef struct TARN_FRAME_METADATA
{
    uint32_t magic;              /*  0 */
    uint8_t version;             /*  4 */
    uint8_t flags;               /*  5  TARN_FRAME_FLAG_... */
    uint16_t size;               /*  6  of this record in bytes */
    uint64_t frameCounter;       /*  8  frames captured by the pin, from 0, dropped ones included */
    int64_t timestamp100ns;      /* 16  start of the exposure, in the sample's time */
    uint32_t exposureUs;         /* 24 */
    uint32_t gain256;            /* 28  sensor gain, 256 = 1.0 */
    uint16_t width;              /* 32  pixels */
    uint16_t height;             /* 34 */
    uint32_t formatFourCc;       /* 36  first four bytes of the media subtype */
    uint32_t frameInterval100ns; /* 40 */
    int16_t temperatureDeciC;    /* 44  of the laser, tenths of a degree Celsius */
    uint16_t errorCode;          /* 46  of the firmware, 0 = none */
    uint8_t illumination;        /* 48  1 = the laser was on during the exposure */
    uint8_t laserPower;          /* 49  extension-unit control values in force, 49 to 53 */
    uint8_t accuracy;            /* 50 */
    uint8_t motionVersusRange;   /* 51 */
    uint8_t filterOption;        /* 52 */
    uint8_t confidenceThreshold; /* 53 */
    uint8_t reserved[10];        /* 54  zero */
} TARN_FRAME_METADATA;

static_assert(sizeof(TARN_FRAME_METADATA) == 64, "fixed layout");

#endif /* TARN_FRAME_METADATA_H */
