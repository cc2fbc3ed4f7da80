// Bases of the handlers that serve KS properties and methods, and of KsEventHandler.
#pragma once

#include <string>
#include <utility>

#include "ks/KsControlHandler.h"

namespace mft_core
{

// Derive, pass set, id and name, override Run. Thread-safe as far as the derived class is.
template <KsControlKind kind>
class KsCallHandler : public KsControlHandler
{
  public:
    KsCallHandler(const GUID &set, ULONG id, std::string handlerName, ComPtr<IKsControl> ksControl = nullptr)
        : KsControlHandler(set, id, kind, std::move(handlerName), std::move(ksControl))
    {
    }

    // Gets the caller's arguments untouched, except that the identifier is known to hold 24 bytes: lengths and pointers
    // are the handler's to check. The base serves nothing: ERROR_SET_NOT_FOUND (0x492) as a plain number.
    virtual HRESULT Run(KSIDENTIFIER * /*request*/, ULONG /*requestLength*/, LPVOID /*data*/, ULONG /*dataLength*/,
                        ULONG * /*bytesReturned*/)
    {
        return ERROR_SET_NOT_FOUND;
    }
};

using KsPropHandler = KsCallHandler<KsControlKind::Property>;
using KsMethodHandler = KsCallHandler<KsControlKind::Method>;

} // namespace mft_core
