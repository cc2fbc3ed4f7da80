// Base of the module's own COM objects: reference count, interface identity, free-threaded.
#pragma once

#include "platform/MediaFoundation.h"

#include <atomic>
#include <new>
#include <utility>

#include "base/FreeThreadedMarshaler.h"
#include "base/TakeReference.h"

namespace user_space_frameworks
{

// What a base of a ComObject answers for: an interface for itself, a class that implements one for its `ComInterface`.
template <class Base>
struct ComInterfaceOf
{
    using Type = Base;
};
template <class Base>
requires requires
{
    typename Base::ComInterface;
}
struct ComInterfaceOf<Base>
{
    using Type = typename Base::ComInterface;
};

// Implements IUnknown for the listed interfaces, or classes that implement one each; the first one is the object's
// identity. The count starts at 1 and belongs to the creator (see MakeCom). Agile: any apartment may call it directly.
// Thread-safe.
template <class Primary, class... Others>
class ComObject : public Primary, public Others...
{
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void **object) noexcept override
    {
        if (object == nullptr)
        {
            return E_POINTER;
        }
        *object = nullptr;
        if (IsEqualGUID(iid, __uuidof(IMarshal)))
        {
            return marshaler.Query(Identity(), object);
        }
        if (IsEqualGUID(iid, __uuidof(IUnknown)) || IsEqualGUID(iid, __uuidof(IAgileObject))) // without own methods
        {
            *object = Identity();
        }
        else if (!(TryInterface<Primary>(iid, object) || ... || TryInterface<Others>(iid, object)))
        {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }

    ULONG STDMETHODCALLTYPE AddRef() noexcept override
    {
        return references.fetch_add(1, std::memory_order_relaxed) + 1;
    }

    ULONG STDMETHODCALLTYPE Release() noexcept override
    {
        const ULONG left = references.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0)
        {
            delete this;
        }
        return left;
    }

  protected:
    ComObject() {} // defaulted, GCC 12 deletes it over the virtual base of an abstract class
    virtual ~ComObject() = default;
    ComObject(const ComObject &) = delete;
    ComObject &operator=(const ComObject &) = delete;

  private:
    typename ComInterfaceOf<Primary>::Type *Identity() noexcept
    {
        return this;
    }

    template <class Base>
    bool TryInterface(REFIID iid, void **object) noexcept
    {
        using Interface = typename ComInterfaceOf<Base>::Type;
        if (!IsEqualGUID(iid, __uuidof(Interface)))
        {
            return false;
        }
        *object = static_cast<Interface *>(this);
        return true;
    }

    std::atomic<ULONG> references{1};
    FreeThreadedMarshaler marshaler; // apartments that marshal by the book get the same direct pointer
};

// Creates an object whose only reference is the one returned. Throws what the constructor throws.
template <class T, class... Arguments>
ComPtr<T> MakeCom(Arguments &&...arguments)
{
    ComPtr<T> object;
    TakeReference(object, new T(std::forward<Arguments>(arguments)...));
    return object;
}

} // namespace user_space_frameworks
