#include "tools/frameserver/LockedFrame.h"

#include "tools/command/ExitCode.h"

namespace tarn_host
{

LockedFrame::LockedFrame(IMFSample &sample)
{
    ComPtr<IMFMediaBuffer> joined;
    ThrowIfFailed(sample.ConvertToContiguousBuffer(&joined), "ConvertToContiguousBuffer on a frame");
    ThrowIfFailed(buffer.Lock(joined.Get()), "locking a frame");
}

} // namespace tarn_host
