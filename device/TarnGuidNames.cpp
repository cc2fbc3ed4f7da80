#include "device/TarnGuidNames.h"

#include <windows.h>

#include "tarn/tarn_dmft.h"
#include "tarn/tarn_formats.h"
#include "trace/GuidTranslator.h"
#include "trace/KsIdentifierTranslator.h"

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

struct NamedKsProperty
{
    const GUID &set;
    ULONG id;
    const char *name;
};

#define TARN_DEPTH_CONTROL(ids, control, number) {KSPROPERTYSETID_TARN_DEPTH_CONTROL, number, #control},
#define TARN_COLOR_CONTROL(ids, control, number) {KSPROPERTYSETID_TARN_COLOR_CONTROL, number, #control},
constexpr NamedKsProperty kNamedKsProperties[] = {
    {KSPROPERTYSETID_TARN_DMFT_CONTROL, KSPROPERTY_TARN_DMFT_CONTROL_API_VERSION, "API_VERSION"},
    {KSPROPERTYSETID_TARN_DMFT_CONTROL, KSPROPERTY_TARN_DMFT_CONTROL_DEPTH_PRESETS, "DEPTH_PRESETS"},
    {KSPROPERTYSETID_TARN_DMFT_CONTROL, KSPROPERTY_TARN_DMFT_CONTROL_CONFIDENCE_MAP, "CONFIDENCE_MAP"},
    {KSPROPERTYSETID_TARN_DMFT_CONTROL, KSPROPERTY_TARN_DMFT_CONTROL_HW_COMMAND, "HW_COMMAND"},
    TARN_DEPTH_CONTROLS(TARN_DEPTH_CONTROL) TARN_COLOR_CONTROLS(TARN_COLOR_CONTROL)};
#undef TARN_DEPTH_CONTROL
#undef TARN_COLOR_CONTROL
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
    for (const NamedKsProperty &entry : kNamedKsProperties)
    {
        if (FAILED(mft_utils::KsIdentifierTranslator::Register(mft_utils::KsIdentifierKind::Property, entry.set,
                                                               entry.id, entry.name)))
        {
            return;
        }
    }
}

} // namespace mft_core
