// Part of another media buffer, without a copy.
#pragma once

#include "platform/MediaFoundation.h"

#include "base/ComObject.h"

namespace mft_utils
{

// Between two nodes of a chain only, of which the second reads: it is code of this module, and what is written into it
// is written into the other buffer. Keeps that alive. Thread-safe as the other buffer is.
class MediaBufferView : public user_space_frameworks::ComObject<IMFMediaBuffer>
{
  public:
    // `offsetBytes` and `lengthBytes` lie in what `viewedBuffer` holds.
    MediaBufferView(ComPtr<IMFMediaBuffer> viewedBuffer, DWORD offsetBytes, DWORD lengthBytes);

    // Fails as the other buffer does, and with MF_E_BUFFERTOOSMALL when that has become shorter.
    HRESULT STDMETHODCALLTYPE Lock(BYTE **data, DWORD *maximumLength, DWORD *currentLength) override;
    HRESULT STDMETHODCALLTYPE Unlock() override;
    HRESULT STDMETHODCALLTYPE GetCurrentLength(DWORD *currentLength) override;
    // E_INVALIDARG for another length than it has.
    HRESULT STDMETHODCALLTYPE SetCurrentLength(DWORD currentLength) override;
    HRESULT STDMETHODCALLTYPE GetMaxLength(DWORD *maximumLength) override;

  private:
    const ComPtr<IMFMediaBuffer> viewed;
    const DWORD offset;
    const DWORD length;
};

} // namespace mft_utils
