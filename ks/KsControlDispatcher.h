// Table of the handlers for one kind of KS call.
#pragma once

#include "platform/MediaFoundation.h"

#include <memory>
#include <vector>

#include "ks/KsCallArguments.h"

namespace mft_core
{

// T is KsPropHandler, KsEventHandler or KsMethodHandler. Filled while the transform initializes and only read
// afterwards, without a lock. Immutable after Init.
template <class T>
class KsControlDispatcher
{
  public:
    KsControlDispatcher() = default;
    KsControlDispatcher(const KsControlDispatcher &) = delete;
    KsControlDispatcher &operator=(const KsControlDispatcher &) = delete;
    virtual ~KsControlDispatcher() = default;

    // Appends the handler. E_INVALIDARG for null; E_FAIL when one for the same set and id stands already (it stays).
    HRESULT RegisterHandler(const std::shared_ptr<T> &handler)
    {
        if (handler == nullptr)
        {
            return E_INVALIDARG;
        }
        for (const auto &listed : handlers)
        {
            if (listed->IsSameControl(*handler))
            {
                return E_FAIL;
            }
        }
        handlers.push_back(handler);
        return S_OK;
    }

    // Replaces the handler of what no other handler serves. E_INVALIDARG for null.
    HRESULT RegisterDefaultHandler(const std::shared_ptr<T> &handler)
    {
        if (handler == nullptr)
        {
            return E_INVALIDARG;
        }
        defaultHandler = handler;
        return S_OK;
    }

    // Result of the first handler, in order of registration, that serves the identifier; of the default handler when
    // none does; ERROR_SET_NOT_FOUND (0x492) as a plain number without that either.
    HRESULT Dispatch(const KSIDENTIFIER &identifier, const KsCallArguments &call)
    {
        for (const auto &handler : handlers)
        {
            if (handler->Handles(identifier))
            {
                return RunHandler(*handler, call);
            }
        }
        if (defaultHandler != nullptr)
        {
            return RunHandler(*defaultHandler, call);
        }
        return ERROR_SET_NOT_FOUND;
    }

  private:
    static HRESULT RunHandler(T &handler, const KsCallArguments &call)
    {
        return handler.Run(call.request, call.requestLength, call.data, call.dataLength, call.bytesReturned);
    }

  protected:
    std::vector<std::shared_ptr<T>> handlers;
    std::shared_ptr<T> defaultHandler;
};

} // namespace mft_core
