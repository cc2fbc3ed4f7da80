// Serves the depth output alone, with or without confidence map.
#pragma once

#include "core/Topology.h"
#include "core/WorkQueueParameters.h"
#include "device/nodes/FramePrivacy.h"
#include "device/calibration/TarnCalibration.h"
#include "device/ConfidenceMapState.h"

namespace mft_core
{

class TarnDepthDepthTopology : public Topology
{
  public:
    TarnDepthDepthTopology(const std::string &ownerName, std::shared_ptr<FramePrivacy> framePrivacy,
                           std::shared_ptr<const TarnCalibration> cameraCalibration);

    // Asks for input of the output's size and rate: depth with confidence for `withMap`, else depth alone; frames have
    // the map while `confidenceMap` says so. MF_E_INVALIDMEDIATYPE for a type that the output does not offer, E_FAIL
    // when the pin has no matching one; the constructors of the nodes may throw. The object is only good for release
    // then.
    HRESULT Init(std::shared_ptr<InputStream> inputStream, std::shared_ptr<OutputStream> depthOutStream,
                 IMFMediaType *nextMediaType, const WorkQueueParameters &wqParams,
                 const std::shared_ptr<const ConfidenceMapState> &confidenceMap, bool withMap);

    // What the pin has to deliver for depth with or without the map.
    static const GUID &InputSubtype(bool withConfidenceMap) noexcept;

  private:
    const std::shared_ptr<FramePrivacy> privacyState;
    const std::shared_ptr<const TarnCalibration> calibrationTable;
};

} // namespace mft_core
