/* The camera's answer to the device-information command (opcode 59). C and C++. */
#ifndef TARN_DEVICE_INFO_H
#define TARN_DEVICE_INFO_H

#include <stdint.h>

#define TARN_DEVICE_INFO_VERSION 1u

#pragma pack(push, 1)

/* Little-endian, 174 bytes. Texts are ASCII, padded with zeros and not terminated when they fill their field. */
typedef struct TARN_DEVICE_INFO
{
    uint16_t version;             /*   0 */
    uint16_t size;                /*   2  of the record in bytes, checksum included */
    char serialNumber[16];        /*   4 */
    char productName[32];         /*  20 */
    uint8_t firmwareVersion[4];   /*  52  major, minor, patch, build */
    uint8_t controllerVersion[4]; /*  56  of the USB controller's firmware */
    uint32_t hardwareRevision;    /*  60 */
    char sensorSerial[16];        /*  64 */
    char laserSerial[16];         /*  80 */
    uint32_t moduleState;         /*  96  0 = operational */
    uint64_t calibrationTime;     /* 100  seconds since 1970-01-01 UTC */
    uint32_t calibrationVersion;  /* 108 */
    int16_t temperatureDeciC;     /* 112  tenths of a degree Celsius */
    uint8_t reserved[56];         /* 114  zero */
    uint32_t checksum;            /* 170  CRC-32 (ISO 3309) of all bytes before */
} TARN_DEVICE_INFO;

#pragma pack(pop)

#ifdef __cplusplus
static_assert(sizeof(TARN_DEVICE_INFO) == 174, "fixed layout");
#else
_Static_assert(sizeof(TARN_DEVICE_INFO) == 174, "fixed layout");
#endif

#endif
