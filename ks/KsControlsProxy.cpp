#include "ks/KsControlsProxy.h"

#include <utility>

#include "trace/Guard.h"

namespace mft_core
{

KsControlsProxy::KsControlsProxy(ComPtr<IKsControl> forwardTo)
    : Object("Ks Control Proxy"), target(std::move(forwardTo))
{
}

HRESULT KsControlsProxy::KsProperty(PKSPROPERTY Property, ULONG PropertyLength, LPVOID PropertyData, ULONG DataLength,
                                    ULONG *BytesReturned) noexcept
{
    return mft_utils::Guarded([&]() -> HRESULT {
        CHECK_POINTER(target);
        return Observed(
            KsControlType::Property, {Property, PropertyLength, PropertyData, DataLength, BytesReturned},
            [&] { return target->KsProperty(Property, PropertyLength, PropertyData, DataLength, BytesReturned); });
    });
}

HRESULT KsControlsProxy::KsMethod(PKSMETHOD Method, ULONG MethodLength, LPVOID MethodData, ULONG DataLength,
                                  ULONG *BytesReturned) noexcept
{
    return mft_utils::Guarded([&]() -> HRESULT {
        CHECK_POINTER(target);
        return Observed(KsControlType::Method, {Method, MethodLength, MethodData, DataLength, BytesReturned},
                        [&] { return target->KsMethod(Method, MethodLength, MethodData, DataLength, BytesReturned); });
    });
}

HRESULT KsControlsProxy::KsEvent(PKSEVENT Event, ULONG EventLength, LPVOID EventData, ULONG DataLength,
                                 ULONG *BytesReturned) noexcept
{
    return mft_utils::Guarded([&]() -> HRESULT {
        CHECK_POINTER(target);
        return Observed(KsControlType::Event, {Event, EventLength, EventData, DataLength, BytesReturned},
                        [&] { return target->KsEvent(Event, EventLength, EventData, DataLength, BytesReturned); });
    });
}

} // namespace mft_core
