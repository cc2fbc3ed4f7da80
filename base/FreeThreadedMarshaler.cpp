#include "base/FreeThreadedMarshaler.h"

namespace user_space_frameworks
{

FreeThreadedMarshaler::~FreeThreadedMarshaler()
{
    if (IUnknown *inner = marshaler.load(std::memory_order_acquire))
    {
        inner->Release();
    }
}

HRESULT FreeThreadedMarshaler::Query(IUnknown *outer, void **object) noexcept
{
    IUnknown *inner = marshaler.load(std::memory_order_acquire);
    if (inner == nullptr)
    {
        IUnknown *made = nullptr;
        const HRESULT result = CoCreateFreeThreadedMarshaler(outer, &made);
        if (FAILED(result))
        {
            return result;
        }
        if (marshaler.compare_exchange_strong(inner, made, std::memory_order_acq_rel))
        {
            inner = made;
        }
        else
        {
            made->Release(); // another thread was first
        }
    }
    return inner->QueryInterface(__uuidof(IMarshal), object);
}

} // namespace user_space_frameworks
