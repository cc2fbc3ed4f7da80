#include "ks/KsEventsDispatcher.h"

namespace mft_core
{

HRESULT KsEventsDispatcher::ResetRegularEvent(KSEVENTDATA *eventData)
{
    for (const auto &handler : handlers)
    {
        if (handler->AttemptToResetRegularEvent(eventData) == S_OK)
        {
            return S_OK;
        }
    }
    return HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
}

} // namespace mft_core
