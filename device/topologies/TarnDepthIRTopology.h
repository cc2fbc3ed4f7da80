// Serves the infrared output alone, as ordinary frames or as frames for face login.
#pragma once

#include "core/NodeChain.h"
#include "core/Topology.h"
#include "core/WorkQueueParameters.h"
#include "device/nodes/FramePrivacy.h"
#include "device/calibration/TarnCalibration.h"
#include "device/TarnDepthPresets.h"
#include "media/MediaTypeParser.h"

namespace mft_core
{

// While a face-login topology is active the face-login preset is in force.
class TarnDepthIRTopology : public Topology
{
  public:
    TarnDepthIRTopology(const std::string &ownerName, bool isFaceAuthMode,
                        std::shared_ptr<TarnDepthPresets> presetsController, std::shared_ptr<FramePrivacy> framePrivacy,
                        std::shared_ptr<const TarnCalibration> cameraCalibration);
    // Ends face login where Deactivate has not: one that is released while it runs, with its transform.
    ~TarnDepthIRTopology() override;

    // Face login needs an output of 360 x 360 and the camera's format for it; without either the mode is left and
    // ordinary frames are served. Ordinary input is the closest infrared and depth type at or above the output's size
    // and rate. MF_E_INVALIDMEDIATYPE for a type that the output does not offer, E_FAIL when the pin has none that
    // will do; the constructors of the nodes may throw. The object is only good for release then.
    HRESULT Init(std::shared_ptr<InputStream> inputStream, std::shared_ptr<OutputStream> irOutStream,
                 IMFMediaType *nextMediaType, const WorkQueueParameters &wqParams);

    // A failed change of preset is returned before the input stream is asked for anything.
    HRESULT Activate() override;
    // Puts the wanted preset back even when the base fails.
    HRESULT Deactivate() override;

  private:
    HRESULT FindInputMediaType(IMFMediaType **ppFound, const InputStream &inputStream,
                               const mft_utils::MediaTypeData &outputMtData);
    HRESULT FindFaceLoginMediaType(IMFMediaType **ppFound, const InputStream &inputStream,
                                   const mft_utils::MediaTypeData &outputMtData) const;
    HRESULT EndFaceLogin();
    static void AddFaceLoginNodes(NodeChain &chain, const mft_utils::MediaTypeData &inputMtData,
                                  const mft_utils::MediaTypeData &outputMtData);
    FrameGeometry GeometryOf(const mft_utils::MediaTypeData &inputMtData,
                             const mft_utils::MediaTypeData &outputMtData) const;

    bool faceAuthMode;
    const std::shared_ptr<TarnDepthPresets> depthPresetsController;
    const std::shared_ptr<FramePrivacy> privacyState;
    const std::shared_ptr<const TarnCalibration> calibrationTable;
    bool hasBegunFaceLogin = false;
};

} // namespace mft_core
