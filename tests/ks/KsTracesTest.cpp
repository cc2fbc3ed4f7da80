// Texts of the trace that support tools search for.
#include <string>

#include "device/TarnHwCommandKsPropertyHandler.h"
#include "ks/PassthroughKsPropsHandler.h"
#include "tarn/tarn_dmft.h"
#include "tests/ks/FakeFilter.h"
#include "tests/ks/TestDevice.h"
#include "tests/support/Expect.h"
#include "utils/ComObject.h"
#include "utils/DebugTraceSink.h"

using namespace mft_core;
using namespace tarn_test;
using user_space_frameworks::MakeCom;

namespace
{

class KsTracesTest : public testing::Test
{
  protected:
    KsTracesTest()
    {
        mft_utils::DebugTraceSink::SetCallback(
            [](void *context, mft_utils::TraceLevel, const char *line) {
                static_cast<std::string *>(context)->append(line).append("\n");
            },
            &text);
    }
    ~KsTracesTest() override
    {
        mft_utils::DebugTraceSink::SetCallback(nullptr, nullptr);
    }
    void ExpectTraced(const char *part) const
    {
        EXPECT_NE(std::string::npos, text.find(part)) << part << "\nis not in\n" << text;
    }

    std::string text;
    ComPtr<TestDevice> device = MakeCom<TestDevice>();
    ComPtr<FakeFilter> filter = MakeCom<FakeFilter>();
};

} // namespace

TEST_F(KsTracesTest, CallsAreDumpedAndEndWithTheirResult)
{
    ASSERT_HR(S_OK, device->RegisterKsPropertyDefaultHandler(std::make_shared<PassthroughKsPropsHandler>(filter)));
    filter->answer = [](const FilterCall &) { return E_ACCESSDENIED; };
    KSIDENTIFIER request = MakeRequest(KSPROPERTYSETID_TARN_DMFT_CONTROL, 9, KSPROPERTY_TYPE_GET);
    BYTE data[40] = {0xDE, 0xAD};
    ULONG returned = 17;
    EXPECT_HR(E_ACCESSDENIED, device->KsProperty(&request, sizeof(request), data, sizeof(data), &returned));
    EXPECT_HR(0x492, device->KsMethod(&request, sizeof(request), nullptr, 0, nullptr));

    ExpectTraced("mft_core::KsControlsDispatcher::KsProperty");
    ExpectTraced("55 B6 4A F8 31 89 BD 42"); // the identifier's first bytes
    ExpectTraced("DE AD 00");
    ExpectTraced(
        "myKsControl->KsProperty(pProperty, ulPropertyLength, pvPropertyData, ulDataLength, pulBytesReturned)");
    ExpectTraced("hr 0x80070005, bytes returned 17");
    ExpectTraced("PropId");
    ExpectTraced("mft_core::KsControlsDispatcher::KsMethod");
    ExpectTraced("hr 0x00000492, bytes returned null");
    ExpectTraced("EventSet");
}

TEST_F(KsTracesTest, FailedStepsAreNamedAsWritten)
{
    ASSERT_HR(S_OK, device->RegisterKsPropertyHandler(std::make_shared<TarnHwCommandKsPropertyHandler>(nullptr)));
    EXPECT_HR(E_INVALIDARG, device->RegisterKsEventHandler(nullptr));
    KSIDENTIFIER request = MakeRequest(KSPROPERTYSETID_TARN_DMFT_CONTROL, 3, KSPROPERTY_TYPE_GET);
    KSPROPERTY_TARN_HW_COMMAND command{1, 16, 0, 0, 0, 0};
    const auto call = [&](void *data, ULONG length) {
        return device->KsProperty(&request, sizeof(request), data, length, nullptr);
    };
    EXPECT_HR(HRESULT_FROM_WIN32(ERROR_MORE_DATA), call(&command, 23));
    EXPECT_HR(HRESULT_FROM_WIN32(ERROR_MORE_DATA), call(&command, 24));
    EXPECT_HR(E_POINTER, call(nullptr, 24));

    ExpectTraced("eventsDispathcer.RegisterHandler(handler)");
    ExpectTraced("CheckLength(ulDataLength, headerSize, *pBytesReturned)");
    ExpectTraced("CheckLength(ulDataLength,(headerSize + hwCommand->bufferLength), *pBytesReturned)");
    ExpectTraced("hwCommand");
    ExpectTraced("valid pointer");
}
