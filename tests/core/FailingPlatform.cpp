#include "tests/core/FailureSession.h"

#include "platform/MediaFoundation.h"

#include <atomic>
#include <cstdlib>
#include <new>

#include "tests/support/OwnWork.h"

namespace tarn_test
{

namespace
{
struct Count
{
    std::atomic<int> seen{0};
    std::atomic<int> failing{0};
};

std::atomic<Count *> platformCalls{nullptr};
std::atomic<Count *> allocations{nullptr};
Count count; // of the FailingPlatform that lives
std::atomic<int> suspensions{0};

bool ShouldFail(const std::atomic<Count *> &kind)
{
    Count *const counted = kind;
    return counted != nullptr && !OwnWork::IsUnderWay() && suspensions == 0 && ++counted->seen == counted->failing;
}
} // namespace

FailingPlatform::FailingPlatform(Failing kind, int failingCall)
{
    count.seen = 0;
    count.failing = failingCall;
    (kind == Failing::PlatformCall ? platformCalls : allocations) = &count;
}

FailingPlatform::~FailingPlatform()
{
    platformCalls = nullptr;
    allocations = nullptr;
}

bool FailingPlatform::LeavesTheCameraAlone()
{
    return platformCalls != nullptr;
}

int FailingPlatform::Calls() const
{
    return count.seen;
}

bool FailingPlatform::HasFailed() const
{
    return count.failing != 0 && count.seen >= count.failing;
}

FailingPlatform::Suspension::Suspension()
{
    ++suspensions;
}

FailingPlatform::Suspension::~Suspension()
{
    --suspensions;
}

} // namespace tarn_test

// The linker sends the module's calls here.
#define TARN_WRAP(name, parameters, arguments)                                                                         \
    HRESULT __real_##name parameters;                                                                                  \
    HRESULT __wrap_##name parameters                                                                                   \
    {                                                                                                                  \
        return tarn_test::ShouldFail(tarn_test::platformCalls) ? E_OUTOFMEMORY : __real_##name arguments;              \
    }

extern "C"
{
    TARN_WRAP(MFCreateAttributes, (IMFAttributes * *attributes, UINT32 size), (attributes, size))
    TARN_WRAP(MFCreateMediaType, (IMFMediaType * *type), (type))
    TARN_WRAP(MFCreateSample, (IMFSample * *sample), (sample))
    TARN_WRAP(MFCreateMemoryBuffer, (DWORD length, IMFMediaBuffer **buffer), (length, buffer))
    TARN_WRAP(MFCreateAlignedMemoryBuffer, (DWORD length, DWORD alignment, IMFMediaBuffer **buffer),
              (length, alignment, buffer))
    TARN_WRAP(MFCreateEventQueue, (IMFMediaEventQueue * *queue), (queue))
    TARN_WRAP(MFCreateMediaEvent,
              (MediaEventType type, REFGUID extendedType, HRESULT status, const PROPVARIANT *value,
               IMFMediaEvent **event),
              (type, extendedType, status, value, event))
    TARN_WRAP(MFCreateAsyncResult,
              (IUnknown * object, IMFAsyncCallback *callback, IUnknown *state, IMFAsyncResult **result),
              (object, callback, state, result))
    TARN_WRAP(MFPutWorkItem2, (DWORD queue, LONG priority, IMFAsyncCallback *callback, IUnknown *state),
              (queue, priority, callback, state))
    TARN_WRAP(MFPutWaitingWorkItem, (HANDLE event, LONG priority, IMFAsyncResult *result, MFWORKITEM_KEY *key),
              (event, priority, result, key))
    TARN_WRAP(CoCreateFreeThreadedMarshaler, (IUnknown * outer, IUnknown **marshaler), (outer, marshaler))
}

namespace
{
void *Allocate(std::size_t size)
{
    return tarn_test::ShouldFail(tarn_test::allocations) ? nullptr : std::malloc(size == 0 ? 1 : size);
}
} // namespace

void *operator new(std::size_t size)
{
    if (void *const memory = Allocate(size))
    {
        return memory;
    }
    throw std::bad_alloc();
}

void *operator new[](std::size_t size)
{
    return operator new(size);
}

void *operator new(std::size_t size, const std::nothrow_t &) noexcept
{
    return Allocate(size);
}

void operator delete(void *memory) noexcept
{
    std::free(memory);
}

void operator delete[](void *memory) noexcept
{
    std::free(memory);
}

void operator delete(void *memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete[](void *memory, std::size_t) noexcept
{
    std::free(memory);
}
