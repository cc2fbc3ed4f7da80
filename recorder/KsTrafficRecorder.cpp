#include "recorder/KsTrafficRecorder.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "ks/KsRequest.h"

namespace mft_der
{

namespace
{
constexpr std::size_t kUsualDepth = 32;
constexpr std::size_t kLongestBlock = 65536;

// Callers may lie about a length: only what can be read is, up to the first byte that cannot.
std::size_t ReadableBytes(const void *block, std::size_t wanted) noexcept
{
    const auto begin = reinterpret_cast<std::uintptr_t>(block);
    std::uintptr_t at = begin;
    while (at - begin < wanted)
    {
        MEMORY_BASIC_INFORMATION region{};
        constexpr DWORD kUnreadable = PAGE_NOACCESS | PAGE_GUARD | PAGE_EXECUTE;
        if (VirtualQuery(reinterpret_cast<const void *>(at), &region, sizeof(region)) == 0 ||
            region.State != MEM_COMMIT || (region.Protect & kUnreadable) != 0)
        {
            break;
        }
        at = reinterpret_cast<std::uintptr_t>(region.BaseAddress) + region.RegionSize;
    }
    return std::min<std::size_t>(at - begin, wanted);
}

void AddBlock(RecordBuilder &values, std::uint16_t name, const void *block, std::size_t length)
{
    if (block == nullptr)
    {
        values.Null(name);
        return;
    }
    const std::size_t told = ReadableBytes(block, std::min(length, kLongestBlock));
    values.Block(name, {static_cast<const std::uint8_t *>(block), told});
    if (told < length)
    {
        values.U64(TARN_VALUE_FULL_LENGTH, length);
    }
}
} // namespace

KsTrafficRecorder::KsTrafficRecorder(std::shared_ptr<const TransformRecording> recordedTransform,
                                     KsAddressee calledControl)
    : transform(std::move(recordedTransform)), addressee(calledControl)
{
    const std::scoped_lock guard(lock);
    openCalls.reserve(kUsualDepth);
}

std::uint16_t KsTrafficRecorder::SubjectOf(mft_core::KsControlType type) const noexcept
{
    return static_cast<std::uint16_t>(static_cast<unsigned>(type) | static_cast<unsigned>(addressee));
}

void KsTrafficRecorder::OnKsControlEntry(mft_core::KsControlType type, const KSIDENTIFIER *request, ULONG requestLength,
                                         const void *data, ULONG dataLength, const ULONG *bytesReturned)
{
    const RecordHead head{
        .type = TARN_RECORD_KS_CALL, .subject = SubjectOf(type), .entry = CallUnderWay::OfThisThread()};
    const std::uint64_t sequence = transform->Write(head, [&](RecordBuilder &values) {
        AddBlock(values, TARN_VALUE_REQUEST, request, requestLength);
        AddBlock(values, TARN_VALUE_DATA, data, dataLength);
        values.U32(TARN_VALUE_DATA_LENGTH, dataLength);
        if (type == mft_core::KsControlType::Event)
        {
            values.U64(TARN_VALUE_ADDRESS, reinterpret_cast<std::uintptr_t>(data));
        }
        if (bytesReturned == nullptr)
        {
            values.Null(TARN_VALUE_BYTES_RETURNED);
        }
    });
    const std::scoped_lock guard(lock);
    openCalls.push_back({GetCurrentThreadId(), sequence, 0});
    openCalls.back().before = CallUnderWay::Exchange(sequence);
}

void KsTrafficRecorder::OnKsControlExit(mft_core::KsControlType type, const KSIDENTIFIER *, ULONG, const void *data,
                                        ULONG dataLength, const ULONG *bytesReturned, HRESULT result)
{
    const OpenCall call = TakeLastOfThisThread();
    CallUnderWay::Exchange(call.before);
    const RecordHead head{
        .type = TARN_RECORD_KS_RETURN, .subject = SubjectOf(type), .result = result, .entry = call.sequence};
    transform->Write(head, [&](RecordBuilder &values) {
        if (bytesReturned == nullptr || (FAILED(result) && !mft_core::IsLengthAnswer(result, dataLength)))
        {
            return;
        }
        values.U32(TARN_VALUE_BYTES_RETURNED, *bytesReturned);
        if (data != nullptr && *bytesReturned != 0 && SUCCEEDED(result))
        {
            AddBlock(values, TARN_VALUE_DATA, data, std::min(*bytesReturned, dataLength));
        }
    });
}

KsTrafficRecorder::OpenCall KsTrafficRecorder::TakeLastOfThisThread() noexcept
{
    const DWORD thread = GetCurrentThreadId();
    const std::scoped_lock guard(lock);
    const auto last =
        std::find_if(openCalls.rbegin(), openCalls.rend(), [&](const OpenCall &call) { return call.thread == thread; });
    if (last == openCalls.rend())
    {
        return {thread, 0, 0}; // there was no memory for it
    }
    const OpenCall call = *last;
    openCalls.erase(std::next(last).base());
    return call;
}

} // namespace mft_der
