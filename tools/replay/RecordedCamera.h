// The camera's filter as a recorded session shows it.
#pragma once

#include "platform/MediaFoundation.h"

#include <functional>
#include <string>
#include <vector>

#include "sim/KsEventTable.h"
#include "sim/RefusingFilter.h"
#include "tools/replay/KsAnswers.h"

namespace tarn_replay
{

// Has the streams, types, attributes and nodes that the camera told, and gives its recorded answers. Thread-safe.
class RecordedCamera final : public tarn_sim::RefusingFilter
{
  public:
    // `whenDifferent` is told, on any thread, what the module asked otherwise than recorded. Throws HostError. The
    // session must outlive it.
    RecordedCamera(const tarn_recording::RecordedSession &session, std::uint32_t transform,
                   std::function<void(const std::string &)> whenDifferent);

    // To every listener.
    void SignalEvent();
    const KsAnswers &Answers() const noexcept
    {
        return answers;
    }

    // IMFTransform
    HRESULT STDMETHODCALLTYPE MFTGetStreamCount(DWORD *inputs, DWORD *outputs) override;
    HRESULT STDMETHODCALLTYPE MFTGetStreamIDs(DWORD inSize, DWORD *inIds, DWORD outSize, DWORD *outIds) override;
    HRESULT STDMETHODCALLTYPE MFTGetOutputStreamInfo(DWORD id, MFT_OUTPUT_STREAM_INFO *info) override;
    HRESULT STDMETHODCALLTYPE GetAttributes(IMFAttributes **store) override;
    HRESULT STDMETHODCALLTYPE GetOutputStreamAttributes(DWORD id, IMFAttributes **store) override;
    HRESULT STDMETHODCALLTYPE MFTGetOutputAvailableType(DWORD id, DWORD index, IMFMediaType **type) override;
    HRESULT STDMETHODCALLTYPE MFTGetOutputCurrentType(DWORD id, IMFMediaType **type) override;

    // IKsControl
    HRESULT STDMETHODCALLTYPE KsProperty(PKSPROPERTY property, ULONG length, void *data, ULONG dataLength,
                                         ULONG *bytesReturned) override;
    HRESULT STDMETHODCALLTYPE KsMethod(PKSMETHOD method, ULONG length, void *data, ULONG dataLength,
                                       ULONG *bytesReturned) override;
    HRESULT STDMETHODCALLTYPE KsEvent(PKSEVENT event, ULONG length, void *data, ULONG dataLength,
                                      ULONG *bytesReturned) override;

    // IKsTopologyInfo
    HRESULT STDMETHODCALLTYPE get_NumNodes(DWORD *count) override;
    HRESULT STDMETHODCALLTYPE get_NodeType(DWORD node, GUID *type) override;

  private:
    struct Stream
    {
        DWORD id = 0;
        ComPtr<IMFAttributes> attributes; // null when the camera had none
        std::vector<ComPtr<IMFMediaType>> types;
    };

    ~RecordedCamera() override = default;
    void Learn(const tarn_recording::Record &record);
    Stream &StreamOf(DWORD id);
    const Stream *Find(DWORD id) const;
    HRESULT Answer(std::uint16_t kind, const void *request, ULONG length, void *data, ULONG dataLength,
                   ULONG *bytesReturned);

    std::vector<Stream> streams; // this and the next two immutable after Init
    std::vector<GUID> nodes;
    ComPtr<IMFAttributes> attributes;
    KsAnswers answers;
    tarn_sim::KsEventTable events;
    const std::function<void(const std::string &)> tellDifference;
};

} // namespace tarn_replay
