#include "tests/core/FailingPlatform.h"

#include "platform/MediaFoundation.h"

#include <cstdlib>
#include <new>

namespace tarn_test
{

namespace
{
thread_local int callsLeft = 0;       // until the failing one; 0 = off
thread_local int allocationsLeft = 0; // likewise
thread_local bool paused = false;
thread_local const char *failedCall = nullptr;
thread_local bool allocationFailed = false;

bool ShouldFail(const char *call)
{
    if (paused || callsLeft == 0 || --callsLeft > 0)
    {
        return false;
    }
    failedCall = call;
    return true;
}
} // namespace

FailingPlatform::FailingPlatform(int failingCall)
{
    callsLeft = failingCall;
    failedCall = nullptr;
}

FailingPlatform::~FailingPlatform()
{
    callsLeft = 0;
}

bool FailingPlatform::HasFailed() const
{
    return failedCall != nullptr;
}

const char *FailingPlatform::FailedCall() const
{
    return failedCall;
}

FailingPlatform::Pause::Pause()
{
    paused = true;
}

FailingPlatform::Pause::~Pause()
{
    paused = false;
}

FailingAllocation::FailingAllocation(int failingAllocation)
{
    allocationFailed = false;
    allocationsLeft = failingAllocation;
}

FailingAllocation::~FailingAllocation()
{
    allocationsLeft = 0;
}

bool FailingAllocation::HasFailed() const
{
    return allocationFailed;
}

} // namespace tarn_test

// The linker sends the module's calls here.
extern "C"
{
    HRESULT __real_MFCreateAttributes(IMFAttributes **attributes, UINT32 size);
    HRESULT __real_MFCreateMediaType(IMFMediaType **type);
    HRESULT __real_MFCreateEventQueue(IMFMediaEventQueue **queue);
    HRESULT __real_MFCreateMediaEvent(MediaEventType type, REFGUID extendedType, HRESULT status,
                                      const PROPVARIANT *value, IMFMediaEvent **event);

    HRESULT __wrap_MFCreateAttributes(IMFAttributes **attributes, UINT32 size)
    {
        return tarn_test::ShouldFail("MFCreateAttributes") ? E_OUTOFMEMORY
                                                           : __real_MFCreateAttributes(attributes, size);
    }
    HRESULT __wrap_MFCreateMediaType(IMFMediaType **type)
    {
        return tarn_test::ShouldFail("MFCreateMediaType") ? E_OUTOFMEMORY : __real_MFCreateMediaType(type);
    }
    HRESULT __wrap_MFCreateEventQueue(IMFMediaEventQueue **queue)
    {
        return tarn_test::ShouldFail("MFCreateEventQueue") ? E_OUTOFMEMORY : __real_MFCreateEventQueue(queue);
    }
    HRESULT __wrap_MFCreateMediaEvent(MediaEventType type, REFGUID extendedType, HRESULT status,
                                      const PROPVARIANT *value, IMFMediaEvent **event)
    {
        return tarn_test::ShouldFail("MFCreateMediaEvent")
                   ? E_OUTOFMEMORY
                   : __real_MFCreateMediaEvent(type, extendedType, status, value, event);
    }
}

namespace
{
void *Allocate(std::size_t size)
{
    using namespace tarn_test;
    if (allocationsLeft > 0 && --allocationsLeft == 0)
    {
        allocationFailed = true;
        return nullptr;
    }
    return std::malloc(size == 0 ? 1 : size);
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
