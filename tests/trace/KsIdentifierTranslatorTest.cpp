#include "trace/KsIdentifierTranslator.h"

#include <gtest/gtest.h>

#include "platform/ExtendedCameraControl.h"
#include "trace/GuidTranslator.h"

namespace
{

using mft_utils::GuidTranslator;
using mft_utils::KsIdentifierKind;
using mft_utils::KsIdentifierTranslator;

constexpr GUID kPrivateSet = {0xF84AB655, 0x8931, 0x42BD, {0x8C, 0x04, 0x8A, 0xE2, 0x88, 0x14, 0x54, 0xFE}};

KSIDENTIFIER Identifier(const GUID &set, ULONG id, ULONG flags)
{
    KSIDENTIFIER identifier{};
    identifier.Set = set;
    identifier.Id = id;
    identifier.Flags = flags;
    return identifier;
}

TEST(KsIdentifierTranslatorTest, NamesSetIdAndFlagsWhileItExists)
{
    ASSERT_EQ(S_OK, GuidTranslator::Create());
    ASSERT_EQ(S_OK, KsIdentifierTranslator::Create());
    const KSIDENTIFIER faceAuth =
        Identifier(KSPROPERTYSETID_ExtendedCameraControl, KSPROPERTY_CAMERACONTROL_EXTENDED_FACEAUTH_MODE,
                   KSPROPERTY_TYPE_SET | KSPROPERTY_TYPE_TOPOLOGY | 0x20000000);
    const KSIDENTIFIER update =
        Identifier(KSEVENTSETID_VIDCAPTOSTI, KSEVENT_VIDCAP_AUTO_UPDATE, KSEVENT_TYPE_ENABLE | KSEVENT_TYPE_ONESHOT);

    EXPECT_EQ(
        "KSPROPERTYSETID_ExtendedCameraControl {1CB79112-C0D2-4213-9CA6-CD4FDB927972} property FACEAUTH_MODE (35) "
        "SET|TOPOLOGY|0x20000000",
        KsIdentifierTranslator::Name(&faceAuth, KsIdentifierKind::Property));
    EXPECT_EQ("KSEVENTSETID_VIDCAPTOSTI {DB47DE20-F628-11D1-BA41-00A0C90D2B05} event AUTO_UPDATE (1) ENABLE|ONESHOT",
              KsIdentifierTranslator::Name(&update, KsIdentifierKind::Event));
    // The same identifier means something else as a method.
    EXPECT_EQ("KSEVENTSETID_VIDCAPTOSTI {DB47DE20-F628-11D1-BA41-00A0C90D2B05} method 1 SEND|0x2",
              KsIdentifierTranslator::Name(&update, KsIdentifierKind::Method));
    EXPECT_EQ("null", KsIdentifierTranslator::Name(nullptr, KsIdentifierKind::Event));

    EXPECT_EQ(E_POINTER, KsIdentifierTranslator::Register(KsIdentifierKind::Property, kPrivateSet, 0, nullptr));
    KsIdentifierTranslator::Destroy();
    GuidTranslator::Destroy();
    EXPECT_EQ(E_UNEXPECTED, KsIdentifierTranslator::Register(KsIdentifierKind::Property, kPrivateSet, 0, "LATE"));
    EXPECT_EQ("{DB47DE20-F628-11D1-BA41-00A0C90D2B05} event 1 ENABLE|ONESHOT",
              KsIdentifierTranslator::Name(&update, KsIdentifierKind::Event));
}

} // namespace
