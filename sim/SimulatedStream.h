// What the simulated filter tells about itself and its pins.
#pragma once

#include "platform/MediaFoundation.h"

#include "sim/CameraConfiguration.h"

namespace tarn_sim
{

// Both throw std::runtime_error when the platform fails.
ComPtr<IMFAttributes> MakeFilterAttributes(const CameraConfiguration &configuration);
ComPtr<IMFAttributes> MakePinAttributes(const PinConfiguration &pin);

// True when one of the pin's types has the same subtype, frame size and rate.
bool Offers(const PinConfiguration &pin, IMFMediaType *type);

// A copy that the caller may change; the result of the failing platform call otherwise.
HRESULT CopyType(IMFMediaType *source, IMFMediaType **copy);

} // namespace tarn_sim
