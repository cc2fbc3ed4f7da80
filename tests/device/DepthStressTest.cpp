// Random but legal sequences of calls, each over a new transform and camera and checked against a model after every
// step. TARN_STRESS_SEED=n repeats the sequence that a failure names.
#include <cstdio>
#include <cstdlib>
#include <random>

#include "device/DepthPresetTable.h"
#include "tarn/tarn_formats.h"
#include "tests/device/DepthModel.h"
#include "tests/device/FlatScene.h"
#include "tests/support/HandleCount.h"
#include "tools/frameserver/SampleDetails.h"

using namespace tarn_sim;
using namespace tarn_test;
using tarn_host::VideoSize;

namespace
{

constexpr unsigned kSequences = 2000;
constexpr std::array<VideoSize, 4> kDepthFormats{{{320, 240, 30}, {320, 240, 60}, {640, 480, 60}, {1280, 720, 30}}};
constexpr std::array<VideoSize, 4> kInfraredFormats{{{320, 240, 30}, {320, 240, 60}, {360, 360, 60}, {640, 480, 30}}};
constexpr std::array<UINT32, 8> kPresets{0, 1, 2, 3, 4, 5, 6, 14};

// What the application does meanwhile, on its own thread.
enum class Meanwhile
{
    Nothing,
    Reads,
    Changes
};

class Sequence
{
  public:
    explicit Sequence(unsigned seed) : random(seed)
    {
        pacing = Chance(5) ? Pacing::AsFastAsTaken : Pacing::Stepped;
        meanwhile = Chance(10) ? Meanwhile::Changes : Chance(4) ? Meanwhile::Reads : Meanwhile::Nothing;
        camera =
            user_space_frameworks::MakeCom<SimulatedCamera>(DepthServer::SteppedTarnDepth([&](auto &configuration) {
                configuration.pacing = pacing;
                configuration.buffersPerPin = pacing == Pacing::Stepped ? 64 : 4;
                configuration.frameSource = std::make_shared<FlatScene>();
            }));
    }

    // What it has done so far.
    const std::string &Steps() const { return steps; }

    void Play()
    {
        {
            DepthServer transform(camera);
            server = &transform;
            ASSERT_HR(S_OK, server->initialized);
            std::atomic<bool> isOver{false};
            std::thread application([&] { UseProperties(isOver); });
            for (unsigned left = 5 + random() % 11; left > 0 && !testing::Test::HasFailure(); --left)
            {
                Step();
                Check();
            }
            isOver = true;
            application.join();
            CheckAfterChanges();
        }
        EXPECT_HR(S_OK, camera->Pins().WaitForReturnOfFrames(std::chrono::seconds(5)));
        EXPECT_TRUE(WaitUntil([&] { return ReferenceCount(camera) == 1; }));
        EXPECT_EQ(0u, camera->Ks().EventListenerCount());
    }

  private:
    bool Chance(unsigned one) { return random() % one == 0; }
    void Log(const std::string &step) { steps += "\n  " + step; }
    bool IsExact() const { return meanwhile != Meanwhile::Changes; }

    void Step()
    {
        const DWORD output = Chance(2) ? kDepth : kInfrared;
        const std::string name = output == kDepth ? "depth" : "infrared";
        const bool on = Chance(2);
        switch (random() % 16)
        {
        default: // six of sixteen
        {
            const auto &formats = output == kDepth ? kDepthFormats : kInfraredFormats;
            const VideoSize format = formats.at(Chance(12) ? 3 : Chance(5) ? 2 : random() % 2);
            Expect("start " + name + ' ' + format.ToText(), model.Start(output, format),
                   [&] { return server->Run(output, format.width, format.height, format.framesPerSecond); });
            break;
        }
        case 0:
        case 1:
        case 2:
            Expect("stop " + name, model.Stop(output), [&] { return server->Stop(output); });
            break;
        case 3:
        case 4:
            Expect(on ? "confidence map on" : "confidence map off", model.SetConfidenceMap(on),
                   [&] { return server->SetConfidenceMap(on); });
            break;
        case 5:
            Expect(on ? "face login on" : "face login off", model.SetFaceLogin(on),
                   [&] { return server->SetFaceLogin(on); });
            break;
        case 6: {
            const UINT32 preset = kPresets.at(random() % kPresets.size());
            Expect("preset " + std::to_string(preset), model.SetPreset(preset),
                   [&] { return server->SetProperty(KSPROPERTY_TARN_DMFT_CONTROL_DEPTH_PRESETS, preset); });
            break;
        }
        case 7:
            Expect("flush", S_OK, [&] { return server->transform->ProcessMessage(MFT_MESSAGE_COMMAND_FLUSH, 0); });
            break;
        case 8: // and leaves them where they are
            Log("frames in flight");
            DeliverFrames(1 + random() % 3);
            break;
        case 9:
            Log("frames");
            CollectFrames();
            break;
        }
    }

