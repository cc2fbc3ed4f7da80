#include "tools/frameserver/LockedFrame.h"

#include "tools/command/ExitCode.h"

namespace tarn_host
{

LockedFrame::LockedFrame(IMFSample &sample)
{
    ThrowIfFailed(sample.ConvertToContiguousBuffer(&buffer), "ConvertToContiguousBuffer on a frame");
    BYTE *data = nullptr;
    DWORD length = 0;
    ThrowIfFailed(buffer->Lock(&data, nullptr, &length), "locking a frame");
    bytes = std::as_bytes(std::span(data, length));
}

LockedFrame::~LockedFrame()
{
    buffer->Unlock();
}

} // namespace tarn_host
