// Media Foundation and kernel-streaming headers in the order that works, with the transform methods under unique names.
#pragma once

#include <windows.h>

#include <mfobjects.h>

// IMFTransform and IMFDeviceTransform share twelve method names and answer differently. Newer SDK headers rename the
// IMFTransform ones under MFT_UNIQUE_METHOD_NAMES; this header set does not know the macro, so it is done by hand.
// The vtable is unchanged. Source: "IMFTransform interface (mftransform.h)", remarks on unique method names.
#define GetStreamLimits MFTGetStreamLimits
#define GetStreamCount MFTGetStreamCount
#define GetStreamIDs MFTGetStreamIDs
#define GetInputStreamInfo MFTGetInputStreamInfo
#define GetOutputStreamInfo MFTGetOutputStreamInfo
#define DeleteInputStream MFTDeleteInputStream
#define AddInputStreams MFTAddInputStreams
#define GetInputAvailableType MFTGetInputAvailableType
#define GetOutputAvailableType MFTGetOutputAvailableType
#define SetInputType MFTSetInputType
#define SetOutputType MFTSetOutputType
#define GetInputCurrentType MFTGetInputCurrentType
#define GetOutputCurrentType MFTGetOutputCurrentType
#define GetInputStatus MFTGetInputStatus
#define GetOutputStatus MFTGetOutputStatus
#define SetOutputBounds MFTSetOutputBounds
#define ProcessEvent MFTProcessEvent
#define ProcessMessage MFTProcessMessage
#define ProcessInput MFTProcessInput
#define ProcessOutput MFTProcessOutput
#include <mftransform.h>
#undef GetStreamLimits
#undef GetStreamCount
#undef GetStreamIDs
#undef GetInputStreamInfo
#undef GetOutputStreamInfo
#undef DeleteInputStream
#undef AddInputStreams
#undef GetInputAvailableType
#undef GetOutputAvailableType
#undef SetInputType
#undef SetOutputType
#undef GetInputCurrentType
#undef GetOutputCurrentType
#undef GetInputStatus
#undef GetOutputStatus
#undef SetOutputBounds
#undef ProcessEvent
#undef ProcessMessage
#undef ProcessInput
#undef ProcessOutput

#include <mfapi.h>
#include <mferror.h>
#include <mfidl.h>
#include <objidl.h>

// Kernel-streaming headers only after Media Foundation's: the other order redefines TIMECODE_SAMPLE.
#include <ks.h>
#include <ksmedia.h>
#include <devicetopology.h>

#include <wrl/client.h>

using Microsoft::WRL::ComPtr;