    // What an application changes meanwhile decides too.
    void Expect(const std::string &step, HRESULT expected, const std::function<HRESULT()> &call)
    {
        Log(step);
        const HRESULT result = call();
        EXPECT_TRUE(result == expected ||
                    (!IsExact() && (result == S_OK || result == E_FAIL || result == E_UNEXPECTED)))
            << std::hex << result << " instead of " << expected;
    }

    void Check()
    {
        for (const DWORD output : {kDepth, kInfrared})
        {
            EXPECT_EQ(model.running.at(output).has_value(), server->OutputState(output) == DeviceStreamState_Run);
        }
        EXPECT_EQ(model.isListening ? 1u : 0u, camera->Ks().EventListenerCount());
        if (!IsExact())
        {
            return;
        }
        EXPECT_EQ(model.pin, server->Pin());
        EXPECT_EQ(model.preset, server->Preset());
        CheckPresetInForce(model.presetInForce);
        EXPECT_EQ(model.confidenceMap, server->HasConfidenceMap());
    }

    void CheckPresetInForce(UINT32 preset)
    {
        EXPECT_EQ(mft_core::FindDepthPreset(preset)->laserPower, camera->Controls().ValueOf(kControlLaserPower));
        EXPECT_EQ(mft_core::FindDepthPreset(preset)->accuracy, camera->Controls().ValueOf(kControlAccuracy));
    }

    std::uint32_t DeliverFrames(std::uint32_t frames)
    {
        if (pacing != Pacing::Stepped || server->Pin() == "stopped")
        {
            return 0;
        }
        EXPECT_HR(S_OK, camera->Pins().Step(0, frames));
        return frames;
    }

    // Every output that runs gives every frame, in order, as it was asked for; one that does not gives none.
    void CollectFrames()
    {
        const std::uint64_t before = camera->Pins().Statistics(0).delivered;
        const std::uint32_t frames = DeliverFrames(1 + random() % 3);
        for (const DWORD output : {kDepth, kInfrared})
        {
            if (!model.running.at(output))
            {
                EXPECT_EQ(nullptr, server->Collect(output)) << "output " << output;
                continue;
            }
            std::uint32_t arrived = 0;
            EXPECT_TRUE(WaitUntil([&] {
                while (const auto sample = server->Collect(output))
                {
                    arrived += CheckSample(output, sample) >= before ? 1 : 0;
                }
                // While the application switches formats frames of the former one are dropped.
                return arrived >= frames || (!IsExact() && !isSettled);
            })) << arrived
                << " of " << frames << " frames on output " << output;
        }
    }

