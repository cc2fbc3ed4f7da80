// Addresses KS calls to the camera's extension unit, a device-specific node of the camera filter.
#pragma once

#include "platform/MediaFoundation.h"

#include "base/ComObject.h"
#include "base/Object.h"
#include "ks/KsCallArguments.h"

namespace mft_core
{

// Owned by the transform and whoever sends through it. Every call gives E_NOINTERFACE until Init has found the node.
// Immutable after Init.
class ExtensionUnitKsControl : public user_space_frameworks::ComObject<IKsControl>, public user_space_frameworks::Object
{
  public:
    explicit ExtensionUnitKsControl(const GUID &set, std::string objectName = "Extension Unit KS control");

    // Finds the node. `knownSupportedId` is any control that the unit has. Failures of the topology's enumeration are
    // returned; E_NOINTERFACE when no node supports the set. The object stays as it was when it fails.
    HRESULT Init(IMFTransform *sourceTransform, IKsControl *ksControl, ULONG knownSupportedId);

    // IKsControl: the caller's identifier (of which 24 bytes are read, whatever the stated length) is sent to the node.
    // The filter's result, unchanged. A null event goes on as it is: it disables, and names no node.
    HRESULT STDMETHODCALLTYPE KsProperty(PKSPROPERTY Property, ULONG PropertyLength, LPVOID PropertyData,
                                         ULONG DataLength, ULONG *BytesReturned) noexcept override;
    HRESULT STDMETHODCALLTYPE KsMethod(PKSMETHOD Method, ULONG MethodLength, LPVOID MethodData, ULONG DataLength,
                                       ULONG *BytesReturned) noexcept override;
    HRESULT STDMETHODCALLTYPE KsEvent(PKSEVENT Event, ULONG EventLength, LPVOID EventData, ULONG DataLength,
                                      ULONG *BytesReturned) noexcept override;

    // KsProperty on one control of the unit; `flags` are KSPROPERTY_TYPE_*.
    HRESULT SendKsProperty(ULONG id, LPVOID data, ULONG dataLength, ULONG flags, ULONG *bytesReturned);

    // Range and default of a one-byte control. Outputs are zero when it fails; E_POINTER for a null one.
    HRESULT QueryKsPropertyInfo(ULONG id, BYTE *minimum, BYTE *maximum, BYTE *step, BYTE *defaultValue);

  private:
    HRESULT FindDeviceSpecificNode(IMFTransform *sourceTransform, IKsControl *ksControl, ULONG knownSupportedId);

    using Call = decltype(&IKsControl::KsProperty); // the three have one signature
    HRESULT Forward(Call method, const KsCallArguments &call);

    ComPtr<IKsControl> filterKsControl; // null until the node is known
    const GUID setGuid;
    ULONG nodeId = 0;
};

} // namespace mft_core
