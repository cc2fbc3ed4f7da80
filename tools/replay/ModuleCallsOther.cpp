// ModuleCalls, third part: KS calls, work queue, allocators, shutdown.
#include "tools/replay/ModuleCalls.h"

#include "platform/RealTimeClientEx.h"
#include "platform/SampleAllocator.h"

#include <algorithm>

#include "tools/command/ExitCode.h"
#include "tools/replay/CallArguments.h"
#include "tools/replay/ComValues.h"
#include "base/WideString.h"

namespace tarn_replay
{

using tarn_host::ThrowIfFailed;

namespace
{
constexpr DWORD kLongestData = 16U << 20U; // a damaged recording must not take all memory
constexpr std::size_t kLongestRequest = 65536;

// A block that a caller gave: null, or the recorded bytes with room up to the length that was told.
class Block
{
  public:
    Block(const std::optional<tarn_recording::Value> &recorded, std::size_t length)
        : isNull(recorded && recorded->IsNull())
    {
        if (recorded && !isNull)
        {
            bytes.assign(recorded->Payload().begin(), recorded->Payload().end());
        }
        bytes.resize(std::max(bytes.size(), length));
    }

    void *Address() noexcept
    {
        return isNull ? nullptr : bytes.data();
    }
    const std::vector<std::uint8_t> &Bytes() const noexcept
    {
        return bytes;
    }

  private:
    const bool isNull;
    std::vector<std::uint8_t> bytes;
};
} // namespace

HRESULT ModuleCalls::GetAttributes(Values in, ValueWriter &given)
{
    ComPtr<IMFAttributes> store;
    const HRESULT result = Ask<IMFTransform>()->GetAttributes(Out(in, 0, store.GetAddressOf()));
    Put(given, TARN_VALUE_ATTRIBUTES, store.Get());
    return result;
}

HRESULT ModuleCalls::Shutdown(Values, ValueWriter &)
{
    return Ask<IMFShutdown>()->Shutdown();
}

HRESULT ModuleCalls::GetShutdownStatus(Values in, ValueWriter &given)
{
    MFSHUTDOWN_STATUS status{};
    const HRESULT result = Ask<IMFShutdown>()->GetShutdownStatus(Out(in, 0, &status));
    given.U32(TARN_VALUE_STATUS, static_cast<std::uint32_t>(status));
    return result;
}

HRESULT ModuleCalls::RegisterThreads(Values in, ValueWriter &)
{
    const auto name = in.Find(TARN_VALUE_TASK_CLASS);
    const std::wstring taskClass = mft_utils::Widen(name ? name->Text().value_or("") : "");
    DWORD task = 0;
    return Ask<IMFRealTimeClientEx>()->RegisterThreadsEx(Out(in, 0, &task), taskClass.c_str(),
                                                         static_cast<LONG>(Number(in, TARN_VALUE_PRIORITY)));
}

HRESULT ModuleCalls::UnregisterThreads(Values, ValueWriter &)
{
    return Ask<IMFRealTimeClientEx>()->UnregisterThreads();
}

HRESULT ModuleCalls::SetWorkQueue(Values in, ValueWriter &)
{
    const auto priority = static_cast<LONG>(Number(in, TARN_VALUE_PRIORITY));
    auto queue = std::make_unique<HeldWorkQueue>(priority);
    const HRESULT result = Ask<IMFRealTimeClientEx>()->SetWorkQueueEx(queue->Id(), priority);
    if (!workQueues.empty())
    {
        workQueues.back()->OpenAll(); // what runs goes on with the former one
    }
    workQueues.push_back(std::move(queue));
    return result;
}

HRESULT ModuleCalls::SetDefaultAllocator(Values in, ValueWriter &)
{
    const auto object = in.Find(TARN_VALUE_OBJECT);
    ComPtr<IMFVideoSampleAllocatorEx> allocator;
    if (!object || !object->IsNull())
    {
        ThrowIfFailed(MFCreateVideoSampleAllocatorEx(IID_PPV_ARGS(&allocator)), "MFCreateVideoSampleAllocatorEx");
    }
    return Ask<IMFSampleAllocatorControl>()->SetDefaultAllocator(Number(in, TARN_VALUE_STREAM), allocator.Get());
}

HRESULT ModuleCalls::GetAllocatorUsage(Values in, ValueWriter &given)
{
    DWORD input = 0;
    MFSampleAllocatorUsage usage{};
    const HRESULT result = Ask<IMFSampleAllocatorControl>()->GetAllocatorUsage(Number(in, TARN_VALUE_STREAM),
                                                                               Out(in, 0, &input), Out(in, 1, &usage));
    given.U32(TARN_VALUE_STREAM, input);
    given.U32(TARN_VALUE_USAGE, static_cast<std::uint32_t>(usage));
    return result;
}

// The handles in an application's event block mean nothing here.
KSEVENTDATA &ModuleCalls::EventDataOf(std::uint64_t address)
{
    const auto [found, isNew] = eventData.try_emplace(address);
    if (isNew)
    {
        found->second.NotificationType = KSEVENTF_EVENT_HANDLE;
        found->second.EventHandle.Event = CreateEventW(nullptr, FALSE, FALSE, nullptr); // lives with the process
    }
    return found->second;
}

HRESULT ModuleCalls::KsCall(const tarn_recording::Record &call, ValueWriter &given)
{
    const auto in = call.Values();
    const auto control = Ask<IKsControl>();
    Block request(in.Find(TARN_VALUE_REQUEST), 0);
    const DWORD told = Number(in, TARN_VALUE_DATA_LENGTH);
    Block data(in.Find(TARN_VALUE_DATA), std::min(told, kLongestData));
    const DWORD length = std::min(told, static_cast<DWORD>(data.Bytes().size()));
    const auto requestLength = static_cast<ULONG>(std::min(request.Bytes().size(), kLongestRequest));
    const auto askedFor = in.Find(TARN_VALUE_BYTES_RETURNED);
    ULONG returned = 0;
    ULONG *const returnedAt = askedFor && askedFor->IsNull() ? nullptr : &returned;

    HRESULT result = E_UNEXPECTED;
    switch (call.header.subject & TARN_KS_KIND)
    {
    case TARN_KS_PROPERTY:
        result = control->KsProperty(static_cast<PKSPROPERTY>(request.Address()), requestLength, data.Address(), length,
                                     returnedAt);
        break;
    case TARN_KS_METHOD:
        result = control->KsMethod(static_cast<PKSMETHOD>(request.Address()), requestLength, data.Address(), length,
                                   returnedAt);
        break;
    default: {
        const bool isBlock = data.Address() != nullptr && length >= sizeof(KSEVENTDATA);
        void *const block = isBlock ? &EventDataOf(in.Unsigned(TARN_VALUE_ADDRESS).value_or(0)) : data.Address();
        result = control->KsEvent(static_cast<PKSEVENT>(request.Address()), requestLength, block, length, returnedAt);
    }
    }
    given.U32(TARN_VALUE_BYTES_RETURNED, returned);
    given.Put(TARN_VALUE_DATA, TARN_KIND_BYTES, data.Bytes().data(), std::min<std::size_t>(returned, length));
    return result;
}

} // namespace tarn_replay
