// The registered module, activated by class id and driven as the frame server drives it.
#include "platform/DeviceTransform.h"
#include "platform/RealTimeClientEx.h"

#include <atomic>
#include <thread>

#include "tests/conformance/RegisteredModule.h"
#include "tests/support/TestFrameServer.h"

using tarn_sim::CameraConfiguration;
using tarn_sim::SimulatedCamera;
using tarn_test::TestFrameServer;
using user_space_frameworks::MakeCom;

namespace
{

class ConformanceTest : public tarn_test::RegisteredModule
{
  protected:
    ComPtr<IMFDeviceTransform> Activate()
    {
        ComPtr<IMFDeviceTransform> transform = RegisteredModule::Activate(tarn_test::kColorClass);
        ComPtr<IMFRealTimeClientEx> realTime;
        EXPECT_HR(S_OK, transform.As(&realTime));
        DWORD taskIndex = 0;
        EXPECT_HR(S_OK, realTime->RegisterThreadsEx(&taskIndex, L"Capture", 0));
        EXPECT_HR(S_OK, realTime->SetWorkQueueEx(workQueue, 0));
        EXPECT_HR(S_OK, realTime->UnregisterThreads());
        return transform;
    }
    void SetUp() override
    {
        RegisteredModule::SetUp();
        ASSERT_HR(S_OK, MFAllocateWorkQueueEx(MF_MULTITHREADED_WORKQUEUE, &workQueue));
    }
    void TearDown() override
    {
        MFUnlockWorkQueue(workQueue);
        RegisteredModule::TearDown();
    }

    static ComPtr<SimulatedCamera> FastCamera()
    {
        auto configuration = CameraConfiguration::GenericDepth16(64, 48, 30);
        configuration.pacing = tarn_sim::Pacing::AsFastAsTaken;
        configuration.guardPages = true; // an access past a frame's end ends the program
        return MakeCom<SimulatedCamera>(configuration);
    }

    DWORD workQueue = 0;
};

TEST_F(ConformanceTest, AThousandFramesArriveInOrder)
{
    TestFrameServer server(Activate(), FastCamera());
    ASSERT_HR(S_OK, server.initialized);
    ASSERT_HR(S_OK, server.Start(0));
    LONGLONG previous = -1;
    for (int received = 0; received < 1000;)
    {
        if (const auto sample = server.Collect(0))
        {
            ASSERT_LT(previous, tarn_test::TimeOf(sample));
            previous = tarn_test::TimeOf(sample);
            ++received;
        }
        else
        {
            std::this_thread::yield();
        }
    }
    ASSERT_HR(S_OK, server.Stop(0));
    EXPECT_EQ(0u, server.camera->Pins().Statistics(0).dropped);
}

TEST_F(ConformanceTest, TwoTransformsStreamAndOneIsShutDown)
{
    TestFrameServer staying(Activate(), FastCamera());
    {
        TestFrameServer going(Activate(), FastCamera());
        ASSERT_HR(S_OK, going.Start(0));
        ASSERT_HR(S_OK, staying.Start(0));
        EXPECT_HR(S_OK, going.camera->Pins().WaitForFrames(0, 5, std::chrono::seconds(10)));
    }
    const auto samples = [&] { return staying.Collect(0) != nullptr; };
    for (int i = 0; i < 50; ++i)
    {
        ASSERT_TRUE(tarn_test::WaitUntil(samples));
    }
}

TEST_F(ConformanceTest, PropertyCallsFromManyThreadsGoThroughWhileFramesFlow)
{
    TestFrameServer server(Activate(), FastCamera());
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
    control.Reset();
}

} // namespace
