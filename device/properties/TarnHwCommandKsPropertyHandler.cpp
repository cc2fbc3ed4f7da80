#include "device/properties/TarnHwCommandKsPropertyHandler.h"

#include <cstdint>
#include <utility>

#include "device/properties/CheckLength.h"
#include "ks/KsRequest.h"
#include "tarn/tarn_dmft.h"
#include "trace/Check.h"

namespace mft_core
{

namespace
{
constexpr ULONG kHeaderSize = sizeof(KSPROPERTY_TARN_HW_COMMAND);
} // namespace

TarnHwCommandKsPropertyHandler::TarnHwCommandKsPropertyHandler(std::shared_ptr<IFirmwareCommandPipe> pipe)
    : KsPropHandler(KSPROPERTYSETID_TARN_DMFT_CONTROL, KSPROPERTY_TARN_DMFT_CONTROL_HW_COMMAND,
                    "Tarn Depth HW command KS Property Handler"),
      fwCommandPipe(std::move(pipe))
{
}

HRESULT TarnHwCommandKsPropertyHandler::Run(PKSPROPERTY pProperty, ULONG, LPVOID pvPropertyData, ULONG ulDataLength,
                                            ULONG *pBytesReturned)
{
    SetReturnedSize(pBytesReturned, kHeaderSize);
    CHECK_HR_AS("CheckLength(ulDataLength, headerSize, *pBytesReturned)", CheckLength(ulDataLength, kHeaderSize));
    CHECK_POINTER_AS("hwCommand", pvPropertyData, E_POINTER);

    // One copy: the application may change its block while the command runs.
    const auto hwCommand = ReadBlock<KSPROPERTY_TARN_HW_COMMAND>(pvPropertyData);
    const std::uint64_t neededLength = std::uint64_t{kHeaderSize} + hwCommand.bufferLength;
    SetReturnedSize(pBytesReturned, SaturatedLength(neededLength));
    CHECK_HR_AS("CheckLength(ulDataLength,(headerSize + hwCommand->bufferLength), *pBytesReturned)",
                CheckLength(ulDataLength, neededLength));

    CHECK_POINTER(pProperty);
    CHECK_POINTER(fwCommandPipe);
    auto *buffer = static_cast<BYTE *>(pvPropertyData) + kHeaderSize;
    const ULONG flags = FlagsOf(pProperty);
    if ((flags & KSPROPERTY_TYPE_SET) != 0)
    {
        CHECK_HR_AS("fwCommandPipe->Set(hwCommand->opCode, hwCommand->buffer, hwCommand->bufferLength, "
                    "hwCommand->param1, hwCommand->param2, hwCommand->param3, hwCommand->param4)",
                    fwCommandPipe->Set(hwCommand.opCode, buffer, hwCommand.bufferLength, hwCommand.param1,
                                       hwCommand.param2, hwCommand.param3, hwCommand.param4));
        return S_OK;
    }
    if ((flags & KSPROPERTY_TYPE_GET) == 0)
    {
        return E_INVALIDARG;
    }
    CHECK_HR_AS("fwCommandPipe->Get(hwCommand->buffer, hwCommand->opCode, hwCommand->bufferLength, "
                "hwCommand->param1, hwCommand->param2, hwCommand->param3, hwCommand->param4)",
                fwCommandPipe->Get(buffer, hwCommand.opCode, hwCommand.bufferLength, hwCommand.param1, hwCommand.param2,
                                   hwCommand.param3, hwCommand.param4));
    return S_OK;
}

} // namespace mft_core
