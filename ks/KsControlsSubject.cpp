#include "ks/KsControlsSubject.h"

#include <utility>

#include "trace/Guard.h"

namespace mft_core
{

// The name here is only used by a subject that is nobody's base; the most derived class gives its own.
KsControlsSubject::KsControlsSubject() : Object("KS controls subject") {}

HRESULT KsControlsSubject::RegisterKsControlsObserver(std::shared_ptr<IKsControlsObserver> observer)
{
    return observers.Add(std::move(observer));
}

HRESULT KsControlsSubject::UnregisterKsControlsObserver(const std::shared_ptr<IKsControlsObserver> &observer)
{
    return observers.Remove(observer);
}

void KsControlsSubject::NotifyEntry(const Observers &watching, KsControlType type, const KsCallArguments &call) noexcept
{
    for (const auto &observer : watching)
    {
        mft_utils::Guarded([&] {
            observer->OnKsControlEntry(type, call.request, call.requestLength, call.data, call.dataLength,
                                       call.bytesReturned);
            return S_OK;
        });
    }
}

void KsControlsSubject::NotifyExit(const Observers &watching, KsControlType type, const KsCallArguments &call,
                                   HRESULT result) noexcept
{
    for (const auto &observer : watching)
    {
        mft_utils::Guarded([&] {
            observer->OnKsControlExit(type, call.request, call.requestLength, call.data, call.dataLength,
                                      call.bytesReturned, result);
            return S_OK;
        });
    }
}

} // namespace mft_core
