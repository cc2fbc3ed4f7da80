#include "device/TarnGuidNames.h"

#include <windows.h>

#include "tarn/tarn_dmft.h"
#include "tarn/tarn_formats.h"
#include "utils/GuidTranslator.h"

namespace mft_core
{

namespace
{
struct NamedGuid
{
    const GUID &guid;
    const char *name;
};

#define TARN_NAMED(guid)                                                                                               \
    {                                                                                                                  \
        guid, #guid                                                                                                    \
    }
constexpr NamedGuid kNamedGuids[] = {
    TARN_NAMED(CUSTOM_GUID_KELP_Z),
    TARN_NAMED(CUSTOM_GUID_KELP_ZI),
    TARN_NAMED(CUSTOM_GUID_KELP_ZC),
    TARN_NAMED(CUSTOM_GUID_KELP_R),
    TARN_NAMED(CUSTOM_GUID_KELP_RI),
    TARN_NAMED(CUSTOM_GUID_YUY2),
    TARN_NAMED(CUSTOM_GUID_KELP_RELATIVE_IR),
    TARN_NAMED(CUSTOM_GUID_KELP_INTENSITY_10BPP),
    TARN_NAMED(CUSTOM_GUID_KELP_CALIB),
    TARN_NAMED(CUSTOM_GUID_KELP_PACKED_RAW),
    TARN_NAMED(CUSTOM_GUID_KELP_CRAW),
    TARN_NAMED(CUSTOM_GUID_KELP_INTENSITY),
    TARN_NAMED(CUSTOM_GUID_KELP_IV08),
    TARN_NAMED(CUSTOM_GUID_KELP_IV16),
    TARN_NAMED(CUSTOM_GUID_KELP_IV24),
    TARN_NAMED(CUSTOM_GUID_KELP_IV40),
    TARN_NAMED(CUSTOM_GUID_INV_RAW16),
    TARN_NAMED(CUSTOM_GUID_KELP_FACE_LOGIN),
    TARN_NAMED(TARN_EXTRINSICS),
    TARN_NAMED(KSPROPERTYSETID_TARN_DEPTH_CONTROL),
    TARN_NAMED(KSPROPERTYSETID_TARN_COLOR_CONTROL),
    TARN_NAMED(KSPROPERTYSETID_TARN_DMFT_CONTROL),
};
#undef TARN_NAMED
} // namespace

void RegisterTarnGuidNames() noexcept
{
    for (const NamedGuid &entry : kNamedGuids)
    {
        if (FAILED(mft_utils::GuidTranslator::Register(entry.guid, entry.name)))
        {
            return;
        }
    }
}

} // namespace mft_core
