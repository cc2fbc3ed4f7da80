#include "core/PassThroughDeviceMft.h"

#include "tests/support/TestFrameServer.h"
#include "tests/trace/TraceLines.h"

using namespace tarn_sim;
using namespace tarn_test;
using user_space_frameworks::MakeCom;

namespace
{

class TransformSurfaceTest : public testing::Test
{
  protected:
    static ComPtr<IMFDeviceTransform> NewTransform() { return MakeCom<mft_core::PassThroughDeviceMft>("Test DMFT"); }

    TestFrameServer server{NewTransform(), SteppedCamera()};
    const ComPtr<IMFDeviceTransform> &transform = server.transform;
    DWORD inputs[2] = {9, 9};
    DWORD outputs[2] = {42, 42};
};

// Which one it is and how it leads back: the objects' common base has tests of its own.
TEST_F(TransformSurfaceTest, EveryInterfaceIsThere)
{
    for (const IID &iid :
         {__uuidof(IMFDeviceTransform), __uuidof(IMFTransform), __uuidof(IMFShutdown), __uuidof(IMFMediaEventGenerator),
          __uuidof(IKsControl), __uuidof(IMFRealTimeClientEx), __uuidof(IAgileObject), __uuidof(IMarshal)})
    {
        ComPtr<IUnknown> face;
        EXPECT_HR(S_OK, transform->QueryInterface(iid, reinterpret_cast<void **>(face.GetAddressOf())));
    }
    void *other = &other;
    EXPECT_HR(E_NOINTERFACE, transform->QueryInterface(__uuidof(IMFSample), &other));
}

TEST_F(TransformSurfaceTest, NullArgumentsAndUnknownStreamsAreRefused)
{
    constexpr auto kRun = DeviceStreamState_Run;
    constexpr auto kNoState = static_cast<DeviceStreamState>(7);
    DWORD number = 0;
    DeviceStreamState state = DeviceStreamState_Stop;
    ComPtr<IMFMediaType> type;
    ComPtr<IMFAttributes> attributes;
    MFT_OUTPUT_DATA_BUFFER buffer{};

    EXPECT_HR(E_POINTER, transform->GetStreamCount(nullptr, &number));
    EXPECT_HR(E_POINTER, transform->GetStreamCount(&number, nullptr));
    EXPECT_HR(E_POINTER, transform->GetInputAvailableType(0, 0, nullptr));
    EXPECT_HR(E_POINTER, transform->GetOutputAvailableType(0, 0, nullptr));
    EXPECT_HR(E_POINTER, transform->GetInputCurrentType(0, nullptr));
    EXPECT_HR(E_POINTER, transform->GetOutputCurrentType(0, nullptr));
    EXPECT_HR(E_POINTER, transform->GetInputStreamAttributes(0, nullptr));
    EXPECT_HR(E_POINTER, transform->GetOutputStreamAttributes(0, nullptr));
    EXPECT_HR(E_POINTER, transform->GetInputStreamState(0, nullptr));
    EXPECT_HR(E_POINTER, transform->GetOutputStreamState(0, nullptr));
    EXPECT_HR(E_POINTER, transform->GetInputStreamPreferredState(0, nullptr, &type));
    EXPECT_HR(E_POINTER, transform->GetInputStreamPreferredState(0, &state, nullptr));
    EXPECT_HR(E_POINTER, transform->ProcessInput(0, nullptr, 0));
    EXPECT_HR(E_POINTER, transform->ProcessOutput(0, 1, nullptr, &number));
    EXPECT_HR(E_POINTER, transform->ProcessOutput(0, 1, &buffer, nullptr));
    EXPECT_HR(E_POINTER, transform->SetOutputStreamState(0, nullptr, kRun, 0));
    EXPECT_HR(E_POINTER, transform->SetInputStreamState(0, nullptr, kRun, 0));
    EXPECT_HR(E_INVALIDARG, transform->SetInputStreamState(0, nullptr, kNoState, 0));
    EXPECT_HR(E_INVALIDARG, transform->SetOutputStreamState(0, nullptr, kNoState, 0));
    {
        const TraceLines trace(mft_utils::TraceLevel::Error);
        EXPECT_HR(E_FAIL, transform->GetInputAvailableType(5, 0, &type));
        ASSERT_EQ(4u, trace.lines.size()); // the scan, the search, the call, the entry point
        EXPECT_EQ("mft_core::DeviceMft::RedirectCallToInputStream: GetStream(stream, streamId, inputStreams) failed, "
                  "hr 0x80004005",
                  trace.Texts()[1]);
        EXPECT_EQ("mft_core::DeviceMft::GetInputAvailableType: RedirectCallToInputStream(dwInputStreamID, "
                  "[&](InputStream &stream) { return stream.GetMediaTypeAt(dwTypeIndex, ppMediaType); }) failed, "
                  "hr 0x80004005",
                  trace.Texts()[2]);
    }
    EXPECT_HR(E_FAIL, transform->GetOutputStreamAttributes(5, &attributes));
    EXPECT_HR(E_FAIL, transform->SetOutputStreamState(5, server.OutputType(0).Get(), kRun, 0));
    EXPECT_HR(E_FAIL, transform->FlushOutputStream(5, 0));
    EXPECT_HR(S_OK, transform->FlushInputStream(5, 0));
    EXPECT_HR(MF_E_NO_MORE_TYPES, transform->GetOutputAvailableType(0, 99, &type));
}

TEST_F(TransformSurfaceTest, InitialisationNeedsTheFilterAndHappensOnce)
{
    ComPtr<IMFAttributes> store;
    ASSERT_HR(S_OK, MFCreateAttributes(&store, 1));
    EXPECT_HR(E_INVALIDARG, NewTransform()->InitializeTransform(nullptr));
    EXPECT_HR(MF_E_ATTRIBUTENOTFOUND, NewTransform()->InitializeTransform(store.Get()));
    EXPECT_HR(S_OK, server.initialized);
    EXPECT_HR(S_OK, store->SetUnknown(MF_DEVICEMFT_CONNECTED_FILTER_KSCONTROL,
                                      static_cast<IMFTransform *>(server.camera.Get())));
    EXPECT_HR(MF_E_ALREADY_INITIALIZED, transform->InitializeTransform(store.Get()));
    EXPECT_HR(S_OK, transform->GetStreamCount(inputs, outputs));
    EXPECT_EQ(1u, inputs[0]);
}

TEST_F(TransformSurfaceTest, StreamIdsComeFromTheFilter)
{
    for (const bool told : {true, false})
    {
        auto configuration = CameraConfiguration::GenericDepth16(64, 48, 30);
        configuration.pins.push_back(configuration.pins.front());
        configuration.pins[0].streamId = told ? 7 : 0;
        configuration.pins[1].streamId = told ? 3 : 1;
        configuration.getStreamIdsNotImplemented = !told;
        TestFrameServer two(NewTransform(), MakeCom<SimulatedCamera>(configuration));
        EXPECT_HR(MF_E_BUFFERTOOSMALL, two.transform->GetStreamIDs(1, inputs, 2, outputs));
        EXPECT_HR(MF_E_BUFFERTOOSMALL, two.transform->GetStreamIDs(2, inputs, 1, outputs));
        EXPECT_EQ(told ? 42u : 0u, outputs[0]); // untouched, or of the former round
        EXPECT_HR(S_OK, two.transform->GetStreamIDs(0, nullptr, 0, nullptr));
        EXPECT_HR(S_OK, two.transform->GetStreamIDs(2, inputs, 2, outputs));
        EXPECT_EQ(told ? 7u : 0u, inputs[0]);
        EXPECT_EQ(told ? 3u : 1u, inputs[1]);
        EXPECT_EQ(0u, outputs[0]);
        EXPECT_EQ(1u, outputs[1]);
    }
}

TEST_F(TransformSurfaceTest, ProcessOutputServesTheBuffersItKnows)
{
    ASSERT_HR(S_OK, server.Start(0));
    server.Step(1);
    DWORD status = 9;
    MFT_OUTPUT_DATA_BUFFER unknown{};
    unknown.dwStreamID = 17;
    EXPECT_HR(MF_E_TRANSFORM_NEED_MORE_INPUT, transform->ProcessOutput(0, 1, &unknown, &status));
    EXPECT_EQ(nullptr, unknown.pSample);
    EXPECT_EQ(0u, status);
    MFT_OUTPUT_DATA_BUFFER many[2] = {};
    EXPECT_HR(E_INVALIDARG, transform->ProcessOutput(0, 2, many, &status));
    EXPECT_HR(MF_E_TRANSFORM_NEED_MORE_INPUT, transform->ProcessOutput(0, 0, many, &status));
    EXPECT_NE(nullptr, server.Collect(0).Get());
    EXPECT_HR(MF_E_TRANSFORM_NEED_MORE_INPUT, transform->ProcessOutput(0, 1, many, &status));
}

TEST_F(TransformSurfaceTest, ShutdownEndsTheEventsAndSaysSo)
{
    ComPtr<IMFShutdown> shutdown;
    ASSERT_HR(S_OK, transform.As(&shutdown));
    MFSHUTDOWN_STATUS status = MFSHUTDOWN_COMPLETED;
    EXPECT_HR(S_OK, shutdown->GetShutdownStatus(&status));
    EXPECT_EQ(MFSHUTDOWN_INITIATED, status);
    EXPECT_HR(E_POINTER, shutdown->GetShutdownStatus(nullptr));
    ComPtr<IMFMediaEvent> event;
    EXPECT_HR(MF_E_NO_EVENTS_AVAILABLE, server.events->GetEvent(MF_EVENT_FLAG_NO_WAIT, &event));
    EXPECT_HR(E_POINTER, server.events->GetEvent(MF_EVENT_FLAG_NO_WAIT, nullptr));
    EXPECT_HR(E_POINTER, server.events->BeginGetEvent(nullptr, nullptr));
    EXPECT_HR(E_POINTER, server.events->EndGetEvent(nullptr, &event));

    ASSERT_HR(S_OK, server.Start(0));
    server.Step(2);
    server.Pump();
    const TraceLines errors(mft_utils::TraceLevel::Error);
    // A waiter blocks without holding the lock that the others need, and shutdown wakes it.
    std::atomic<int> got{0};
    std::thread waiter([&] {
        ComPtr<IMFMediaEvent> awaited;
        HRESULT result = S_OK;
        while ((result = server.events->GetEvent(0, awaited.ReleaseAndGetAddressOf())) == S_OK)
        {
            ++got;
        }
        EXPECT_HR(MF_E_SHUTDOWN, result);
    });
    EXPECT_HR(S_OK, server.events->QueueEvent(MEDeviceThermalStateChanged, GUID{}, S_OK, nullptr));
    EXPECT_TRUE(WaitUntil([&] { return got == 1; }));
    EXPECT_HR(S_OK, server.ShutDown());
    waiter.join();
    EXPECT_EQ(std::vector<std::string>{}, errors.Texts());

    EXPECT_HR(S_OK, server.camera->Pins().WaitForReturnOfFrames(std::chrono::seconds(5))); // though it lives
    EXPECT_HR(MF_E_SHUTDOWN, shutdown->Shutdown());
    EXPECT_HR(S_OK, shutdown->GetShutdownStatus(&status));
    EXPECT_EQ(MFSHUTDOWN_COMPLETED, status);
    EXPECT_HR(MF_E_SHUTDOWN, server.events->GetEvent(MF_EVENT_FLAG_NO_WAIT, &event));
    EXPECT_HR(MF_E_SHUTDOWN, server.events->QueueEvent(MEUnknown, GUID{}, S_OK, nullptr));
    EXPECT_HR(MF_E_SHUTDOWN, server.Start(0));
    EXPECT_EQ(DeviceStreamState_Stop, server.OutputState(0)); // reported stopped, not stalled
}

} // namespace
