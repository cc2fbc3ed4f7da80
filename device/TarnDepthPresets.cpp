#include "device/TarnDepthPresets.h"

#include <iterator>
#include <mutex>
#include <span>
#include <utility>

#include "tarn/tarn_dmft.h"
#include "trace/Check.h"

namespace mft_core
{

namespace
{
UvcCommand MakeControl(const ComPtr<IKsControl> &extensionUnit, KSPROPERTY_XU_TARN_DEPTH id, const char *name)
{
    return {extensionUnit, KSPROPERTYSETID_TARN_DEPTH_CONTROL, static_cast<ULONG>(id), name};
}

TarnDepthPresets::PresetTypes TypeOf(const DepthPreset &preset) noexcept
{
    return static_cast<TarnDepthPresets::PresetTypes>(preset.type);
}
} // namespace

const TarnDepthPresets::Step TarnDepthPresets::kSteps[] = {
    {"laser power", &TarnDepthPresets::SetControl<&TarnDepthPresets::laserPower, &DepthPreset::laserPower>},
    {"accuracy", &TarnDepthPresets::SetControl<&TarnDepthPresets::accuracy, &DepthPreset::accuracy>},
    {"motion versus range",
     &TarnDepthPresets::SetControl<&TarnDepthPresets::motionVersusRange, &DepthPreset::motionVersusRange>},
    {"filter option", &TarnDepthPresets::SetControl<&TarnDepthPresets::filterOption, &DepthPreset::filterOption>},
    {"confidence threshold",
     &TarnDepthPresets::SetControl<&TarnDepthPresets::confidenceThreshold, &DepthPreset::confidenceThreshold>},
    {"auto-range", &TarnDepthPresets::SetAutoRange},
    {"HDR configuration", &TarnDepthPresets::SetHdrConfiguration},
    {"HDR", &TarnDepthPresets::SetHdr},
};

TarnDepthPresets::TarnDepthPresets(const ComPtr<IKsControl> &extensionUnit, std::shared_ptr<IFirmwareCommandPipe> pipe)
    : Object("Tarn Depth Presets"),
      laserPower(MakeControl(extensionUnit, KSPROPERTY_XU_TARN_DEPTH::LASER_POWER, "Laser power")),
      accuracy(MakeControl(extensionUnit, KSPROPERTY_XU_TARN_DEPTH::ACCURACY, "Accuracy")),
      motionVersusRange(
          MakeControl(extensionUnit, KSPROPERTY_XU_TARN_DEPTH::MOTION_VS_RANGE_TRADE, "Motion versus range")),
      filterOption(MakeControl(extensionUnit, KSPROPERTY_XU_TARN_DEPTH::FILTER_OPTION, "Filter option")),
      confidenceThreshold(
          MakeControl(extensionUnit, KSPROPERTY_XU_TARN_DEPTH::CONFIDENCE_THRESHHOLD, "Confidence threshold")),
      firmwareCommandPipe(std::move(pipe))
{
}

HRESULT TarnDepthPresets::Init()
{
    CHECK_POINTER(firmwareCommandPipe);
    CHECK_HR(ApplyPreset(PresetTypes::DEFAULT));
    return S_OK;
}

HRESULT TarnDepthPresets::ApplyPreset(PresetTypes type)
{
    const DepthPreset *const preset = FindDepthPreset(static_cast<std::uint32_t>(type));
    if (preset == nullptr)
    {
        TRACE_ERROR("%s: there is no preset %u", GetName(), static_cast<unsigned>(type));
        return E_INVALIDARG;
    }
    const std::scoped_lock guard(lock);
    if (isFaceLogin)
    {
        TRACE_INFO("%s: %s comes when face login ends", GetName(), preset->name);
    }
    else
    {
        CHECK_HR(PutIntoForce(*preset));
    }
    wanted = preset;
    return S_OK;
}

HRESULT TarnDepthPresets::BeginFaceLogin()
{
    const DepthPreset *const preset = FindDepthPreset(static_cast<std::uint32_t>(PresetTypes::FACE_LOGIN));
    CHECK_POINTER(preset);
    const std::scoped_lock guard(lock);
    CHECK_HR(PutIntoForce(*preset));
    isFaceLogin = true;
    return S_OK;
}

HRESULT TarnDepthPresets::EndFaceLogin()
{
    const std::scoped_lock guard(lock);
    if (!std::exchange(isFaceLogin, false))
    {
        return S_OK;
    }
    CHECK_HR(PutIntoForce(*wanted));
    return S_OK;
}

HRESULT TarnDepthPresets::RestoreWantedPreset()
{
    const std::scoped_lock guard(lock);
    if (isFaceLogin || (wanted == inForce && !isMixed))
    {
        return S_OK;
    }
    CHECK_HR(PutIntoForce(*wanted));
    return S_OK;
}

HRESULT TarnDepthPresets::PutIntoForce(const DepthPreset &preset)
{
    for (const Step &step : kSteps)
    {
        const HRESULT result = (this->*step.run)(preset);
        if (FAILED(result))
        {
            TRACE_ERROR("%s: %s failed at %s, hr 0x%08lX", GetName(), preset.name, step.name,
                        static_cast<unsigned long>(result));
            SetBack(step); // the failed step too: the camera may have taken it before it complained
            return result;
        }
    }
    inForce = &preset;
    isMixed = false;
    TRACE_INFO("%s: %s is in force", GetName(), preset.name);
    return S_OK;
}

void TarnDepthPresets::SetBack(const Step &last)
{
    const DepthPreset *const former = inForce;
    if (former == nullptr)
    {
        isMixed = true;
        TRACE_ERROR("%s: none was in force before, the camera keeps what it took", GetName());
        return;
    }
    bool isComplete = true;
    for (const Step &step : std::span(std::begin(kSteps), &last + 1))
    {
        const HRESULT result = (this->*step.run)(*former);
        if (FAILED(result))
        {
            isComplete = false;
            TRACE_ERROR("%s: %s could not be set back, hr 0x%08lX", GetName(), step.name,
                        static_cast<unsigned long>(result));
        }
    }
    isMixed = isMixed || !isComplete;
    if (!isMixed)
    {
        TRACE_INFO("%s: %s stays in force", GetName(), former->name);
    }
}

TarnDepthPresets::PresetTypes TarnDepthPresets::GetCurrentPreset() const noexcept
{
    const DepthPreset *const preset = inForce;
    return preset != nullptr ? TypeOf(*preset) : PresetTypes::DEFAULT;
}

TarnDepthPresets::PresetTypes TarnDepthPresets::GetWantedPreset() const noexcept
{
    return TypeOf(*wanted);
}

template <UvcCommand TarnDepthPresets::*control, std::uint8_t DepthPreset::*value>
HRESULT TarnDepthPresets::SetControl(const DepthPreset &preset)
{
    CHECK_HR((this->*control).Set(&(preset.*value), sizeof(preset.*value)));
    return S_OK;
}

HRESULT TarnDepthPresets::SetAutoRange(const DepthPreset &preset)
{
    const AutoRangeSettings &settings = preset.autoRange;
    const auto block = AutoRangeBlock(settings);
    const ULONG size = settings.noBlock ? 0 : static_cast<ULONG>(block.size());
    CHECK_HR(
        firmwareCommandPipe->Set(HWmonitor_SetAutoRange, block.data(), size, settings.adjusts, settings.frameCount));
    return S_OK;
}

HRESULT TarnDepthPresets::SetHdrConfiguration(const DepthPreset &preset)
{
    if (!preset.hdr.on)
    {
        return S_OK;
    }
    const auto block = HdrBlock(preset.hdr);
    CHECK_HR(firmwareCommandPipe->Set(HWmonitor_HDRConfigSet, block.data(), static_cast<ULONG>(block.size())));
    return S_OK;
}

HRESULT TarnDepthPresets::SetHdr(const DepthPreset &preset)
{
    CHECK_HR(firmwareCommandPipe->Set(HWmonitor_HDRSet, nullptr, 0, preset.hdr.on ? 1 : 0));
    return S_OK;
}

} // namespace mft_core
