// The smallest camera filter: records every KS call byte for byte and answers as the test says.
#pragma once

#include "sim/RefusingFilter.h"
#include "tests/support/Expect.h"

namespace tarn_test
{

inline constexpr GUID kTestSet = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
inline constexpr HRESULT kMoreData = HRESULT_FROM_WIN32(ERROR_MORE_DATA);
inline constexpr HRESULT kNotFound = HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
inline constexpr HRESULT kInvalidState = HRESULT_FROM_WIN32(ERROR_INVALID_STATE);
inline constexpr HRESULT kBareSetNotFound = 0x492; // without severity and facility, by contract

inline KSIDENTIFIER MakeRequest(const GUID &set, ULONG id, ULONG flags)
{
    return {{{set, id, flags}}};
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
class FakeFilter : public tarn_sim::RefusingFilter
{
  public:
    // Runs for every call, outside the record's lock; S_OK when there is none.
    std::function<HRESULT(const FilterCall &call)> answer;
    // Types of the topology's nodes; GUID_NULL makes get_NodeType fail.
    std::vector<GUID> nodes;
    HRESULT nodeCountResult = S_OK;
    bool hasTopology = true;

    std::vector<FilterCall> Calls() const
    {
        const std::scoped_lock guard(mutex);
        return calls;
    }
    void Forget()
    {
        const std::scoped_lock guard(mutex);
        calls.clear();
    }

    // clang-format off
    HRESULT STDMETHODCALLTYPE KsProperty(PKSPROPERTY request, ULONG length, void *data, ULONG dataLength, ULONG *returned) override { return Serve(FilterCall::Kind::Property, request, length, data, dataLength, returned); }
    HRESULT STDMETHODCALLTYPE KsMethod(PKSMETHOD request, ULONG length, void *data, ULONG dataLength, ULONG *returned) override { return Serve(FilterCall::Kind::Method, request, length, data, dataLength, returned); }
    HRESULT STDMETHODCALLTYPE KsEvent(PKSEVENT request, ULONG length, void *data, ULONG dataLength, ULONG *returned) override { return Serve(FilterCall::Kind::Event, request, length, data, dataLength, returned); }

    // What no test uses.
    HRESULT STDMETHODCALLTYPE MFTGetStreamCount(DWORD *, DWORD *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MFTGetStreamIDs(DWORD, DWORD *, DWORD, DWORD *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MFTGetOutputStreamInfo(DWORD, MFT_OUTPUT_STREAM_INFO *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetAttributes(IMFAttributes **) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetOutputStreamAttributes(DWORD, IMFAttributes **) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MFTGetOutputAvailableType(DWORD, DWORD, IMFMediaType **) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MFTGetOutputCurrentType(DWORD, IMFMediaType **) override { return E_NOTIMPL; }
    // clang-format on

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void **object) noexcept override
    {
        if (!hasTopology && IsEqualGUID(iid, __uuidof(IKsTopologyInfo)))
        {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        return RefusingFilter::QueryInterface(iid, object);
    }
    HRESULT STDMETHODCALLTYPE get_NumNodes(DWORD *count) override
    {
        *count = static_cast<DWORD>(nodes.size());
        return nodeCountResult;
    }
    HRESULT STDMETHODCALLTYPE get_NodeType(DWORD index, GUID *type) override
    {
        *type = nodes.at(index);
        return IsEqualGUID(*type, GUID{}) ? E_INVALIDARG : S_OK;
    }

  private:
    HRESULT Serve(FilterCall::Kind kind, const KSIDENTIFIER *request, ULONG requestLength, void *data, ULONG dataLength,
                  ULONG *bytesReturned)
    {
        FilterCall call{kind, request != nullptr, {}, requestLength, data, {}, dataLength, bytesReturned};
        if (request != nullptr)
        {
            std::memcpy(&call.request, request, std::min<std::size_t>(requestLength, sizeof(call.request)));
        }
        if (const auto *const first = static_cast<const std::uint8_t *>(data))
        {
            call.bytes.assign(first, first + dataLength);
        }
        {
            const std::scoped_lock guard(mutex);
            calls.push_back(call);
        }
        return answer ? answer(call) : S_OK;
    }

    mutable std::mutex mutex;
    std::vector<FilterCall> calls; // guarded by mutex
};

} // namespace tarn_test
