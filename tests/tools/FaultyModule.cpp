// The classes of a module that is broken: its depth transform refuses to start, its color transform keeps every frame.
#include "module/ClassTable.h"

#include "device/TarnColorDeviceMft.h"
#include "device/TarnDepthDeviceMft.h"
#include "base/ComObject.h"

namespace mft_utils
{

namespace
{

class RefusingDepth final : public mft_core::TarnDepthDeviceMft
{
  public:
    RefusingDepth() : Object("Refusing depth transform") {}
    HRESULT STDMETHODCALLTYPE SetOutputStreamState(DWORD, IMFMediaType *, DeviceStreamState, DWORD) override
    {
        return MF_E_INVALIDMEDIATYPE;
    }
};

class StallingColor final : public mft_core::TarnColorDeviceMft
{
  public:
    StallingColor() : Object("Stalling color transform") {}
    HRESULT STDMETHODCALLTYPE ProcessInput(DWORD, IMFSample *sample, DWORD) override
    {
        sample->Release();
        return S_OK;
    }
};

template <class Transform>
HRESULT Create(REFIID riid, void **ppv)
{
    return user_space_frameworks::MakeCom<Transform>()->QueryInterface(riid, ppv);
}

} // namespace

const std::array<ClassObjectInfo, 2> coi{{
    {{0x7F9DF308, 0x0F2D, 0x432E, {0x8C, 0x8E, 0xD3, 0x6E, 0xD8, 0xF1, 0x2C, 0x90}}, Create<RefusingDepth>, L"Depth"},
    {{0x01BC2102, 0x6449, 0x429F, {0x8F, 0x62, 0xB8, 0xD2, 0x3D, 0x1D, 0xE6, 0xD3}}, Create<StallingColor>, L"Color"},
}};

} // namespace mft_utils
