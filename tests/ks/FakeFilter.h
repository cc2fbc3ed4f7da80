// The smallest camera filter: records every KS call byte for byte and answers as the test says.
#pragma once

#include "platform/KsTopologyInfo.h"

#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

#include "base/ComObject.h"

namespace tarn_test
{

inline constexpr GUID kTestSet = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
inline constexpr HRESULT kMoreData = HRESULT_FROM_WIN32(ERROR_MORE_DATA);
inline constexpr HRESULT kNotFound = HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
inline constexpr HRESULT kInvalidState = HRESULT_FROM_WIN32(ERROR_INVALID_STATE);
inline constexpr HRESULT kBareSetNotFound = 0x492; // without severity and facility, by contract

inline KSIDENTIFIER MakeRequest(const GUID &set, ULONG id, ULONG flags)
{
    KSIDENTIFIER request{};
    request.Set = set;
    request.Id = id;
    request.Flags = flags;
    return request;
}

// One KS call as it arrived; pointers are the caller's.
struct FilterCall
{
    enum class Kind
    {
        Property,
        Method,
        Event
    };

    Kind kind;
    bool hasIdentifier;
    KSP_NODE request; // zeros beyond the stated length
    ULONG requestLength;
    void *data;
    std::vector<std::uint8_t> bytes; // the data at the time of the call
    ULONG dataLength;
    ULONG *bytesReturned;
};

// Thread-safe.
class FakeFilter : public user_space_frameworks::ComObject<IMFTransform, IKsControl, IKsTopologyInfo>
{
  public:
    using Answer = std::function<HRESULT(const FilterCall &call)>;

    // Runs for every call, outside the record's lock; S_OK when there is none.
    Answer answer;
    // Types of the topology's nodes; GUID_NULL makes get_NodeType fail.
    std::vector<GUID> nodes;
    HRESULT nodeCountResult = S_OK;
    bool hasTopology = true;

    std::vector<FilterCall> Calls() const;
    void Forget();

    HRESULT STDMETHODCALLTYPE KsProperty(PKSPROPERTY request, ULONG requestLength, void *data, ULONG dataLength,
                                         ULONG *bytesReturned) override;
    HRESULT STDMETHODCALLTYPE KsMethod(PKSMETHOD request, ULONG requestLength, void *data, ULONG dataLength,
                                       ULONG *bytesReturned) override;
    HRESULT STDMETHODCALLTYPE KsEvent(PKSEVENT request, ULONG requestLength, void *data, ULONG dataLength,
                                      ULONG *bytesReturned) override;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void **object) noexcept override;
    HRESULT STDMETHODCALLTYPE get_NumNodes(DWORD *count) override;
    HRESULT STDMETHODCALLTYPE get_NodeType(DWORD index, GUID *type) override;

    // What no test uses.
    // clang-format off
    HRESULT STDMETHODCALLTYPE get_NumCategories(DWORD *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Category(DWORD, GUID *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_NumConnections(DWORD *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_ConnectionInfo(DWORD, KSTOPOLOGY_CONNECTION *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_NodeName(DWORD, WCHAR *, DWORD, DWORD *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD, REFIID, void **) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MFTGetStreamLimits(DWORD *, DWORD *, DWORD *, DWORD *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MFTGetStreamCount(DWORD *, DWORD *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MFTGetStreamIDs(DWORD, DWORD *, DWORD, DWORD *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MFTGetInputStreamInfo(DWORD, MFT_INPUT_STREAM_INFO *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MFTGetOutputStreamInfo(DWORD, MFT_OUTPUT_STREAM_INFO *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetAttributes(IMFAttributes **) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetInputStreamAttributes(DWORD, IMFAttributes **) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetOutputStreamAttributes(DWORD, IMFAttributes **) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MFTDeleteInputStream(DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MFTAddInputStreams(DWORD, DWORD *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MFTGetInputAvailableType(DWORD, DWORD, IMFMediaType **) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MFTGetOutputAvailableType(DWORD, DWORD, IMFMediaType **) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MFTSetInputType(DWORD, IMFMediaType *, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MFTSetOutputType(DWORD, IMFMediaType *, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MFTGetInputCurrentType(DWORD, IMFMediaType **) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MFTGetOutputCurrentType(DWORD, IMFMediaType **) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MFTGetInputStatus(DWORD, DWORD *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MFTGetOutputStatus(DWORD *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MFTSetOutputBounds(LONGLONG, LONGLONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MFTProcessEvent(DWORD, IMFMediaEvent *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MFTProcessMessage(MFT_MESSAGE_TYPE, ULONG_PTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MFTProcessInput(DWORD, IMFSample *, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MFTProcessOutput(DWORD, DWORD, MFT_OUTPUT_DATA_BUFFER *, DWORD *) override { return E_NOTIMPL; }
    // clang-format on

  private:
    HRESULT Serve(FilterCall::Kind kind, const KSIDENTIFIER *request, ULONG requestLength, void *data, ULONG dataLength,
                  ULONG *bytesReturned);

    mutable std::mutex mutex;
    std::vector<FilterCall> calls; // guarded by mutex
};

} // namespace tarn_test
