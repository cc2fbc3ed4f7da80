#include "core/PassThroughDeviceMft.h"

#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "tests/support/TestFrameServer.h"
#include "tests/trace/TraceLines.h"

using mft_core::PassThroughDeviceMft;
using tarn_sim::SimulatedCamera;
using tarn_test::SteppedCamera;
using tarn_test::TestFrameServer;
using user_space_frameworks::MakeCom;

namespace
{

class TransformSurfaceTest : public testing::Test
{
  protected:
    static ComPtr<IMFDeviceTransform> NewTransform()
    {
        return MakeCom<PassThroughDeviceMft>("Test DMFT");
    }
};

TEST_F(TransformSurfaceTest, EveryInterfaceLeadsBackToOneIdentity)
{
    const auto transform = NewTransform();
    ComPtr<IUnknown> identity;
    ASSERT_HR(S_OK, transform.As(&identity));

    const IID interfaces[] = {__uuidof(IMFDeviceTransform),     __uuidof(IMFTransform), __uuidof(IMFShutdown),
                              __uuidof(IMFMediaEventGenerator), __uuidof(IKsControl),   __uuidof(IMFRealTimeClientEx),
                              __uuidof(IAgileObject),           __uuidof(IMarshal)};
    for (const IID &iid : interfaces)
    {
        ComPtr<IUnknown> face;
        ASSERT_HR(S_OK, transform->QueryInterface(iid, reinterpret_cast<void **>(face.GetAddressOf())));
        ComPtr<IUnknown> again;
        ASSERT_HR(S_OK, face.As(&again));
        EXPECT_EQ(identity.Get(), again.Get());
    }
    void *other = &other;
    EXPECT_HR(E_NOINTERFACE, transform->QueryInterface(__uuidof(IMFSample), &other));
    EXPECT_EQ(nullptr, other);
    EXPECT_HR(E_POINTER, transform->QueryInterface(__uuidof(IUnknown), nullptr));
    identity.Reset();
    EXPECT_REFS(transform, 1);
}

TEST_F(TransformSurfaceTest, NullArgumentsAndUnknownStreamsAreRefused)
{
    TestFrameServer server(NewTransform(), SteppedCamera());
    IMFDeviceTransform *const transform = server.transform.Get();
    DWORD number = 0;
    DeviceStreamState state = DeviceStreamState_Stop;
    ComPtr<IMFMediaType> type;
    ComPtr<IMFAttributes> attributes;

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
    EXPECT_HR(E_POINTER, transform->SetOutputStreamState(0, nullptr, DeviceStreamState_Run, 0));
    EXPECT_HR(E_POINTER, transform->SetInputStreamState(0, nullptr, DeviceStreamState_Run, 0));
    EXPECT_HR(E_INVALIDARG, transform->SetInputStreamState(0, nullptr, static_cast<DeviceStreamState>(7), 0));
    EXPECT_HR(E_INVALIDARG, transform->SetOutputStreamState(0, nullptr, static_cast<DeviceStreamState>(7), 0));
    MFT_OUTPUT_DATA_BUFFER buffer{};
    EXPECT_HR(E_POINTER, transform->ProcessOutput(0, 1, &buffer, nullptr));

    {
        const tarn_test::TraceLines lines(mft_utils::TraceLevel::Error);
        EXPECT_HR(E_FAIL, transform->GetInputAvailableType(5, 0, &type));
        ASSERT_EQ(4u, lines.lines.size()); // the scan, the search, the call, the entry point
        EXPECT_EQ("mft_core::DeviceMft::RedirectCallToInputStream: GetStream(stream, streamId, inputStreams) failed, "
                  "hr 0x80004005",
                  lines.Texts()[1]);
        EXPECT_EQ("mft_core::DeviceMft::GetInputAvailableType: RedirectCallToInputStream(dwInputStreamID, "
                  "[&](InputStream &stream) { return stream.GetMediaTypeAt(dwTypeIndex, ppMediaType); }) failed, "
                  "hr 0x80004005",
                  lines.Texts()[2]);
    }
    EXPECT_HR(E_FAIL, transform->GetOutputStreamAttributes(5, &attributes));
    EXPECT_HR(E_FAIL, transform->SetOutputStreamState(5, server.OutputType(0).Get(), DeviceStreamState_Run, 0));
    EXPECT_HR(E_FAIL, transform->FlushOutputStream(5, 0));
    EXPECT_HR(S_OK, transform->FlushInputStream(5, 0));
    EXPECT_HR(MF_E_NO_MORE_TYPES, transform->GetOutputAvailableType(0, 99, &type));
}

TEST_F(TransformSurfaceTest, InitialisationNeedsTheFilterAndHappensOnce)
{
    const auto transform = NewTransform();
    EXPECT_HR(E_INVALIDARG, transform->InitializeTransform(nullptr));
    ComPtr<IMFAttributes> empty;
    ASSERT_HR(S_OK, MFCreateAttributes(&empty, 1));
    EXPECT_HR(MF_E_ATTRIBUTENOTFOUND, transform->InitializeTransform(empty.Get()));

    TestFrameServer server(NewTransform(), SteppedCamera());
    EXPECT_HR(S_OK, server.initialized);
    EXPECT_HR(S_OK, empty->SetUnknown(MF_DEVICEMFT_CONNECTED_FILTER_KSCONTROL,
                                      static_cast<IMFTransform *>(server.camera.Get())));
    EXPECT_HR(MF_E_ALREADY_INITIALIZED, server.transform->InitializeTransform(empty.Get()));
    DWORD inputs = 0;
    DWORD outputs = 0;
    EXPECT_HR(S_OK, server.transform->GetStreamCount(&inputs, &outputs));
    EXPECT_EQ(1u, inputs);
}

TEST_F(TransformSurfaceTest, StreamIdsComeFromTheFilter)
{
    auto configuration = tarn_sim::CameraConfiguration::GenericDepth16(64, 48, 30);
    configuration.pins.push_back(configuration.pins.front());
    configuration.pins[0].streamId = 7;
    configuration.pins[1].streamId = 3;
    {
        TestFrameServer server(NewTransform(), MakeCom<SimulatedCamera>(configuration));
        DWORD inputs[2] = {};
        DWORD outputs[2] = {42, 42};
        EXPECT_HR(MF_E_BUFFERTOOSMALL, server.transform->GetStreamIDs(1, inputs, 2, outputs));
        EXPECT_EQ(42u, outputs[0]); // untouched
        EXPECT_HR(MF_E_BUFFERTOOSMALL, server.transform->GetStreamIDs(2, inputs, 1, outputs));
        EXPECT_HR(S_OK, server.transform->GetStreamIDs(0, nullptr, 0, nullptr));
        EXPECT_HR(S_OK, server.transform->GetStreamIDs(2, inputs, 2, outputs));
        EXPECT_EQ(7u, inputs[0]);
        EXPECT_EQ(3u, inputs[1]);
        EXPECT_EQ(0u, outputs[0]);
        EXPECT_EQ(1u, outputs[1]);
    }
    configuration.pins[0].streamId = 0;
    configuration.pins[1].streamId = 1;
    configuration.getStreamIdsNotImplemented = true;
    TestFrameServer server(NewTransform(), MakeCom<SimulatedCamera>(configuration));
    DWORD inputs[2] = {9, 9};
    EXPECT_HR(S_OK, server.transform->GetStreamIDs(2, inputs, 0, nullptr));
    EXPECT_EQ(0u, inputs[0]);
    EXPECT_EQ(1u, inputs[1]);
}

TEST_F(TransformSurfaceTest, ProcessOutputServesTheBuffersItKnows)
{
    TestFrameServer server(NewTransform(), SteppedCamera());
    ASSERT_HR(S_OK, server.Start(0));
    ASSERT_HR(S_OK, server.camera->Pins().Step(0, 1));
    DWORD status = 9;
    MFT_OUTPUT_DATA_BUFFER unknown{};
    unknown.dwStreamID = 17;
    EXPECT_HR(MF_E_TRANSFORM_NEED_MORE_INPUT, server.transform->ProcessOutput(0, 1, &unknown, &status));
    EXPECT_EQ(nullptr, unknown.pSample);
    EXPECT_EQ(0u, status);
    MFT_OUTPUT_DATA_BUFFER many[2] = {};
    EXPECT_HR(E_INVALIDARG, server.transform->ProcessOutput(0, 2, many, &status));
    EXPECT_HR(MF_E_TRANSFORM_NEED_MORE_INPUT, server.transform->ProcessOutput(0, 0, many, &status));
    EXPECT_NE(nullptr, server.Collect(0).Get());
    EXPECT_EQ(nullptr, server.Collect(0).Get());
}

TEST_F(TransformSurfaceTest, ShutdownEndsTheEventsAndSaysSo)
{
    TestFrameServer server(NewTransform(), SteppedCamera());
    ComPtr<IMFShutdown> shutdown;
    ASSERT_HR(S_OK, server.transform.As(&shutdown));
    MFSHUTDOWN_STATUS status = MFSHUTDOWN_COMPLETED;
    EXPECT_HR(S_OK, shutdown->GetShutdownStatus(&status));
    EXPECT_EQ(MFSHUTDOWN_INITIATED, status);
    EXPECT_HR(E_POINTER, shutdown->GetShutdownStatus(nullptr));
    ComPtr<IMFMediaEvent> event;
    EXPECT_HR(MF_E_NO_EVENTS_AVAILABLE, server.events->GetEvent(MF_EVENT_FLAG_NO_WAIT, &event));
    EXPECT_HR(E_POINTER, server.events->GetEvent(MF_EVENT_FLAG_NO_WAIT, nullptr));
    EXPECT_HR(E_POINTER, server.events->BeginGetEvent(nullptr, nullptr));
    EXPECT_HR(E_POINTER, server.events->EndGetEvent(nullptr, &event));

    const tarn_test::TraceLines errors(mft_utils::TraceLevel::Error);
    // A waiter blocks without holding the lock that the others need, and shutdown wakes it.
    std::atomic<int> got{0};
    std::thread waiter([&] {
        ComPtr<IMFMediaEvent> awaited;
        EXPECT_HR(S_OK, server.events->GetEvent(0, awaited.ReleaseAndGetAddressOf()));
        ++got;
        EXPECT_HR(MF_E_SHUTDOWN, server.events->GetEvent(0, awaited.ReleaseAndGetAddressOf()));
    });
    EXPECT_HR(S_OK, server.events->QueueEvent(MEDeviceThermalStateChanged, GUID{}, S_OK, nullptr));
    EXPECT_TRUE(tarn_test::WaitUntil([&] { return got == 1; }));
    EXPECT_HR(S_OK, server.ShutDown());
    waiter.join();
    EXPECT_EQ(std::vector<std::string>{}, errors.Texts());
}

TEST_F(TransformSurfaceTest, AfterShutdownEventCallsFail)
{
    TestFrameServer server(NewTransform(), SteppedCamera());
    ComPtr<IMFShutdown> shutdown;
    ASSERT_HR(S_OK, server.transform.As(&shutdown));
    ASSERT_HR(S_OK, server.Start(0));
    ASSERT_HR(S_OK, server.camera->Pins().Step(0, 2));
    EXPECT_HR(S_OK, server.ShutDown());
    EXPECT_HR(S_OK,
              server.camera->Pins().WaitForReturnOfFrames(std::chrono::seconds(5))); // although the transform lives
    EXPECT_HR(MF_E_SHUTDOWN, shutdown->Shutdown());
    MFSHUTDOWN_STATUS status = MFSHUTDOWN_INITIATED;
    EXPECT_HR(S_OK, shutdown->GetShutdownStatus(&status));
    EXPECT_EQ(MFSHUTDOWN_COMPLETED, status);
    ComPtr<IMFMediaEvent> event;
    EXPECT_HR(MF_E_SHUTDOWN, server.events->GetEvent(MF_EVENT_FLAG_NO_WAIT, &event));
    EXPECT_HR(MF_E_SHUTDOWN, server.events->QueueEvent(MEUnknown, GUID{}, S_OK, nullptr));
    EXPECT_HR(MF_E_SHUTDOWN, server.Start(0));
    EXPECT_EQ(DeviceStreamState_Stop, server.OutputState(0)); // reported stopped, not stalled
}

} // namespace
