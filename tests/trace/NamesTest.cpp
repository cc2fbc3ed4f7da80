// Names of identifiers, types and functions as the traces show them.
#include "trace/GuidTranslator.h"

#include <set>
#include <source_location>

#include "platform/CameraAttributes.h"
#include "platform/ExtendedCameraControl.h"
#include "base/GuidLess.h"
#include "trace/FunctionName.h"
#include "trace/KsIdentifierTranslator.h"
#include "trace/MediaEventTranslator.h"
#include "trace/MediaTypeTranslator.h"
#include "trace/PlatformGuidNames.h"
#include "trace/StreamNames.h"
#include "tests/support/Expect.h"

using namespace mft_utils;

namespace
{

constexpr GUID kPrivate = {0xF84AB655, 0x8931, 0x42BD, {0x8C, 0x04, 0x8A, 0xE2, 0x88, 0x14, 0x54, 0xFE}};
constexpr char kPrivateText[] = "{F84AB655-8931-42BD-8C04-8AE2881454FE}";

TEST(NamesTest, GuidsHaveNamesOnlyBetweenCreateAndDestroy)
{
    EXPECT_EQ("{00000050-0000-0010-8000-00AA00389B71}", GuidTranslator::Name(MFVideoFormat_D16));
    EXPECT_EQ(E_UNEXPECTED, GuidTranslator::Register(kPrivate, "TOO_EARLY"));

    ASSERT_EQ(S_OK, GuidTranslator::Create());
    EXPECT_EQ(S_FALSE, GuidTranslator::Create());
    EXPECT_EQ("MFVideoFormat_D16 {00000050-0000-0010-8000-00AA00389B71}", GuidTranslator::Name(MFVideoFormat_D16));
    EXPECT_EQ(kPrivateText, GuidTranslator::Name(kPrivate));
    EXPECT_EQ(S_OK, GuidTranslator::Register(kPrivate, "TARN_PRIVATE"));
    EXPECT_EQ(std::string("TARN_PRIVATE ") + kPrivateText, GuidTranslator::Name(kPrivate));
    EXPECT_EQ(E_POINTER, GuidTranslator::Register(kPrivate, nullptr));

    GuidTranslator::Destroy();
    GuidTranslator::Destroy();
    EXPECT_EQ(kPrivateText, GuidTranslator::Name(kPrivate));
}

TEST(NamesTest, LookupsRunBesideCreateAndDestroy)
{
    const tarn_test::Repeating reader(
        [] { EXPECT_TRUE(GuidTranslator::Name(MFVideoFormat_D16).ends_with("00AA00389B71}")); });
    for (int i = 0; i < 10; ++i)
    {
        EXPECT_EQ(S_OK, GuidTranslator::Create());
        EXPECT_EQ(S_OK, GuidTranslator::Register(kPrivate, "TARN_PRIVATE"));
        GuidTranslator::Destroy();
    }
}

TEST(NamesTest, KsIdentifiersShowSetIdAndFlags)
{
    ASSERT_EQ(S_OK, GuidTranslator::Create());
    ASSERT_EQ(S_OK, KsIdentifierTranslator::Create());
    const KSIDENTIFIER faceAuth{
        {{KSPROPERTYSETID_ExtendedCameraControl, KSPROPERTY_CAMERACONTROL_EXTENDED_FACEAUTH_MODE,
          KSPROPERTY_TYPE_SET | KSPROPERTY_TYPE_TOPOLOGY | 0x20000000}}};
    const KSIDENTIFIER update{
        {{KSEVENTSETID_VIDCAPTOSTI, KSEVENT_VIDCAP_AUTO_UPDATE, KSEVENT_TYPE_ENABLE | KSEVENT_TYPE_ONESHOT}}};

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

    EXPECT_EQ(E_POINTER, KsIdentifierTranslator::Register(KsIdentifierKind::Property, kPrivate, 0, nullptr));
    KsIdentifierTranslator::Destroy();
    GuidTranslator::Destroy();
    EXPECT_EQ(E_UNEXPECTED, KsIdentifierTranslator::Register(KsIdentifierKind::Property, kPrivate, 0, "LATE"));
    EXPECT_EQ("{DB47DE20-F628-11D1-BA41-00A0C90D2B05} event 1 ENABLE|ONESHOT",
              KsIdentifierTranslator::Name(&update, KsIdentifierKind::Event));
}

TEST(NamesTest, MediaTypesShowWhatTheyHave)
{
    ComPtr<IMFMediaType> type;
    ASSERT_EQ(S_OK, MFCreateMediaType(type.GetAddressOf()));
    EXPECT_EQ("null", MediaTypeTranslator::Describe(nullptr));
    EXPECT_EQ("no subtype", MediaTypeTranslator::Describe(type.Get()));

    ASSERT_EQ(S_OK, GuidTranslator::Create());
    ASSERT_EQ(S_OK, MediaTypeTranslator::Create());
    ASSERT_EQ(S_OK, type->SetGUID(MF_MT_SUBTYPE, MFVideoFormat_L8));
    ASSERT_EQ(S_OK, MFSetAttributeSize(type.Get(), MF_MT_FRAME_SIZE, 640, 480));
    ASSERT_EQ(S_OK, MFSetAttributeRatio(type.Get(), MF_MT_FRAME_RATE, 30, 1));
    EXPECT_EQ("MFVideoFormat_L8 {00000032-0000-0010-8000-00AA00389B71} 640x480 @ 30/1 fps",
              MediaTypeTranslator::Describe(type.Get()));
    MediaTypeTranslator::Destroy();
    GuidTranslator::Destroy();
}

TEST(NamesTest, TablesHoldEachGuidOnceAndUnknownValuesHaveNamesToo)
{
    std::set<GUID, GuidLess> guids;
    for (const NamedGuid &entry : PlatformGuidNames())
    {
        EXPECT_TRUE(guids.insert(*entry.guid).second) << entry.name;
    }
    EXPECT_STREQ("MEUnknown", MediaEventTranslator::Name(0));
    EXPECT_STREQ("METransformHaveOutput", MediaEventTranslator::Name(602));
    EXPECT_STREQ("MEReservedMax", MediaEventTranslator::Name(10000));
    EXPECT_STREQ("Unknown event", MediaEventTranslator::Name(606));
    EXPECT_STREQ("Unknown event", MediaEventTranslator::Name(0xFFFFFFFF));
    EXPECT_STREQ("Active", StreamStateName(DeviceStreamState_Run));
    EXPECT_STREQ("Infrared", FrameSourceName(MFFrameSourceTypes_Infrared));
    EXPECT_STREQ("Unknown MFFrameSourceType", FrameSourceName(MFFrameSourceTypes_Depth | MFFrameSourceTypes_Infrared));
}

TEST(NamesTest, FunctionsKeepOnlyTheQualifiedName)
{
    const std::pair<const char *, const char *> cases[] = {
        {"virtual HRESULT ns::Class::Method(int)::<lambda()>", "ns::Class::Method"},
        {"virtual ns::Class::~Class()", "ns::Class::~Class"},
        {"std::map<int, std::pair<int, int> > ns::Make(int)", "ns::Make"},
        {"HRESULT ns::Dispatcher<T>::Run(T) [with T = ns::Handler<int (*)()>]", "ns::Dispatcher<T>::Run"},
        {"bool ns::Less::operator()(int, int) const", "ns::Less::operator()"},
        {"char &(anonymous namespace)::Element(int)", "(anonymous namespace)::Element"},
        {"void {anonymous}::Run()", "{anonymous}::Run"},
        {"DllGetClassObject", "DllGetClassObject"},
        {"", ""},
        {nullptr, ""},
    };
    for (const auto &[pretty, name] : cases)
    {
        EXPECT_EQ(name, QualifiedFunctionName(pretty)) << name;
    }
    const auto inLambda = [] { return std::source_location::current().function_name(); }();
    EXPECT_TRUE(QualifiedFunctionName(inLambda).ends_with("KeepOnlyTheQualifiedName_Test::TestBody")) << inLambda;
}

} // namespace
