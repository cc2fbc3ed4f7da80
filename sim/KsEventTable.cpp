#include "sim/KsEventTable.h"

#include <algorithm>

namespace tarn_sim
{

KsEventTable::~KsEventTable()
{
    for (const auto &listener : listeners)
    {
        CloseHandle(listener.event);
    }
}

HRESULT KsEventTable::Enable(const KSEVENTDATA *listener, bool oneShot)
{
    if (listener->NotificationType != KSEVENTF_EVENT_HANDLE || listener->EventHandle.Event == nullptr ||
        listener->EventHandle.Event == INVALID_HANDLE_VALUE)
    {
        return E_INVALIDARG;
    }
    HANDLE duplicate = nullptr;
    if (DuplicateHandle(GetCurrentProcess(), listener->EventHandle.Event, GetCurrentProcess(), &duplicate, 0, FALSE,
                        DUPLICATE_SAME_ACCESS) == FALSE)
    {
        return HRESULT_FROM_WIN32(GetLastError());
    }
    const std::scoped_lock guard(lock);
    listeners.push_back({listener, duplicate, oneShot});
    return S_OK;
}

HRESULT KsEventTable::Disable(const void *listener)
{
    const std::scoped_lock guard(lock);
    const auto found = std::ranges::find(listeners, listener, &Listener::block);
    if (found == listeners.end())
    {
        return HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
    }
    CloseHandle(found->event);
    listeners.erase(found);
    return S_OK;
}

std::uint32_t KsEventTable::SignalAll()
{
    const std::scoped_lock guard(lock);
    const auto count = static_cast<std::uint32_t>(listeners.size());
    for (const auto &listener : listeners)
    {
        SetEvent(listener.event);
    }
    std::erase_if(listeners, [](const Listener &listener) {
        if (listener.oneShot)
        {
            CloseHandle(listener.event);
        }
        return listener.oneShot;
    });
    return count;
}

std::uint32_t KsEventTable::Count() const
{
    const std::scoped_lock guard(lock);
    return static_cast<std::uint32_t>(listeners.size());
}

} // namespace tarn_sim
