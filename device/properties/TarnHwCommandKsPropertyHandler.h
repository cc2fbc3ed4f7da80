// Private property: raw firmware commands of applications.
#pragma once

#include <memory>

#include "ks/IFirmwareCommandPipe.h"
#include "ks/KsCallHandler.h"

namespace mft_core
{

// Thread-safe.
class TarnHwCommandKsPropertyHandler : public KsPropHandler
{
  public:
    explicit TarnHwCommandKsPropertyHandler(std::shared_ptr<IFirmwareCommandPipe> pipe);

    // Get and set, KSPROPERTY_TARN_HW_COMMAND followed by its buffer; the returned size is that of both.
    // ERROR_MORE_DATA as an HRESULT when the data is shorter, E_POINTER without data or pipe, E_INVALIDARG for other
    // requests, the pipe's failures. Throws std::invalid_argument for a set of more than 1000 bytes.
    HRESULT Run(PKSPROPERTY pProperty, ULONG ulPropertyLength, LPVOID pvPropertyData, ULONG ulDataLength,
                ULONG *pBytesReturned) override;

  private:
    const std::shared_ptr<IFirmwareCommandPipe> fwCommandPipe;
};

} // namespace mft_core
