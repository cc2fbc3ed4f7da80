// List of shared observers that may change while they are being notified.
#pragma once

#include "platform/MediaFoundation.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "base/CriticalSection.h"

namespace mft_core
{

// The list is replaced, never changed: a notification under way keeps its observers alive and needs no lock.
// Thread-safe.
template <class Observer>
class ObserverList
{
  public:
    using Observers = std::vector<std::shared_ptr<Observer>>;

    // Appends. E_INVALIDARG for null.
    HRESULT Add(std::shared_ptr<Observer> observer)
    {
        if (observer == nullptr)
        {
            return E_INVALIDARG;
        }
        const std::scoped_lock guard(lock);
        auto changed = std::make_shared<Observers>(*observers);
        changed->push_back(std::move(observer));
        observers = std::move(changed);
        return S_OK;
    }

    // Removes the first registration. ERROR_NOT_FOUND as an HRESULT when there is none. A notification that began
    // before may still reach the observer.
    HRESULT Remove(const std::shared_ptr<Observer> &observer)
    {
        std::shared_ptr<const Observers> replaced; // outlives the lock: an observer may end with it
        const std::scoped_lock guard(lock);
        const auto found = std::find(observers->begin(), observers->end(), observer);
        if (found == observers->end())
        {
            return HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
        }
        auto changed = std::make_shared<Observers>(observers->begin(), found);
        changed->insert(changed->end(), found + 1, observers->end());
        replaced = std::exchange(observers, std::move(changed));
        return S_OK;
    }

    // In order of registration.
    std::shared_ptr<const Observers> Snapshot() noexcept
    {
        const std::scoped_lock guard(lock);
        return observers;
    }

  private:
    user_space_frameworks::CriticalSection lock;
    std::shared_ptr<const Observers> observers TARN_GUARDED_BY(lock) = std::make_shared<const Observers>();
};

} // namespace mft_core
