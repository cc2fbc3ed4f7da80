// Depth presets: the one that applications want and the one in force, which face login changes for a while.
#pragma once

#include "platform/MediaFoundation.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "device/DepthPresetTable.h"
#include "ks/IFirmwareCommandPipe.h"
#include "ks/UvcCommand.h"
#include "base/CriticalSection.h"
#include "base/Object.h"

namespace mft_core
{

// Shared by the transform, its presets property and its infrared topologies. Thread-safe; its lock is held over the
// exchange with the camera, and nothing but the firmware command pipe's is taken under it.
class TarnDepthPresets : public user_space_frameworks::Object
{
  public:
    enum class PresetTypes : std::uint32_t
    {
        DEFAULT = TARN_DEPTH_PRESET_DEFAULT,
        CLOSE_UP = TARN_DEPTH_PRESET_CLOSE_UP,
        LONG_DISTANCE = TARN_DEPTH_PRESET_LONG_DISTANCE,
        STILL_SCENE = TARN_DEPTH_PRESET_STILL_SCENE,
        FAST_MOTION = TARN_DEPTH_PRESET_FAST_MOTION,
        HIGH_CONTRAST = TARN_DEPTH_PRESET_HIGH_CONTRAST,
        LOW_POWER = TARN_DEPTH_PRESET_LOW_POWER,
        FACE_LOGIN = TARN_DEPTH_PRESET_FACE_LOGIN
    };

    TarnDepthPresets(const ComPtr<IKsControl> &extensionUnit, std::shared_ptr<IFirmwareCommandPipe> pipe);

    // Applies PresetTypes::DEFAULT; fails as ApplyPreset does.
    HRESULT Init();

    // What applications want from now on: put into force at once, or when face login ends. E_INVALIDARG for an unknown
    // type, with nothing sent. When a step fails its failure is returned, what is wanted stays, and the steps done so
    // far are set back to the preset that was in force, as far as the camera lets them; the trace tells.
    HRESULT ApplyPreset(PresetTypes type);

    // Puts FACE_LOGIN into force until EndFaceLogin. Fails as ApplyPreset; face login has not begun then.
    HRESULT BeginFaceLogin();
    // Puts the wanted preset into force. When the camera refuses it face login has ended all the same, and
    // RestoreWantedPreset tries again. Does nothing when face login has not begun.
    HRESULT EndFaceLogin();

    // Puts the wanted preset into force if a refusal has left anything else there, and face login does not last.
    HRESULT RestoreWantedPreset();

    // The last one applied as a whole, and the one that applications want. Neither waits for one that is being applied.
    PresetTypes GetCurrentPreset() const noexcept;
    PresetTypes GetWantedPreset() const noexcept;

  private:
    struct Step
    {
        const char *name;
        HRESULT (TarnDepthPresets::*run)(const DepthPreset &preset);
    };
    static const Step kSteps[];

    template <UvcCommand TarnDepthPresets::*control, std::uint8_t DepthPreset::*value>
    HRESULT SetControl(const DepthPreset &preset);
    HRESULT SetAutoRange(const DepthPreset &preset);
    HRESULT SetHdrConfiguration(const DepthPreset &preset);
    HRESULT SetHdr(const DepthPreset &preset);
    HRESULT PutIntoForce(const DepthPreset &preset) TARN_REQUIRES(lock);
    void SetBack(const Step &last) TARN_REQUIRES(lock); // from the first to the last one run

    UvcCommand laserPower;
    UvcCommand accuracy;
    UvcCommand motionVersusRange;
    UvcCommand filterOption;
    UvcCommand confidenceThreshold;
    const std::shared_ptr<IFirmwareCommandPipe> firmwareCommandPipe;

    user_space_frameworks::CriticalSection lock;
    // Changed under the lock, read without it.
    std::atomic<const DepthPreset *> inForce{nullptr}; // null until the first is applied
    std::atomic<const DepthPreset *> wanted{FindDepthPreset(TARN_DEPTH_PRESET_DEFAULT)};
    bool isMixed TARN_GUARDED_BY(lock) = false; // the camera kept steps of a preset that it refused
    bool isFaceLogin TARN_GUARDED_BY(lock) = false;
};

} // namespace mft_core
