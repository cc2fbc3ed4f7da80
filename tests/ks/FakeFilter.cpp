#include "tests/ks/FakeFilter.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tarn_test
{

std::vector<FilterCall> FakeFilter::Calls() const
{
    const std::scoped_lock guard(mutex);
    return calls;
}

void FakeFilter::Forget()
{
    const std::scoped_lock guard(mutex);
    calls.clear();
}

HRESULT FakeFilter::Serve(FilterCall::Kind kind, const KSIDENTIFIER *request, ULONG requestLength, void *data,
                          ULONG dataLength, ULONG *bytesReturned)
{
    FilterCall call{kind, request != nullptr, {}, requestLength, data, {}, dataLength, bytesReturned};
    if (request != nullptr)
    {
        std::memcpy(&call.request, request, std::min<std::size_t>(requestLength, sizeof(call.request)));
    }
    if (data != nullptr)
    {
        const auto *first = static_cast<const std::uint8_t *>(data);
        call.bytes.assign(first, first + dataLength);
    }
    {
        const std::scoped_lock guard(mutex);
        calls.push_back(call);
    }
    return answer ? answer(call) : S_OK;
}

HRESULT FakeFilter::KsProperty(PKSPROPERTY request, ULONG requestLength, void *data, ULONG dataLength,
                               ULONG *bytesReturned)
{
    return Serve(FilterCall::Kind::Property, request, requestLength, data, dataLength, bytesReturned);
}

HRESULT FakeFilter::KsMethod(PKSMETHOD request, ULONG requestLength, void *data, ULONG dataLength, ULONG *bytesReturned)
{
    return Serve(FilterCall::Kind::Method, request, requestLength, data, dataLength, bytesReturned);
}

HRESULT FakeFilter::KsEvent(PKSEVENT request, ULONG requestLength, void *data, ULONG dataLength, ULONG *bytesReturned)
{
    return Serve(FilterCall::Kind::Event, request, requestLength, data, dataLength, bytesReturned);
}

HRESULT FakeFilter::QueryInterface(REFIID iid, void **object) noexcept
{
    if (!hasTopology && IsEqualGUID(iid, __uuidof(IKsTopologyInfo)))
    {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    return ComObject::QueryInterface(iid, object);
}

HRESULT FakeFilter::get_NumNodes(DWORD *count)
{
    *count = static_cast<DWORD>(nodes.size());
    return nodeCountResult;
}

HRESULT FakeFilter::get_NodeType(DWORD index, GUID *type)
{
    if (index >= nodes.size() || IsEqualGUID(nodes[index], GUID{}))
    {
        return E_INVALIDARG;
    }
    *type = nodes[index];
    return S_OK;
}

} // namespace tarn_test
