// Texts of the trace that support tools search for.
#include "core/PassThroughDeviceMft.h"
#include "device/TarnGuidNames.h"
#include "device/properties/TarnHwCommandKsPropertyHandler.h"
#include "ks/PassthroughKsHandlers.h"
#include "tarn/tarn_dmft.h"
#include "tests/ks/FakeFilter.h"
#include "tests/trace/TraceLines.h"
#include "trace/GuidTranslator.h"

using namespace mft_core;
using namespace tarn_test;
using user_space_frameworks::MakeCom;

TEST(KsTracesTest, CallsAreDumpedAndFailedStepsAreNamedAsWritten)
{
    const TraceLines trace;
    const auto device = MakeCom<PassThroughDeviceMft>("Test device");
    const auto filter = MakeCom<FakeFilter>();
    ASSERT_HR(S_OK, device->RegisterKsPropertyHandler(std::make_shared<TarnHwCommandKsPropertyHandler>(nullptr)));
    ASSERT_HR(S_OK, device->RegisterKsPropertyDefaultHandler(std::make_shared<PassthroughKsPropsHandler>(filter)));
    filter->answer = [](const FilterCall &) { return E_ACCESSDENIED; };
    ULONG returned = 17;
    const auto get = [&](ULONG id, void *data, ULONG length) {
        KSIDENTIFIER request = MakeRequest(KSPROPERTYSETID_TARN_DMFT_CONTROL, id, KSPROPERTY_TYPE_GET);
        return device->KsProperty(&request, sizeof(request), data, length, &returned);
    };
    BYTE data[40] = {0xDE, 0xAD};
    EXPECT_HR(E_ACCESSDENIED, get(9, data, sizeof(data)));
    KSIDENTIFIER method = MakeRequest(kTestSet, 1, KSMETHOD_TYPE_SEND);
    EXPECT_HR(kBareSetNotFound, device->KsMethod(&method, sizeof(method), nullptr, 0, nullptr));
    EXPECT_HR(E_INVALIDARG, device->RegisterKsEventHandler(nullptr));
    KSPROPERTY_TARN_HW_COMMAND command{1, 16, 0, 0, 0, 0};
    EXPECT_HR(kMoreData, get(3, &command, 23));
    EXPECT_HR(kMoreData, get(3, &command, 24));
    EXPECT_HR(E_POINTER, get(3, nullptr, 24));

    for (const char *part :
         {"mft_core::KsControlsDispatcher::KsProperty", "55 B6 4A F8 31 89 BD 42", "DE AD 00", "PropId", "EventSet",
          "myKsControl->KsProperty(pProperty, ulPropertyLength, pvPropertyData, ulDataLength, pulBytesReturned)",
          "hr 0x80070005, bytes returned 17", "mft_core::KsControlsDispatcher::KsMethod",
          "hr 0x00000492, bytes returned null", "eventsDispathcer.RegisterHandler(handler)",
          "CheckLength(ulDataLength, headerSize, *pBytesReturned)",
          "CheckLength(ulDataLength,(headerSize + hwCommand->bufferLength), *pBytesReturned)",
          "hwCommand is nullptr, expected valid pointer"})
    {
        EXPECT_TRUE(trace.Contains(part)) << part;
    }
}

TEST(KsTracesTest, PropertiesOfTheDeviceAppearByName)
{
    RegisterTarnGuidNames(); // before the translators: nothing to add to
    ASSERT_EQ(S_OK, mft_utils::GuidTranslator::Create());
    ASSERT_EQ(S_OK, mft_utils::KsIdentifierTranslator::Create());
    RegisterTarnGuidNames();
    for (const auto &[set, id, flags, name] :
         {std::tuple{&KSPROPERTYSETID_TARN_DMFT_CONTROL, 3u, KSPROPERTY_TYPE_GET,
                     "KSPROPERTYSETID_TARN_DMFT_CONTROL {F84AB655-8931-42BD-8C04-8AE2881454FE} property HW_COMMAND (3) "
                     "GET"},
          {&KSPROPERTYSETID_TARN_DEPTH_CONTROL, 6u, KSPROPERTY_TYPE_SET | KSPROPERTY_TYPE_TOPOLOGY,
           "KSPROPERTYSETID_TARN_DEPTH_CONTROL {A55751A1-F3C5-4A5E-8D5A-6854B8FA2716} property "
           "CONFIDENCE_THRESHHOLD (6) SET|TOPOLOGY"},
          {&KSPROPERTYSETID_TARN_COLOR_CONTROL, 3u, KSPROPERTY_TYPE_GET,
           "KSPROPERTYSETID_TARN_COLOR_CONTROL {B8EC416E-A3AC-4580-8D5C-0BEE1597E43D} property XU_ERROR (3) GET"}})
    {
        const KSIDENTIFIER request = MakeRequest(*set, id, static_cast<ULONG>(flags));
        EXPECT_EQ(name, mft_utils::KsIdentifierTranslator::Name(&request, mft_utils::KsIdentifierKind::Property));
    }
    mft_utils::KsIdentifierTranslator::Destroy();
    mft_utils::GuidTranslator::Destroy();
}
