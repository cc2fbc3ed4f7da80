// What an application does with a transform's IKsControl: private properties, firmware commands, extension unit.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "tarn/tarn_dmft.h"
#include "tools/ks/KsExtensionControls.h"

namespace tarn_host
{

struct FirmwareCommand
{
    std::uint32_t opcode = 0;
    std::uint32_t param1 = 0;
    std::uint32_t param2 = 0;
    std::uint32_t param3 = 0;
    std::uint32_t param4 = 0;
};

// Of a control of one byte.
struct ControlRange
{
    std::uint8_t minimum = 0;
    std::uint8_t maximum = 0;
    std::uint8_t step = 0;
};

// Keeps nothing but the reference to the control. Every function throws HostError, naming the step and the result, when
// the call is refused, and when an answer is shorter than what has to be in it. Confined.
class KsClient
{
  public:
    explicit KsClient(ComPtr<IKsControl> targetKsControl);

    // Properties of the depth transform.
    KSPROPERTY_TARN_API_VERSION ApiVersion() const;
    std::uint32_t Preset() const; // TARN_DEPTH_PRESET
    void SetPreset(std::uint32_t preset) const;
    bool ConfidenceMap() const;
    void SetConfidenceMap(bool on) const;
    bool FaceLogin() const;
    void SetFaceLogin(bool on) const;

    void SendFirmwareCommand(const FirmwareCommand &command, std::span<const std::uint8_t> data) const;
    // Exactly so many bytes of the answer.
    std::vector<std::uint8_t> AskFirmware(const FirmwareCommand &command, std::uint32_t answerBytes) const;

    // Controls of the extension unit. The rest is for those whose size is one byte.
    std::uint32_t Size(const ExtensionControl &control) const;
    std::uint8_t Value(const ExtensionControl &control) const;
    void SetValue(const ExtensionControl &control, std::uint8_t value) const;
    ControlRange Range(const ExtensionControl &control) const;
    std::uint8_t Default(const ExtensionControl &control) const;

  private:
    struct Request;
    struct Reply
    {
        HRESULT result = E_FAIL;
        ULONG size = 0; // as the transform says
    };

    Reply Ask(const Request &request, void *data, ULONG size) const;
    void Get(const Request &request, void *data, ULONG capacity, ULONG needed) const;
    void Set(const Request &request, const void *data, ULONG size) const;

    const ComPtr<IKsControl> ksControl;
};

} // namespace tarn_host
