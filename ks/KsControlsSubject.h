// List of observers that hear about KS calls before and after they run.
#pragma once

#include <memory>

#include "ks/IKsControlsObserver.h"
#include "ks/KsCallArguments.h"
#include "ks/ObserverList.h"
#include "base/Object.h"

namespace mft_core
{

// The most derived class names the Object. Thread-safe; no lock is held while observers run.
class KsControlsSubject : public virtual user_space_frameworks::Object
{
  public:
    KsControlsSubject();

    // Appends the observer; it is notified in order of registration. E_INVALIDARG for null.
    HRESULT RegisterKsControlsObserver(std::shared_ptr<IKsControlsObserver> observer);

    // Removes its first registration. ERROR_NOT_FOUND as an HRESULT when there is none. A notification that began
    // before may still reach it.
    HRESULT UnregisterKsControlsObserver(const std::shared_ptr<IKsControlsObserver> &observer);

  private:
    using Observers = ObserverList<IKsControlsObserver>::Observers;

  protected:
    // Notifies the entry, runs `call` and notifies the exit, all to the same observers. Returns the call's result,
    // unchanged; an observer that throws is traced and does not disturb the call.
    template <class Call>
    HRESULT Observed(KsControlType type, const KsCallArguments &arguments, Call &&call)
    {
        const std::shared_ptr<const Observers> watching = observers.Snapshot();
        NotifyEntry(*watching, type, arguments);
        const HRESULT result = call();
        NotifyExit(*watching, type, arguments, result);
        return result;
    }

  private:
    static void NotifyEntry(const Observers &watching, KsControlType type, const KsCallArguments &call) noexcept;
    static void NotifyExit(const Observers &watching, KsControlType type, const KsCallArguments &call,
                           HRESULT result) noexcept;

    ObserverList<IKsControlsObserver> observers;
};

} // namespace mft_core
