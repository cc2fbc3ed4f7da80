/* What the error control of the camera's extension units answers: one byte, the latest error since the camera started.
   C and C++. */
#ifndef TARN_FIRMWARE_ERRORS_H
#define TARN_FIRMWARE_ERRORS_H

typedef enum TARN_FIRMWARE_ERROR
{
    TARN_FIRMWARE_ERROR_NONE = 0,
    TARN_FIRMWARE_ERROR_LASER_TEMPERATURE = 1, /* too hot, the laser is dimmed or off */
    TARN_FIRMWARE_ERROR_LASER_CURRENT = 2,     /* out of its limits, the laser is off */
    TARN_FIRMWARE_ERROR_PROJECTOR = 3,         /* does not move as it should, the laser is off */
    TARN_FIRMWARE_ERROR_SENSOR = 4,            /* does not answer */
    TARN_FIRMWARE_ERROR_CALIBRATION = 5,       /* the table in flash memory does not check */
    TARN_FIRMWARE_ERROR_FLASH = 6,             /* could not be read or written */
    TARN_FIRMWARE_ERROR_USB_BANDWIDTH = 7,     /* frames were dropped in the camera */
    TARN_FIRMWARE_ERROR_WATCHDOG = 8           /* the firmware restarted by itself */
} TARN_FIRMWARE_ERROR;

#endif
