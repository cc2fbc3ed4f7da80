/* Attributes of our own on output samples. Compiles alone as C11 and as C++. */
#ifndef TARN_SAMPLE_ATTRIBUTES_H
#define TARN_SAMPLE_ATTRIBUTES_H

#include "tarn/tarn_dmft.h"

/* Blob: TARN_FRAME_METADATA (tarn/frame_metadata.h), the camera's record of this frame. Absent when the camera sent
   none that holds. */
TARN_GUID(TARN_SAMPLE_FRAME_METADATA, 0x9D3C5A0E, 0x6B71, 0x4F0B, 0xA3, 0x55, 0x1E, 0x8C, 0x27, 0xD4, 0x90, 0x6A);

#endif
