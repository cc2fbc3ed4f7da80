// What the camera says about itself: traced, and told to whoever reads the transform's attributes.
#pragma once

#include "platform/MediaFoundation.h"

#include <memory>
#include <optional>
#include <string>

#include "ks/IFirmwareCommandPipe.h"
#include "tarn/device_info.h"
#include "base/Object.h"

namespace mft_core
{

// Owned by its transform. Immutable after Init.
class TarnDeviceInfo : public user_space_frameworks::Object
{
  public:
    TarnDeviceInfo(std::shared_ptr<IFirmwareCommandPipe> pipe, std::string label);

    // Asks the camera and traces the answer. The pipe's failure is returned; an answer that does not check is traced
    // and is no failure.
    HRESULT Init();

    // Empty when the camera's answer did not check.
    const std::optional<TARN_DEVICE_INFO> &Record() const noexcept
    {
        return record;
    }

    // Adds the record and its texts (tarn/device_attributes.h) to a store; nothing without a record.
    HRESULT AddTo(IMFAttributes *store) const;

  private:
    void TraceRecord() const;

    const std::shared_ptr<IFirmwareCommandPipe> firmwareCommandPipe;
    std::optional<TARN_DEVICE_INFO> record;
};

} // namespace mft_core
