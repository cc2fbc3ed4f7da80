/* Attributes that tell which camera a depth transform serves: on the transform (IMFTransform::GetAttributes) and on its
   output streams. Absent when the camera's record did not check. Compiles alone as C11 and as C++. */
#ifndef TARN_DEVICE_ATTRIBUTES_H
#define TARN_DEVICE_ATTRIBUTES_H

#include "tarn/tarn_dmft.h"

/* Blob: TARN_DEVICE_INFO (tarn/device_info.h) as the camera sent it when the transform was initialised. */
TARN_GUID(TARN_DEVICE_INFO_RECORD, 0xAC0799EB, 0x3F31, 0x4BEE, 0x90, 0x87, 0x84, 0xD6, 0x54, 0xA2, 0xE0, 0x34);

/* Strings of that record. Characters that cannot be printed are question marks. */
TARN_GUID(TARN_DEVICE_PRODUCT_NAME, 0x2BD59C33, 0x0A73, 0x4F0D, 0x98, 0x0A, 0xD6, 0x1A, 0x9D, 0xC6, 0x3F, 0x0C);
TARN_GUID(TARN_DEVICE_SERIAL_NUMBER, 0x20F878F6, 0x92F1, 0x41C2, 0xAA, 0xB1, 0xA6, 0x29, 0x68, 0xC2, 0x61, 0xEF);
TARN_GUID(TARN_DEVICE_FIRMWARE_VERSION, 0x742A76D1, 0xA878, 0x49AF, 0x91, 0x98, 0x5E, 0x96, 0x83, 0x06, 0x94,
          0x18); /* "major.minor.patch.build" */

#endif
