// Long runs of every scenario with a consumer that keeps random frames for random times, writes into them, and keeps
// some beyond the transform. TARN_SOAK_FRAMES=n makes the runs as long.
#include <windows.h>

#include <cstdlib>
#include <deque>
#include <random>

#include "tarn/frame_metadata.h"
#include "tarn/sample_attributes.h"
#include "tests/device/DepthServer.h"
#include "tests/device/FlatScene.h"
#include "tests/device/PatternedMemory.h"
#include "tools/frameserver/SampleDetails.h"

using namespace tarn_test;

namespace
{

constexpr std::size_t kMostHeld = 24;

struct Scenario
{
    const char *name;
    bool depth = false;
    bool infrared = false;
    bool map = false;
    bool faceLogin = false;
};

constexpr Scenario kScenarios[] = {{"depth", true},
                                   {"map", true, false, true},
                                   {"infrared", false, true},
                                   {"both", true, true},
                                   {"face login", false, true, false, true}};

// A frame of the application, which may come back to it whenever it likes.
struct HeldFrame
{
    ComPtr<IMFSample> sample;
    BYTE value = 0;

    void Check(std::size_t pixels) const
    {
        const auto bytes = BytesOf(sample);
        ASSERT_LE(pixels, bytes.size());
        EXPECT_TRUE(std::all_of(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(pixels),
                                [this](BYTE byte) { return byte == value; }));
    }
    void Scribble() const
    {
        ComPtr<IMFMediaBuffer> buffer;
        BYTE *data = nullptr;
        DWORD length = 0;
        EXPECT_HR(S_OK, sample->ConvertToContiguousBuffer(&buffer));
        EXPECT_HR(S_OK, buffer->Lock(&data, nullptr, &length));
        std::fill_n(data, length, BYTE{0xEE});
        EXPECT_HR(S_OK, buffer->Unlock());
        EXPECT_HR(S_OK, buffer->SetCurrentLength(1));
    }
};

// What blocks of a page and more hold. Committed memory is no measure here: this platform keeps a small block of every
// work item until its queue is closed, and these scatter the heap.
SIZE_T HeldBytes()
{
    constexpr DWORD kPage = 4096;
    SIZE_T bytes = 0;
    std::array<HANDLE, 64> heaps{}; // the C libraries have their own
    const DWORD count = std::min<DWORD>(GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data()), 64);
    for (DWORD i = 0; i < count; ++i)
    {
        PROCESS_HEAP_ENTRY block{};
        HeapLock(heaps.at(i));
        while (HeapWalk(heaps.at(i), &block))
        {
            bytes += (block.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 && block.cbData >= kPage ? block.cbData : 0;
        }
        HeapUnlock(heaps.at(i));
    }
    return bytes;
}

void Start(DepthServer &server, const Scenario &scenario)
{
    EXPECT_HR(S_OK, server.SetConfidenceMap(scenario.map));
    EXPECT_HR(S_OK, server.SetFaceLogin(scenario.faceLogin));
    if (scenario.depth)
    {
        EXPECT_HR(S_OK, server.Run(kDepth, 320, 240, 30));
    }
    if (scenario.infrared)
    {
        EXPECT_HR(S_OK, scenario.faceLogin ? server.Run(kInfrared, 360, 360, 60) : server.Run(kInfrared, 320, 240, 30));
    }
}

class Consumer
{
  public:
    Consumer(DepthServer &frameServer, const Scenario &played) : server(frameServer), scenario(played)
    {
        Start(server, scenario);
    }

    void Frame()
    {
        server.Step(1);
        if (scenario.depth)
        {
            Receive(kDepth);
        }
        if (scenario.infrared)
        {
            Receive(kInfrared);
        }
    }

    void CheckAll() const
    {
        for (const HeldFrame &frame : held)
        {
            frame.Check(kCheckedBytes);
        }
    }

  private:
    static constexpr std::size_t kCheckedBytes = std::size_t{320} * 240;

    void Receive(DWORD output)
    {
        const auto sample = server.WaitForSamples(output, 1).at(0);
        TARN_FRAME_METADATA record{};
        record = tarn_host::SampleDetails::Of(*sample.Get()).record.value_or(record);
        const HeldFrame frame{sample, output == kDepth ? FlatScene::DepthByte(record.frameCounter)
                                                       : FlatScene::InfraredPixel(record.frameCounter)};
        frame.Check(kCheckedBytes);
        if (random() % 3 == 0)
        {
            held.push_back(frame);
        }
        while (held.size() > random() % kMostHeld)
        {
            const auto chosen = held.begin() + static_cast<std::ptrdiff_t>(random() % held.size());
            chosen->Check(kCheckedBytes);
            if (random() % 2 == 0)
            {
                chosen->Scribble();
            }
            held.erase(chosen);
        }
    }

