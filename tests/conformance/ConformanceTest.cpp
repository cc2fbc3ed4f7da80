// The registered module, activated by class id and driven as the frame server drives it.
#include <atomic>
#include <thread>

#include "tests/conformance/RegisteredModule.h"
#include "tests/support/TestFrameServer.h"

using tarn_test::kColorClass;
using tarn_test::TestFrameServer;

namespace
{

class ConformanceTest : public tarn_test::RegisteredModule
{
  protected:
    static ComPtr<tarn_sim::SimulatedCamera> FastCamera()
    {
        auto configuration = tarn_sim::CameraConfiguration::GenericDepth16(64, 48, 30);
        configuration.pacing = tarn_sim::Pacing::AsFastAsTaken;
        configuration.guardPages = true; // an access past a frame's end ends the program
        return user_space_frameworks::MakeCom<tarn_sim::SimulatedCamera>(configuration);
    }
};

TEST_F(ConformanceTest, FramesArriveInOrderAlsoWhenAnotherTransformIsShutDown)
{
    TestFrameServer staying(Activate(kColorClass), FastCamera());
    LONGLONG previous = -1;
    const auto takeFrames = [&](int count) {
        for (int received = 0; received < count && !HasFailure(); ++received)
        {
            ComPtr<IMFSample> sample;
            ASSERT_TRUE(tarn_test::WaitUntil([&] { return (sample = staying.Collect(0)) != nullptr; }));
            ASSERT_LT(previous, tarn_test::TimeOf(sample));
            previous = tarn_test::TimeOf(sample);
        }
    };
    {
        TestFrameServer going(Activate(kColorClass), FastCamera());
        ASSERT_HR(S_OK, going.Start(0));
        ASSERT_HR(S_OK, staying.Start(0));
        EXPECT_HR(S_OK, going.camera->Pins().WaitForFrames(0, 5, std::chrono::seconds(10)));
        takeFrames(500);
    }
    takeFrames(500);
    ASSERT_HR(S_OK, staying.Stop(0));
    EXPECT_EQ(0u, staying.camera->Pins().Statistics(0).dropped);
}

TEST_F(ConformanceTest, PropertyCallsFromManyThreadsGoThroughWhileFramesFlow)
{
    TestFrameServer server(Activate(kColorClass), FastCamera());
    ComPtr<IMFRealTimeClientEx> realTime;
    ASSERT_HR(S_OK, server.transform.As(&realTime));
    DWORD taskIndex = 0;
    EXPECT_HR(S_OK, realTime->RegisterThreadsEx(&taskIndex, L"Capture", 0));
    EXPECT_HR(S_OK, realTime->UnregisterThreads());
    realTime.Reset();
    ASSERT_HR(S_OK, server.Start(0));
    ComPtr<IKsControl> control;
    ASSERT_HR(S_OK, server.transform.As(&control));
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
    {
        threads.emplace_back([&] {
            for (int call = 0; call < 200; ++call)
            {
                KSPROPERTY property{};
                property.Set = PROPSETID_VIDCAP_CAMERACONTROL;
                property.Id = KSPROPERTY_CAMERACONTROL_PRIVACY;
                property.Flags = KSPROPERTY_TYPE_GET;
                KSPROPERTY_CAMERACONTROL_S value{};
                ULONG returned = 0;
                control->KsProperty(&property, sizeof(property), &value, sizeof(value), &returned);
                control->KsProperty(&property, sizeof(property), nullptr, 0, nullptr);
                EXPECT_HR(E_POINTER, control->KsProperty(nullptr, 0, nullptr, 0, nullptr));
            }
        });
    }
    std::atomic<bool> done{false};
    std::thread consumer([&] {
        while (!done)
        {
            server.Collect(0);
        }
    });
    for (std::thread &thread : threads)
    {
        thread.join();
    }
    done = true;
    consumer.join();
    EXPECT_LE(1600u, server.camera->Calls(tarn_sim::Method::KsProperty));
}

} // namespace
