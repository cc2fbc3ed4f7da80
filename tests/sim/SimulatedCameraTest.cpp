// What the simulated filter tells a device transform about its streams, and how it stops.
#include "sim/SimulatedCamera.h"

#include "tests/sim/SimCase.h"
#include "tests/support/HandleCount.h"

namespace tarn_sim
{
namespace
{

struct TypeSummary
{
    DWORD fourCc;
    UINT32 width;
    UINT32 height;
    UINT32 fps;
    bool operator==(const TypeSummary &) const = default;
};

std::vector<TypeSummary> OfferedTypes(SimulatedCamera &camera, DWORD streamId)
{
    std::vector<TypeSummary> types;
    for (DWORD index = 0;; ++index)
    {
        ComPtr<IMFMediaType> type;
        const HRESULT result = camera.MFTGetOutputAvailableType(streamId, index, &type);
        if (FAILED(result))
        {
            EXPECT_HR(MF_E_NO_MORE_TYPES, result);
            return types;
        }
        GUID subtype{};
        TypeSummary summary{};
        UINT32 denominator = 0;
        EXPECT_HR(S_OK, type->GetGUID(MF_MT_SUBTYPE, &subtype));
        EXPECT_HR(S_OK, MFGetAttributeSize(type.Get(), MF_MT_FRAME_SIZE, &summary.width, &summary.height));
        EXPECT_HR(S_OK, MFGetAttributeRatio(type.Get(), MF_MT_FRAME_RATE, &summary.fps, &denominator));
        EXPECT_EQ(1U, denominator);
        summary.fourCc = subtype.Data1;
        types.push_back(summary);
    }
}

TEST(SimulatedCameraTest, DepthFilterOffersItsFormatsAtEverySizeAndRate)
{
    const auto camera = MakeCamera(CameraConfiguration::TarnDepth());

    const auto types = OfferedTypes(*camera.Get(), 0);

    const TypeSummary sizes[] = {
        {0, 640, 480, 30}, {0, 640, 480, 60}, {0, 1280, 720, 30}, {0, 320, 240, 30}, {0, 320, 240, 60}};
    std::vector<TypeSummary> expected;
    for (const DWORD fourCc :
         {MAKEFOURCC('I', 'N', 'V', 'Z'), MAKEFOURCC('I', 'N', 'Z', 'I'), MAKEFOURCC('I', 'N', 'Z', 'C')})
    {
        for (auto summary : sizes)
        {
            summary.fourCc = fourCc;
            expected.push_back(summary);
        }
    }
    expected.push_back({MAKEFOURCC('P', 'A', 'I', 'R'), 640, 480, 60});
    EXPECT_EQ(expected, types);
}

TEST(SimulatedCameraTest, EnumeratesStreamsLikeADriver)
{
    auto configuration = CameraConfiguration::TarnColor();
    configuration.pins.push_back({7, {MakeVideoType(kSubtypeYuy2, 320, 240, 15)}, MFFrameSourceTypes_Color});
    configuration.getStreamIdsNotImplemented = false;
    const auto camera = MakeCamera(configuration);
    DWORD inputs = 99;
    DWORD outputs = 99;
    DWORD ids[2] = {};
    ComPtr<IMFMediaType> type;
    ComPtr<IMFAttributes> attributes;
    UINT32 sourceTypes = 0;

    EXPECT_HR(S_OK, camera->MFTGetStreamCount(&inputs, &outputs));
    EXPECT_EQ(0U, inputs);
    EXPECT_EQ(2U, outputs);
    EXPECT_HR(MF_E_BUFFERTOOSMALL, camera->MFTGetStreamIDs(0, nullptr, 1, ids));
    EXPECT_HR(S_OK, camera->MFTGetStreamIDs(0, nullptr, 2, ids));
    EXPECT_EQ(7U, ids[1]);
    EXPECT_EQ(1U, OfferedTypes(*camera.Get(), 7).size());
    EXPECT_HR(MF_E_INVALIDSTREAMNUMBER, camera->MFTGetOutputAvailableType(1, 0, &type));
    EXPECT_HR(S_OK, camera->GetOutputStreamAttributes(7, &attributes));
    EXPECT_HR(S_OK, attributes->GetUINT32(MF_DEVICESTREAM_ATTRIBUTE_FRAMESOURCE_TYPES, &sourceTypes));
    EXPECT_EQ(UINT32{MFFrameSourceTypes_Color}, sourceTypes);
    EXPECT_HR(E_NOTIMPL, camera->MFTSetOutputType(0, nullptr, 0));
    EXPECT_HR(E_POINTER, camera->MFTGetStreamCount(nullptr, &outputs));

    configuration.getStreamIdsNotImplemented = true;
    EXPECT_HR(E_NOTIMPL, MakeCamera(configuration)->MFTGetStreamIDs(0, nullptr, 2, ids));
}

TEST(SimulatedCameraTest, AnOfferedTypeIsTheCallersOwn)
{
    const auto camera = MakeCamera(CameraConfiguration::GenericDepth16(64, 48, 30));
    ComPtr<IMFMediaType> type;
    ASSERT_HR(S_OK, camera->MFTGetOutputAvailableType(0, 0, &type));

    ASSERT_HR(S_OK, MFSetAttributeSize(type.Get(), MF_MT_FRAME_SIZE, 1, 1));

    EXPECT_EQ(64U, OfferedTypes(*camera.Get(), 0).at(0).width);
    EXPECT_HR(MF_E_INVALIDTYPE, camera->SetPinState(0, DeviceStreamState_Run, type.Get()));
    EXPECT_EQ(DeviceStreamState_Stop, camera->GetPinState(0));
}

TEST(SimulatedCameraTest, AnswersForOneIdentityThroughThreeInterfaces)
{
    const auto camera = MakeCamera(CameraConfiguration::TarnDepth());
    ComPtr<IMFTransform> transform;
    ComPtr<IKsControl> control;
    ComPtr<IKsTopologyInfo> topology;
    ComPtr<IUnknown> first;
    ComPtr<IUnknown> second;

    ASSERT_HR(S_OK, camera.As(&transform));
    ASSERT_HR(S_OK, transform.As(&control));
    ASSERT_HR(S_OK, control.As(&topology));
    ASSERT_HR(S_OK, topology.As(&first));
    ASSERT_HR(S_OK, camera.As(&second));

    EXPECT_EQ(first.Get(), second.Get());
    DWORD nodes = 0;
    GUID type{};
    EXPECT_HR(S_OK, topology->get_NumNodes(&nodes));
    EXPECT_EQ(5U, nodes);
    EXPECT_HR(S_OK, topology->get_NodeType(3, &type));
    EXPECT_TRUE(IsEqualGUID(KSNODETYPE_DEV_SPECIFIC, type));
    EXPECT_HR(E_INVALIDARG, topology->get_NodeType(5, &type));
    EXPECT_EQ(1U, camera->Calls(Method::GetNumNodes));
    EXPECT_EQ(2U, camera->Calls(Method::GetNodeType));
}

TEST(SimulatedCameraTest, StartsAndStopsWithFramesInFlight)
{
    const auto type = MakeVideoType(kSubtypeD16, 32, 24, 60);
    int handlesBefore = 0;
    const auto camera = MakeCamera(CameraConfiguration::GenericDepth16(32, 24, 60), Pacing::AsFastAsTaken);
    std::atomic<bool> stopped{false};
    std::atomic<int> late{0};
    CountingSink sink;
    sink.onFrame = [&](IMFSample *) { late += stopped ? 1 : 0; };
    camera->SetFrameSink(&sink);

    for (int round = 0; round < 300; ++round)
    {
        if (round == 20)
        {
            handlesBefore = tarn_test::CountHandles();
        }
        stopped = false;
        const auto wanted = sink.frames + 3;
        ASSERT_HR(S_OK, camera->SetPinState(0, DeviceStreamState_Run, type.Get()));
        ASSERT_HR(S_OK, camera->WaitForFrames(0, wanted, kLongEnough));
        if (round % 3 == 0)
        {
            camera->StopAll();
        }
        ASSERT_HR(S_OK, camera->SetPinState(0, DeviceStreamState_Stop, nullptr));
        stopped = true;
    }
    camera->SetFrameSink(nullptr);
    camera->StopAll();

    EXPECT_EQ(0, late);
    EXPECT_LE(tarn_test::CountHandles(), handlesBefore);
    EXPECT_HR(S_OK, camera->WaitForReturnOfFrames(kLongEnough));
    EXPECT_REFS(camera, 1);
}

// The sink may be the last to hold the camera, and may hold frames longer than the camera lives.
TEST(SimulatedCameraTest, MayBeReleasedByItsOwnCaptureThread)
{
    static KeepingSink sink; // the capture thread leaves it after the test has seen what it waits for
    static std::atomic<bool> handedOver{false};
    static std::atomic<bool> released{false};
    static ComPtr<SimulatedCamera> last;
    handedOver = false;
    released = false;
    sink.Take();
    last = MakeCamera(CameraConfiguration::GenericDepth16(32, 24, 60), Pacing::AsFastAsTaken);
    sink.onFrame = [](IMFSample *) {
        if (tarn_test::WaitUntil([] { return handedOver.load(); }))
        {
            last.Reset();
            released = true;
        }
    };
    const auto type = MakeVideoType(kSubtypeD16, 32, 24, 60);
    last->SetFrameSink(&sink);
    ASSERT_HR(S_OK, last->SetPinState(0, DeviceStreamState_Run, type.Get()));
    handedOver = true;

    ASSERT_TRUE(tarn_test::WaitUntil([] { return released.load(); }));
    const auto samples = sink.Take();
    ASSERT_EQ(1U, samples.size());
    EXPECT_EQ(32U * 24 * 2, BytesOf(samples.front().Get()).size());
}

} // namespace
} // namespace tarn_sim