    DepthServer &server;
    const Scenario scenario;
    std::mt19937 random{1};
    std::deque<HeldFrame> held;
};

TEST(FrameMemoryTest, FramesStayRightAndMemoryFlatWhileAConsumerKeepsSome)
{
    const char *const chosen = std::getenv("TARN_SOAK_FRAMES");
    const int frames = chosen != nullptr ? std::atoi(chosen) : 200;
    for (const Scenario &scenario : kScenarios)
    {
        SCOPED_TRACE(scenario.name);
        const std::size_t objects = user_space_frameworks::Object::LiveCount();
        const auto camera = user_space_frameworks::MakeCom<tarn_sim::SimulatedCamera>(DepthServer::SteppedTarnDepth(
            [](auto &configuration) { configuration.frameSource = std::make_shared<FlatScene>(); }));
        std::optional<DepthServer> server(camera);
        std::optional<Consumer> consumer(std::in_place, *server, scenario);
        SIZE_T most = 0; // in the first half
        SIZE_T mostLater = 0;
        for (int i = 0; i < frames && !HasFailure(); ++i)
        {
            consumer->Frame();
            SIZE_T &half = i < frames / 2 ? most : mostLater;
            if (i % 20 == 0)
            {
                half = std::max(half, HeldBytes());
            }
        }
        constexpr SIZE_T kSlack = std::size_t{2} << 20U; // a frame or two more at the worst moment
        EXPECT_LT(mostLater, most + kSlack);
        std::printf("%-12s at most %zu KB held, %zu KB in the second half of %d frames\n", scenario.name, most / 1024,
                    mostLater / 1024, frames);

        server.reset();
        consumer->CheckAll();
        consumer.reset();
        EXPECT_HR(S_OK, camera->Pins().WaitForReturnOfFrames(std::chrono::seconds(5)));
        EXPECT_TRUE(WaitUntil([&] { return ReferenceCount(camera) == 1; }));
        EXPECT_TRUE(WaitUntil([&] { return user_space_frameworks::Object::LiveCount() == objects; }));
    }
}

// One frame into the transform, and the pixels and maps of what comes out.
void Play(DepthServer &server, const Scenario &scenario, std::vector<tarn_test::Bytes> &outputs)
{
    EXPECT_HR(S_OK, server.camera->Pins().Step(0, 1));
    for (const auto &[wanted, output] : {std::pair{scenario.depth, kDepth}, {scenario.infrared, kInfrared}})
    {
        if (wanted)
        {
            const auto sample = server.WaitForSamples(output, 1).at(0);
            outputs.push_back(tarn_test::BytesOf(sample));
            outputs.push_back(tarn_test::BlobOf(sample, ORRIN_SAMPLE_TARN_CONFIDENCE_MAP));
        }
    }
}

// A few frames, each made in memory that holds nothing but `value`.
std::vector<tarn_test::Bytes> OutputsOver(BYTE value, const Scenario &scenario)
{
    const tarn_test::PatternedMemory memory(value);
    DepthServer server;
    Start(server, scenario);
    std::vector<tarn_test::Bytes> outputs;
    for (int i = 0; i < 4; ++i)
    {
        Play(server, scenario, outputs);
        EXPECT_EQ(scenario.infrared, memory.FillFree() > 0); // depth alone passes the camera's samples on
    }
    if (value == 0)
    {
        Play(server, scenario, outputs);
        EXPECT_EQ(scenario.infrared, tarn_test::PatternedMemory::CountWithout(0) > 0);
        server.camera->Controls().privacy = true;
        Play(server, scenario, outputs);
        EXPECT_EQ(0U, tarn_test::PatternedMemory::CountWithout(0)); // no picture is kept
        outputs.resize(outputs.size() * 4 / 6);
    }
    return outputs;
}

TEST(FrameMemoryTest, NothingOfWhatTheMemoryHeldIsSeen)
{
    for (const Scenario &scenario : kScenarios)
    {
        SCOPED_TRACE(scenario.name);
        const auto fresh = OutputsOver(0, scenario);
        EXPECT_EQ(fresh, OutputsOver(0xA5, scenario));
        EXPECT_EQ(fresh, OutputsOver(0xFF, scenario));
    }
}

} // namespace
