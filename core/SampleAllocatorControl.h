// Tells the pipeline which outputs use its allocators, and takes them (IMFSampleAllocatorControl).
#pragma once

#include "platform/SampleAllocator.h"

#include <memory>

#include "core/OutputStream.h"
#include "core/RecordedPart.h"

namespace mft_core
{

// Base of the device transform, which supplies IUnknown and the outputs. Thread-safe.
class SampleAllocatorControl : public IMFSampleAllocatorControl, public virtual RecordedPart
{
  public:
    using ComInterface = IMFSampleAllocatorControl;

    // E_INVALIDARG for an unknown output, E_NOINTERFACE for an object of no known kind. Null takes the former one back.
    // An output that does not allocate accepts and ignores it.
    HRESULT STDMETHODCALLTYPE SetDefaultAllocator(DWORD dwOutputStreamID, IUnknown *pAllocator) override;
    // MF_E_INVALIDSTREAMNUMBER for an unknown output. The input is told, and asked for, only where its samples come
    // out.
    HRESULT STDMETHODCALLTYPE GetAllocatorUsage(DWORD dwOutputStreamID, DWORD *pdwInputStreamID,
                                                MFSampleAllocatorUsage *peUsage) override;

  protected:
    SampleAllocatorControl();

    struct Outlet
    {
        std::shared_ptr<OutputStream> stream; // null for an unknown output
        bool allocates = false;
        DWORD inputStreamId = 0; // whose samples come out where nothing is allocated
    };

  private:
    // MF_E_SHUTDOWN after shutdown.
    virtual HRESULT FindOutlet(DWORD outputStreamId, Outlet &outlet) const = 0;
};

} // namespace mft_core
