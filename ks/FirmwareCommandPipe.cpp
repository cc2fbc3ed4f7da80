#include "ks/FirmwareCommandPipe.h"

#include <cstring>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "trace/Check.h"

namespace mft_core
{

namespace
{
constexpr std::uint16_t kMagic = 0xCDAB;
constexpr std::uint16_t kCommandHeader = 20; // opcode and parameters
constexpr ULONG kEchoSize = 4;
} // namespace

FirmwareCommandPipe::FirmwareCommandPipe(ComPtr<IKsControl> ksControl, const GUID &set, ULONG controlId,
                                         const std::string &objectName)
    : Object(objectName), uvcCommand(std::move(ksControl), set, controlId, objectName + " firmware command")
{
}

HRESULT FirmwareCommandPipe::Set(ULONG opcode, const void *data, ULONG size, ULONG param1, ULONG param2, ULONG param3,
                                 ULONG param4)
{
    const ULONG payload = data != nullptr ? size : 0;
    if (payload > kMaxPayload)
    {
        throw std::invalid_argument("failed to copy data");
    }
    Command command{
        static_cast<std::uint16_t>(kCommandHeader + payload), kMagic, opcode, {param1, param2, param3, param4}, {}};
    if (payload != 0)
    {
        std::memcpy(command.data, data, payload);
    }

    Answer answer{};
    const std::scoped_lock guard(lock);
    return Exchange(command, answer, 0);
}

HRESULT FirmwareCommandPipe::Get(void *buffer, ULONG opcode, ULONG size, ULONG param1, ULONG param2, ULONG param3,
                                 ULONG param4)
{
    if (size > sizeof(Answer::data))
    {
        TRACE_ERROR("%s: %lu bytes asked, %zu at most", GetName(), size, sizeof(Answer::data));
        return E_INVALIDARG;
    }
    const Command command{kCommandHeader, kMagic, opcode, {param1, param2, param3, param4}, {}};
    Answer answer{};
    {
        const std::scoped_lock guard(lock);
        const HRESULT result = Exchange(command, answer, size);
        if (FAILED(result))
        {
            return result;
        }
    }
    if (size == 0)
    {
        return S_OK;
    }
    if (buffer == nullptr)
    {
        TRACE_ERROR("%s: no buffer for %lu bytes of answer", GetName(), size);
        return E_FAIL;
    }
    std::memcpy(buffer, answer.data, size);
    return S_OK;
}

HRESULT FirmwareCommandPipe::Exchange(const Command &writeBuffer, Answer &readBuffer, ULONG expected)
{
    CHECK_HR_AS("uvcCommand.Set(writeBuffer)", uvcCommand.Set(&writeBuffer, sizeof(writeBuffer)));
    ULONG bytesReturned = 0;
    CHECK_HR_AS("uvcCommand.Get(readBuffer, bytesReturned)",
                uvcCommand.Get(&readBuffer, sizeof(readBuffer), bytesReturned));
    if (bytesReturned < expected + kEchoSize)
    {
        TRACE_ERROR("%s: %lu bytes returned, %lu expected", GetName(), bytesReturned, expected + kEchoSize);
        return E_FAIL;
    }
    if (readBuffer.opcode != writeBuffer.opcode)
    {
        TRACE_ERROR("%s: opcode %u sent, %u received", GetName(), writeBuffer.opcode, readBuffer.opcode);
        return E_FAIL;
    }
    return S_OK;
}

} // namespace mft_core
