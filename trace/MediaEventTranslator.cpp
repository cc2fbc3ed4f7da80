#include "trace/MediaEventTranslator.h"

#include <algorithm>
#include <iterator>

namespace mft_utils
{

namespace
{

struct NamedEvent
{
    DWORD value; // any number may be asked for
    const char *name;
};

#define TARN_EVENT_NAME(event)                                                                                         \
    {                                                                                                                  \
        event, #event                                                                                                  \
    }

constexpr NamedEvent kEvents[] = {
    TARN_EVENT_NAME(MEUnknown),
    TARN_EVENT_NAME(MEError),
    TARN_EVENT_NAME(MEExtendedType),
    TARN_EVENT_NAME(MENonFatalError),
    TARN_EVENT_NAME(MESessionUnknown),
    TARN_EVENT_NAME(MESessionTopologySet),
    TARN_EVENT_NAME(MESessionTopologiesCleared),
    TARN_EVENT_NAME(MESessionStarted),
    TARN_EVENT_NAME(MESessionPaused),
    TARN_EVENT_NAME(MESessionStopped),
    TARN_EVENT_NAME(MESessionClosed),
    TARN_EVENT_NAME(MESessionEnded),
    TARN_EVENT_NAME(MESessionRateChanged),
    TARN_EVENT_NAME(MESessionScrubSampleComplete),
    TARN_EVENT_NAME(MESessionCapabilitiesChanged),
    TARN_EVENT_NAME(MESessionTopologyStatus),
    TARN_EVENT_NAME(MESessionNotifyPresentationTime),
    TARN_EVENT_NAME(MENewPresentation),
    TARN_EVENT_NAME(MELicenseAcquisitionStart),
    TARN_EVENT_NAME(MELicenseAcquisitionCompleted),
    TARN_EVENT_NAME(MEIndividualizationStart),
    TARN_EVENT_NAME(MEIndividualizationCompleted),
    TARN_EVENT_NAME(MEEnablerProgress),
    TARN_EVENT_NAME(MEEnablerCompleted),
    TARN_EVENT_NAME(MEPolicyError),
    TARN_EVENT_NAME(MEPolicyReport),
    TARN_EVENT_NAME(MEBufferingStarted),
    TARN_EVENT_NAME(MEBufferingStopped),
    TARN_EVENT_NAME(MEConnectStart),
    TARN_EVENT_NAME(MEConnectEnd),
    TARN_EVENT_NAME(MEReconnectStart),
    TARN_EVENT_NAME(MEReconnectEnd),
    TARN_EVENT_NAME(MERendererEvent),
    TARN_EVENT_NAME(MESessionStreamSinkFormatChanged),
    TARN_EVENT_NAME(MESourceUnknown),
    TARN_EVENT_NAME(MESourceStarted),
    TARN_EVENT_NAME(MEStreamStarted),
    TARN_EVENT_NAME(MESourceSeeked),
    TARN_EVENT_NAME(MEStreamSeeked),
    TARN_EVENT_NAME(MENewStream),
    TARN_EVENT_NAME(MEUpdatedStream),
    TARN_EVENT_NAME(MESourceStopped),
    TARN_EVENT_NAME(MEStreamStopped),
    TARN_EVENT_NAME(MESourcePaused),
    TARN_EVENT_NAME(MEStreamPaused),
    TARN_EVENT_NAME(MEEndOfPresentation),
    TARN_EVENT_NAME(MEEndOfStream),
    TARN_EVENT_NAME(MEMediaSample),
    TARN_EVENT_NAME(MEStreamTick),
    TARN_EVENT_NAME(MEStreamThinMode),
    TARN_EVENT_NAME(MEStreamFormatChanged),
    TARN_EVENT_NAME(MESourceRateChanged),
    TARN_EVENT_NAME(MEEndOfPresentationSegment),
    TARN_EVENT_NAME(MESourceCharacteristicsChanged),
    TARN_EVENT_NAME(MESourceRateChangeRequested),
    TARN_EVENT_NAME(MESourceMetadataChanged),
    TARN_EVENT_NAME(MESequencerSourceTopologyUpdated),
    TARN_EVENT_NAME(MESinkUnknown),
    TARN_EVENT_NAME(MEStreamSinkStarted),
    TARN_EVENT_NAME(MEStreamSinkStopped),
    TARN_EVENT_NAME(MEStreamSinkPaused),
    TARN_EVENT_NAME(MEStreamSinkRateChanged),
    TARN_EVENT_NAME(MEStreamSinkRequestSample),
    TARN_EVENT_NAME(MEStreamSinkMarker),
    TARN_EVENT_NAME(MEStreamSinkPrerolled),
    TARN_EVENT_NAME(MEStreamSinkScrubSampleComplete),
    TARN_EVENT_NAME(MEStreamSinkFormatChanged),
    TARN_EVENT_NAME(MEStreamSinkDeviceChanged),
    TARN_EVENT_NAME(MEQualityNotify),
    TARN_EVENT_NAME(MESinkInvalidated),
    TARN_EVENT_NAME(MEAudioSessionNameChanged),
    TARN_EVENT_NAME(MEAudioSessionVolumeChanged),
    TARN_EVENT_NAME(MEAudioSessionDeviceRemoved),
    TARN_EVENT_NAME(MEAudioSessionServerShutdown),
    TARN_EVENT_NAME(MEAudioSessionGroupingParamChanged),
    TARN_EVENT_NAME(MEAudioSessionIconChanged),
    TARN_EVENT_NAME(MEAudioSessionFormatChanged),
    TARN_EVENT_NAME(MEAudioSessionDisconnected),
    TARN_EVENT_NAME(MEAudioSessionExclusiveModeOverride),
    TARN_EVENT_NAME(MECaptureAudioSessionVolumeChanged),
    TARN_EVENT_NAME(MECaptureAudioSessionDeviceRemoved),
    TARN_EVENT_NAME(MECaptureAudioSessionFormatChanged),
    TARN_EVENT_NAME(MECaptureAudioSessionDisconnected),
    TARN_EVENT_NAME(MECaptureAudioSessionExclusiveModeOverride),
    TARN_EVENT_NAME(MECaptureAudioSessionServerShutdown),
    TARN_EVENT_NAME(METrustUnknown),
    TARN_EVENT_NAME(MEPolicyChanged),
    TARN_EVENT_NAME(MEContentProtectionMessage),
    TARN_EVENT_NAME(MEPolicySet),
    TARN_EVENT_NAME(MEWMDRMLicenseBackupCompleted),
    TARN_EVENT_NAME(MEWMDRMLicenseBackupProgress),
    TARN_EVENT_NAME(MEWMDRMLicenseRestoreCompleted),
    TARN_EVENT_NAME(MEWMDRMLicenseRestoreProgress),
    TARN_EVENT_NAME(MEWMDRMLicenseAcquisitionCompleted),
    TARN_EVENT_NAME(MEWMDRMIndividualizationCompleted),
    TARN_EVENT_NAME(MEWMDRMIndividualizationProgress),
    TARN_EVENT_NAME(MEWMDRMProximityCompleted),
    TARN_EVENT_NAME(MEWMDRMLicenseStoreCleaned),
    TARN_EVENT_NAME(MEWMDRMRevocationDownloadCompleted),
    TARN_EVENT_NAME(METransformUnknown),
    TARN_EVENT_NAME(METransformNeedInput),
    TARN_EVENT_NAME(METransformHaveOutput),
    TARN_EVENT_NAME(METransformDrainComplete),
    TARN_EVENT_NAME(METransformMarker),
    TARN_EVENT_NAME(METransformInputStreamStateChanged),
    TARN_EVENT_NAME(MEByteStreamCharacteristicsChanged),
    TARN_EVENT_NAME(MEVideoCaptureDeviceRemoved),
    TARN_EVENT_NAME(MEVideoCaptureDevicePreempted),
    TARN_EVENT_NAME(MEStreamSinkFormatInvalidated),
    TARN_EVENT_NAME(MEEncodingParameters),
    TARN_EVENT_NAME(MEContentProtectionMetadata),
    TARN_EVENT_NAME(MEDeviceThermalStateChanged),
    TARN_EVENT_NAME(MEReservedMax),
};

#undef TARN_EVENT_NAME

} // namespace

const char *MediaEventTranslator::Name(MediaEventType type) noexcept
{
    const auto *const found = std::find_if(std::begin(kEvents), std::end(kEvents), [type](const NamedEvent &event) {
        return event.value == static_cast<DWORD>(type);
    });
    return found != std::end(kEvents) ? found->name : "Unknown event";
}

} // namespace mft_utils
