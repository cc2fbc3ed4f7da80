#include "media/IMFSampleUtils.h"

#include "trace/Check.h"

namespace mft_utils
{

HRESULT IMFSampleUtils::Copy(IMFSample **destination, IMFSample *source) noexcept
{
    CHECK_POINTER(destination);
    *destination = nullptr;
    CHECK_POINTER(source);

    ComPtr<IMFSample> copy;
    CHECK_HR(MFCreateSample(copy.GetAddressOf()));
    CHECK_HR(source->CopyAllItems(copy.Get()));

    LONGLONG duration100ns = 0;
    const HRESULT durationResult = source->GetSampleDuration(&duration100ns);
    if (durationResult != MF_E_NO_SAMPLE_DURATION)
    {
        CHECK_HR_AS("source->GetSampleDuration(&duration)", durationResult);
        CHECK_HR(copy->SetSampleDuration(duration100ns));
    }
    LONGLONG time100ns = 0;
    const HRESULT timeResult = source->GetSampleTime(&time100ns);
    if (timeResult != MF_E_NO_SAMPLE_TIMESTAMP)
    {
        CHECK_HR_AS("source->GetSampleTime(&time)", timeResult);
        CHECK_HR(copy->SetSampleTime(time100ns));
    }
    *destination = copy.Detach();
    return S_OK;
}

HRESULT IMFSampleUtils::Replace(IMFSample *destination, IMFSample *source) noexcept
{
    CHECK_POINTER(destination);
    CHECK_POINTER(source);
    LONGLONG duration100ns = 0;
    LONGLONG time100ns = 0;
    if (FAILED(source->GetSampleDuration(&duration100ns)) || FAILED(source->GetSampleTime(&time100ns)))
    {
        return MF_E_NO_SAMPLE_TIMESTAMP;
    }
    CHECK_HR(destination->SetSampleFlags(0));
    CHECK_HR(source->CopyAllItems(destination)); // removes what is there
    CHECK_HR(destination->SetSampleDuration(duration100ns));
    CHECK_HR(destination->SetSampleTime(time100ns));
    return S_OK;
}

} // namespace mft_utils
