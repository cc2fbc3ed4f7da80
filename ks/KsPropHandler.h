// Base of the handlers that serve KS properties.
#pragma once

#include "ks/KsControlHandler.h"

namespace mft_core
{

// Derive, pass set, id and name, override Run. Thread-safe as far as the derived class is.
class KsPropHandler : public KsControlHandler
{
  public:
    KsPropHandler(const GUID &set, ULONG id, std::string handlerName, ComPtr<IKsControl> ksControl = nullptr);

    // Gets the caller's arguments untouched, except that the identifier is known to hold 24 bytes: lengths and pointers
    // are the handler's to check. The base serves nothing: ERROR_SET_NOT_FOUND (0x492) as a plain number.
    virtual HRESULT Run(PKSPROPERTY pProperty, ULONG ulPropertyLength, LPVOID pvPropertyData, ULONG ulDataLength,
                        ULONG *pulBytesReturned);
};

} // namespace mft_core
