// Starts, stops and properties at the same time, with frames on their way.
#include <atomic>
#include <future>
#include <random>
#include <thread>

#include "tests/device/DepthServer.h"

using tarn_test::DepthServer;
using tarn_test::kDepth;
using tarn_test::kInfrared;

namespace
{

struct Size
{
    UINT32 width;
    UINT32 height;
    UINT32 fps;
};

TEST(DepthStressTest, PropertiesFromAnotherThreadNeverLeaveAPinRunningOrAFrameOfTheWrongSize)
{
    const Size sizes[] = {{640, 480, 30}, {320, 240, 60}, {1280, 720, 30}};
    const Size infraredSizes[] = {{640, 480, 30}, {320, 240, 60}, {360, 360, 60}};
    auto configuration = DepthServer::SteppedTarnDepth();
    configuration.pacing = tarn_sim::Pacing::RealTime;
    DepthServer server(configuration);
    ASSERT_HR(S_OK, server.initialized);

    std::atomic<bool> finished{false};
    const auto application = std::async(std::launch::async, [&] {
        std::mt19937 random(2); // NOLINT: the same in every run
        while (!finished)
        {
            UINT32 value = random() % 2;
            server.SendProperty(KSPROPERTYSETID_TARN_DMFT_CONTROL, KSPROPERTY_TARN_DMFT_CONTROL_CONFIDENCE_MAP,
                                KSPROPERTY_TYPE_SET, &value, sizeof(value));
            server.SetFaceLogin(random() % 2 == 0);
            value = random() % 8;
            server.SendProperty(KSPROPERTYSETID_TARN_DMFT_CONTROL, KSPROPERTY_TARN_DMFT_CONTROL_DEPTH_PRESETS,
                                KSPROPERTY_TYPE_SET, &value, sizeof(value));
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });

    std::mt19937 random(1); // NOLINT: the same in every run
    std::size_t expected[2] = {};
    std::size_t frames = 0;
    for (int round = 0; round < 300; ++round)
    {
        const DWORD output = random() % 2 == 0 ? kDepth : kInfrared;
        if (random() % 3 != 0)
        {
            const Size size = output == kDepth ? sizes[random() % 3] : infraredSizes[random() % 3];
            if (SUCCEEDED(server.Run(output, size.width, size.height, size.fps)))
            {
                expected[output] = std::size_t{size.width} * size.height * (output == kDepth ? 2 : 1);
            }
        }
        else
        {
            EXPECT_HR(S_OK, server.Stop(output));
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % 20));
        for (const DWORD stream : {kDepth, kInfrared})
        {
            server.Pump();
            for (const auto &sample : server.CollectAll(stream))
            {
                ++frames;
                const std::size_t bytes = tarn_test::PixelsOf(sample).size();
                // Depth with confidence keeps the buffer of both planes.
                EXPECT_TRUE(bytes == expected[stream] || (stream == kDepth && bytes == 2 * expected[stream]))
                    << "round " << round << " output " << stream << ": " << bytes << " bytes, " << expected[stream];
            }
        }
        const bool anyRuns = server.OutputState(kDepth) == DeviceStreamState_Run ||
                             server.OutputState(kInfrared) == DeviceStreamState_Run;
        // A switch of the map stops the pin and runs it again; the second event may still be on its way.
        EXPECT_TRUE(tarn_test::WaitUntil([&] {
            server.Pump();
            return anyRuns == (server.Pin() != "stopped");
        })) << "round "
            << round;
    }
    finished = true;
    application.wait();
    EXPECT_GT(frames, 50u);
    EXPECT_HR(S_OK, server.Stop(kDepth));
    EXPECT_HR(S_OK, server.Stop(kInfrared));
    EXPECT_EQ("stopped", server.Pin());
}

} // namespace
