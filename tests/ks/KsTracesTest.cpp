// Texts of the trace that support tools search for.
#include "core/PassThroughDeviceMft.h"
#include "device/properties/TarnHwCommandKsPropertyHandler.h"
#include "ks/PassthroughKsHandlers.h"
#include "tarn/tarn_dmft.h"
#include "tests/ks/FakeFilter.h"
#include "tests/support/Expect.h"
#include "tests/trace/TraceLines.h"

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
