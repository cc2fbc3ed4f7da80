#include "module/ClassTable.h"

#include "device/TarnColorDeviceMft.h"
#include "device/TarnDepthDeviceMft.h"
#include "base/ComObject.h"
#include "trace/Guard.h"

using user_space_frameworks::MakeCom;

namespace mft_utils
{

namespace
{
template <class Create>
HRESULT CreateObject(REFIID riid, void **ppv, Create &&create) noexcept
{
    return Guarded([&]() -> HRESULT {
        CHECK_POINTER(ppv);
        *ppv = nullptr;
        const auto object = create();
        CHECK_HR(object->QueryInterface(riid, ppv));
        return S_OK;
    });
}
} // namespace

HRESULT CreateTarnDepthDeviceMft(REFIID riid, void **ppv) noexcept
{
    return CreateObject(riid, ppv, [] { return MakeCom<mft_core::TarnDepthDeviceMft>(); });
}

HRESULT CreateTarnColorDeviceMft(REFIID riid, void **ppv) noexcept
{
    return CreateObject(riid, ppv, [] { return MakeCom<mft_core::TarnColorDeviceMft>(); });
}

// clang-format off
const std::array<ClassObjectInfo, 2> coi{{
    {{0x7F9DF308, 0x0F2D, 0x432E, {0x8C, 0x8E, 0xD3, 0x6E, 0xD8, 0xF1, 0x2C, 0x90}}, CreateTarnDepthDeviceMft, L"Tarn Depth Device MFT"},
    {{0x01BC2102, 0x6449, 0x429F, {0x8F, 0x62, 0xB8, 0xD2, 0x3D, 0x1D, 0xE6, 0xD3}}, CreateTarnColorDeviceMft, L"Tarn Color Device MFT"},
}};
// clang-format on

} // namespace mft_utils
