#include "media/SampleAllocator.h"

#include "platform/SampleAllocator.h"

#include <mutex>
#include <utility>

#include "media/IMFSampleUtils.h"
#include "trace/Check.h"

namespace mft_utils
{

namespace
{
constexpr DWORD kFirstSamples = 10;
constexpr DWORD kMostSamples = 50;
} // namespace

SampleAllocator::SampleAllocator(std::string streamName) : name(std::move(streamName)) {}

SampleAllocator::~SampleAllocator()
{
    LetGo();
}

HRESULT SampleAllocator::Offer(IUnknown *offeredAllocator)
{
    ComPtr<IMFVideoSampleAllocator> next;
    if (offeredAllocator != nullptr)
    {
        ComPtr<IMFVideoCaptureSampleAllocator> capture;
        ComPtr<IMFVideoSampleAllocatorEx> extended;
        if (SUCCEEDED(offeredAllocator->QueryInterface(IID_PPV_ARGS(&capture))))
        {
            next = capture;
        }
        else
        {
            CHECK_HR(offeredAllocator->QueryInterface(IID_PPV_ARGS(&extended)));
            next = extended;
        }
    }
    const std::scoped_lock guard(changing);
    LetGo();
    offered = next;
    Prepare();
    return S_OK;
}

void SampleAllocator::Start(IMFMediaType *mediaType)
{
    const std::scoped_lock guard(changing);
    runningType = mediaType;
    Prepare();
}

void SampleAllocator::Prepare()
{
    Publish(nullptr);
    if (!offered || !runningType)
    {
        return;
    }
    if (const HRESULT initialized = Initialize(); FAILED(initialized))
    {
        TRACE_ERROR("%s: the pipeline's allocator does not serve this type, own memory instead, hr 0x%08lX",
                    name.c_str(), static_cast<unsigned long>(initialized));
        return;
    }
    TRACE_INFO("%s: samples of the pipeline's allocator", name.c_str());
    Publish(offered);
}

HRESULT SampleAllocator::Initialize()
{
    (void)offered->UninitializeSampleAllocator(); // of another type; fails where there was none
    ComPtr<IMFVideoCaptureSampleAllocator> capture;
    if (SUCCEEDED(offered.As(&capture)))
    {
        CHECK_HR(capture->InitializeCaptureSampleAllocator(0, 0, 0, kFirstSamples, nullptr, runningType.Get()));
        return S_OK;
    }
    ComPtr<IMFVideoSampleAllocatorEx> extended;
    CHECK_HR(offered.As(&extended));
    CHECK_HR(extended->InitializeSampleAllocatorEx(kFirstSamples, kMostSamples, nullptr, runningType.Get()));
    return S_OK;
}

void SampleAllocator::Stop()
{
    const std::scoped_lock guard(changing);
    LetGo();
    runningType.Reset();
}

void SampleAllocator::LetGo()
{
    if (const auto used = Publish(nullptr))
    {
        used->UninitializeSampleAllocator();
    }
    offered.Reset();
}

ComPtr<IMFVideoSampleAllocator> SampleAllocator::Publish(ComPtr<IMFVideoSampleAllocator> allocator)
{
    const std::scoped_lock guard(lock);
    ready.Swap(allocator);
    hasTold = false;
    return allocator;
}

HRESULT SampleAllocator::Allocate(IMFSample *source, IMFSample **sample)
{
    const HRESULT taken = Take(source, sample);
    if (FAILED(taken) && taken != MF_E_NOT_INITIALIZED)
    {
        const std::scoped_lock guard(lock);
        if (!hasTold)
        {
            hasTold = true;
            TRACE_ERROR("%s: no sample of the pipeline's allocator, own memory instead, hr 0x%08lX; said once",
                        name.c_str(), static_cast<unsigned long>(taken));
        }
    }
    return taken;
}

HRESULT SampleAllocator::Take(IMFSample *source, IMFSample **sample) const
{
    ComPtr<IMFVideoSampleAllocator> allocator;
    {
        const std::scoped_lock guard(lock);
        allocator = ready;
    }
    if (!allocator)
    {
        return MF_E_NOT_INITIALIZED; // none was offered, or it has just been let go of
    }
    ComPtr<IMFSample> free;
    const HRESULT allocated = allocator->AllocateSample(free.GetAddressOf());
    if (FAILED(allocated))
    {
        return allocated; // for one, when the application holds them all
    }
    CHECK_POINTER_AS("sample", free, E_UNEXPECTED);
    CHECK_HR(IMFSampleUtils::Replace(free.Get(), source));
    *sample = free.Detach();
    return S_OK;
}

} // namespace mft_utils