    // The frame's number.
    std::uint64_t CheckSample(DWORD output, const ComPtr<IMFSample> &sample)
    {
        const auto details = tarn_host::SampleDetails::Of(*sample.Get());
        EXPECT_TRUE(details.record);
        const TARN_FRAME_METADATA record = details.record.value_or(TARN_FRAME_METADATA{});
        const Bytes bytes = BytesOf(sample);
        const std::size_t pixels = std::size_t{model.running.at(output)->width} * model.running.at(output)->height;
        if (output == kDepth)
        {
            // With confidence the sample keeps the buffer of both planes.
            const bool hasConfidence = record.formatFourCc == CUSTOM_GUID_KELP_ZC.Data1;
            EXPECT_EQ(pixels * (hasConfidence ? 4 : 2), bytes.size());
            // A frame that is under way when the map is switched may have it or not.
            EXPECT_TRUE(meanwhile != Meanwhile::Nothing || pacing != Pacing::Stepped ||
                        hasConfidence != details.confidence.empty());
            EXPECT_EQ(FlatScene::DepthByte(record.frameCounter), bytes.front());
            EXPECT_EQ(FlatScene::DepthByte(record.frameCounter), bytes.at(pixels * 2 - 1));
        }
        else
        {
            EXPECT_EQ(pixels, bytes.size());
            EXPECT_EQ(FlatScene::InfraredPixel(record.frameCounter), bytes.front());
            EXPECT_EQ(FlatScene::InfraredPixel(record.frameCounter), bytes.back());
        }
        EXPECT_LT(lastNumber.at(output), static_cast<std::int64_t>(record.frameCounter));
        lastNumber.at(output) = static_cast<std::int64_t>(record.frameCounter);
        return record.frameCounter;
    }

    void UseProperties(const std::atomic<bool> &isOver)
    {
        std::mt19937 own(42); // NOLINT: the same in every run
        while (!isOver && meanwhile != Meanwhile::Nothing)
        {
            server->Preset();
            server->HasConfidenceMap();
            if (meanwhile == Meanwhile::Changes)
            {
                server->SetProperty(KSPROPERTY_TARN_DMFT_CONTROL_CONFIDENCE_MAP, static_cast<UINT32>(own() % 2));
                server->SetFaceLogin(own() % 2 == 0);
                server->SetProperty(KSPROPERTY_TARN_DMFT_CONTROL_DEPTH_PRESETS, kPresets.at(own() % 7));
            }
            std::this_thread::yield();
        }
    }

    // What the application changed at the same time as the pipeline fits together once both have come to rest.
    void CheckAfterChanges()
    {
        if (IsExact() || testing::Test::HasFailure())
        {
            return;
        }
        isSettled = true;
        server->Pump();
        const std::string map = server->HasConfidenceMap() ? "INZC " : "INVZ ";
        const std::string pin = server->Pin();
        EXPECT_EQ(model.AnyRuns(), pin != "stopped");
        if (model.running[kDepth] && !model.running[kInfrared] && pin.rfind("INZI", 0) != 0)
        {
            EXPECT_EQ(map + model.running[kDepth]->ToText(), pin);
        }
        CheckPresetInForce(pin.rfind("PAIR", 0) == 0 ? UINT32{TARN_DEPTH_PRESET_FACE_LOGIN} : server->Preset());
        CollectFrames();
    }

    std::mt19937 random;
    Pacing pacing;
    Meanwhile meanwhile;
    ComPtr<SimulatedCamera> camera;
    DepthServer *server = nullptr;
    DepthModel model;
    std::array<std::int64_t, 2> lastNumber{-1, -1};
    bool isSettled = false; // the application has ended
    std::string steps;
};

TEST(DepthStressTest, RandomSequencesFollowTheModelAndLeaveNothingBehind)
{
    const char *const chosen = std::getenv("TARN_STRESS_SEED");
    const unsigned first = chosen != nullptr ? static_cast<unsigned>(std::atoi(chosen)) : 1;
    const unsigned last = chosen != nullptr ? first : kSequences;
    const std::size_t objects = user_space_frameworks::Object::LiveCount();
    int handles = 0;
    for (unsigned seed = first; seed <= last && !HasFailure(); ++seed)
    {
        std::printf("%u ", seed); // the last one is the one that hangs
        std::fflush(stdout);
        Sequence sequence(seed);
        sequence.Play();
        EXPECT_TRUE(WaitUntil([&] { return user_space_frameworks::Object::LiveCount() == objects; }));
        EXPECT_FALSE(HasFailure()) << "TARN_STRESS_SEED=" << seed << sequence.Steps();
        if (seed == 200) // by then the platform has made its own threads
        {
            handles = CountHandles();
        }
    }
    // The platform's thread pool comes and goes by a few.
    EXPECT_TRUE(last < kSequences || WaitUntil([&] { return CountHandles() <= handles + 12; }))
        << handles << " -> " << CountHandles();
}

} // namespace
