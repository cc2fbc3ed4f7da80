#include "device/TarnGuidNames.h"

#include "platform/MediaFoundation.h"

#include <gtest/gtest.h>

#include "tarn/tarn_dmft.h"
#include "trace/GuidTranslator.h"
#include "trace/KsIdentifierTranslator.h"

namespace
{

using mft_utils::GuidTranslator;
using mft_utils::KsIdentifierKind;
using mft_utils::KsIdentifierTranslator;

// What a trace of an application's call starts with.
std::string NameOf(const GUID &set, ULONG id, ULONG flags)
{
    KSIDENTIFIER request{};
    request.Set = set;
    request.Id = id;
    request.Flags = flags;
    return KsIdentifierTranslator::Name(&request, KsIdentifierKind::Property);
}

TEST(TarnGuidNamesTest, PropertiesOfTheDeviceAppearByNameInTraces)
{
    mft_core::RegisterTarnGuidNames(); // before the translators: nothing to add to
    ASSERT_EQ(S_OK, GuidTranslator::Create());
    ASSERT_EQ(S_OK, KsIdentifierTranslator::Create());
    mft_core::RegisterTarnGuidNames();

    EXPECT_EQ("KSPROPERTYSETID_TARN_DMFT_CONTROL {F84AB655-8931-42BD-8C04-8AE2881454FE} property HW_COMMAND (3) GET",
              NameOf(KSPROPERTYSETID_TARN_DMFT_CONTROL, 3, KSPROPERTY_TYPE_GET));
    EXPECT_EQ("KSPROPERTYSETID_TARN_DEPTH_CONTROL {A55751A1-F3C5-4A5E-8D5A-6854B8FA2716} property "
              "CONFIDENCE_THRESHHOLD (6) SET|TOPOLOGY",
              NameOf(KSPROPERTYSETID_TARN_DEPTH_CONTROL, 6, KSPROPERTY_TYPE_SET | KSPROPERTY_TYPE_TOPOLOGY));
    EXPECT_EQ("KSPROPERTYSETID_TARN_COLOR_CONTROL {B8EC416E-A3AC-4580-8D5C-0BEE1597E43D} property XU_ERROR (3) GET",
              NameOf(KSPROPERTYSETID_TARN_COLOR_CONTROL, 3, KSPROPERTY_TYPE_GET));

    KsIdentifierTranslator::Destroy();
    GuidTranslator::Destroy();
}

} // namespace
