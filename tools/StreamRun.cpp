#include "tools/StreamRun.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

#include "sim/CameraConfiguration.h"
#include "sim/GeneratedScene.h"
#include "sim/RecordedFrames.h"
#include "tools/ContactSheet.h"
#include "tools/ExitCode.h"
#include "tools/Text.h"
#include "utils/ComObject.h"

namespace tarn_host
{

namespace
{

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using user_space_frameworks::MakeCom;

constexpr CLSID kDepthTransform{0x7F9DF308, 0x0F2D, 0x432E, {0x8C, 0x8E, 0xD3, 0x6E, 0xD8, 0xF1, 0x2C, 0x90}};
constexpr CLSID kColorTransform{0x01BC2102, 0x6449, 0x429F, {0x8F, 0x62, 0xB8, 0xD2, 0x3D, 0x1D, 0xE6, 0xD3}};

constexpr auto kStateLimit = 10s; // For the transform to bring its inputs into a state.
constexpr auto kStallLimit = 10s; // Without any frame coming out.
constexpr auto kReturnLimit = 2s; // For frames to come back to the camera.
constexpr VideoSize kDefaultSize{640, 480, 30};

std::shared_ptr<tarn_sim::IFrameSource> MakeSource(const std::filesystem::path &folder)
{
    if (folder.empty())
    {
        return std::make_shared<tarn_sim::GeneratedScene>();
    }
    try
    {
        return std::make_shared<tarn_sim::RecordedFrames>(folder);
    }
    catch (const std::runtime_error &error)
    {
        throw UsageError(error.what());
    }
}

tarn_sim::CameraConfiguration MakeConfiguration(const StreamOptions &options)
{
    if (options.transform == TransformKind::Color)
    {
        return tarn_sim::CameraConfiguration::TarnColor();
    }
    const VideoSize size = options.size.value_or(kDefaultSize);
    return tarn_sim::CameraConfiguration::GenericDepth16(size.width, size.height, size.framesPerSecond);
}

bool Fits(const FrameFormat &format, const StreamOptions &options)
{
    return (!options.size || format.size == *options.size) &&
           (options.format.empty() || format.subtypeName == options.format);
}

} // namespace

StreamRun::StreamRun(const StreamOptions &streamOptions)
    : options(streamOptions), session(*this, streamOptions.inputReference)
{
}

StreamRun::~StreamRun()
{
    // No frame may arrive any more when the session goes, and no pin change when the camera does.
    if (camera)
    {
        camera->SetFrameSink(nullptr);
    }
}

StreamReport StreamRun::Run()
{
    CreateCamera();
    session.Open(options.transform == TransformKind::Depth ? kDepthTransform : kColorTransform,
                 static_cast<IMFTransform *>(camera.Get()));
    ChooseTypes();
    StartOutputs();
    WaitForFrames();
    StopOutputs();

    StreamReport report;
    report.transform = options.transform == TransformKind::Depth ? "depth" : "color";
    report.source = sourceText;
    LetGo(report);
    return report;
}

void StreamRun::CreateCamera()
{
    tarn_sim::CameraConfiguration configuration = MakeConfiguration(options);
    configuration.frameSource = MakeSource(options.frames);
    configuration.pacing = options.pace == Pace::Fast ? tarn_sim::Pacing::AsFastAsTaken : tarn_sim::Pacing::RealTime;
    const std::uint64_t pictures = configuration.frameSource->PictureCount();
    frameLimit = options.seconds > 0 ? 0 : options.count > 0 ? options.count : pictures;
    configuration.frameLimit = frameLimit;
    std::transform(configuration.pins.begin(), configuration.pins.end(), std::back_inserter(pinIds),
                   [](const tarn_sim::PinConfiguration &pin) { return pin.streamId; });
    sourceText = options.frames.empty() ? "generated scene"
                                        : std::to_string(pictures) + " recorded frames from " + ToText(options.frames);
    camera = MakeCom<tarn_sim::SimulatedCamera>(std::move(configuration));
}

void StreamRun::ChooseTypes()
{
    const std::size_t framesToShow = options.outFolder.empty() ? 0 : kThumbnailsPerSection;
    for (std::size_t index = 0; index < session.OutputIds().size(); ++index)
    {
        const DWORD id = session.OutputIds()[index];
        std::string offered;
        std::unique_ptr<Output> output;
        for (const ComPtr<IMFMediaType> &type : session.OutputTypes(id))
        {
            FrameFormat format = FrameFormat::Of(*type.Get());
            offered += (offered.empty() ? "" : ", ") + format.ToText();
            if (!output && Fits(format, options))
            {
                output.reset(new Output{OutputCollector(id, std::move(format), framesToShow), type, InputOf(index)});
            }
        }
        if (!output)
        {
            throw UsageError("output " + std::to_string(id) + " offers no such type; it offers " + offered);
        }
        outputs.push_back(std::move(output));
    }
}

DWORD StreamRun::InputOf(std::size_t outputIndex) const
{
    const std::vector<DWORD> &inputs = session.InputIds();
    if (inputs.empty() || (inputs.size() > 1 && inputs.size() != session.OutputIds().size()))
    {
        throw HostError("cannot tell which of " + std::to_string(inputs.size()) + " inputs feeds which output");
    }
    return inputs.size() == 1 ? inputs.front() : inputs[outputIndex];
}

std::size_t StreamRun::ExpectedInputs() const
{
    return std::min(session.InputIds().size(), outputs.size());
}

void StreamRun::StartOutputs()
{
    camera->SetFrameSink(this);
    session.SendMessage(MFT_MESSAGE_NOTIFY_BEGIN_STREAMING);
    session.SendMessage(MFT_MESSAGE_NOTIFY_START_OF_STREAM);
    for (const auto &output : outputs)
    {
        session.SetOutputState(output->collector.Id(), DeviceStreamState_Run, output->type.Get());
    }
    session.WaitForInputs(DeviceStreamState_Run, ExpectedInputs(), kStateLimit);
}

void StreamRun::WaitForFrames()
{
    ProgressLine progress(options.quiet);
    const auto startedAt = Clock::now();
    const auto endsAt =
        startedAt + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(options.seconds));
    bool feeding = true;
    std::uint64_t seen = 0;
    auto seenAt = startedAt;
    for (;;)
    {
        ThrowOnFailure();
        progress.Show(ProgressText());
        const auto now = Clock::now();
        if (feeding && (frameLimit == 0 ? now >= endsAt : AllFramesIn()))
        {
            camera->SetFrameSink(nullptr);
            feeding = false;
        }
        if (!feeding && FramesInFlight() == 0)
        {
            return;
        }
        const std::uint64_t framesOut = FramesOut();
        if (framesOut != seen)
        {
            seen = framesOut;
            seenAt = now;
        }
        if (now - seenAt > kStallLimit)
        {
            camera->SetFrameSink(nullptr);
            stalled = feeding;
            return;
        }
        std::unique_lock hold(lock);
        progressed.wait_for(hold, 50ms);
    }
}

bool StreamRun::AllFramesIn() const
{
    return std::all_of(outputs.begin(), outputs.end(), [this](const auto &output) {
        const tarn_sim::PinStatistics pin = camera->Statistics(output->inputId);
        return output->collector.FramesIn() + pin.dropped + pin.failed >= frameLimit;
    });
}

std::size_t StreamRun::FramesInFlight() const
{
    std::size_t frames = 0;
    for (const auto &output : outputs)
    {
        frames += output->collector.InFlight();
    }
    return frames;
}

std::uint64_t StreamRun::FramesOut() const
{
    std::uint64_t frames = 0;
    for (const auto &output : outputs)
    {
        frames += output->collector.FramesOut();
    }
    return frames;
}

std::string StreamRun::ProgressText() const
{
    std::string text;
    for (const auto &output : outputs)
    {
        const StreamSummary summary = output->collector.Summary();
        char part[96];
        std::snprintf(part, sizeof part, "%soutput %lu: %llu in, %llu out, %.1f fps", text.empty() ? "" : "   ",
                      output->collector.Id(), static_cast<unsigned long long>(summary.framesIn),
                      static_cast<unsigned long long>(summary.framesOut), summary.framesPerSecond);
        text += part;
    }
    return text;
}

void StreamRun::StopOutputs()
{
    session.SendMessage(MFT_MESSAGE_NOTIFY_END_OF_STREAM);
    session.SendMessage(MFT_MESSAGE_COMMAND_DRAIN);
    for (const auto &output : outputs)
    {
        session.SetOutputState(output->collector.Id(), DeviceStreamState_Stop, output->type.Get());
    }
    session.WaitForInputs(DeviceStreamState_Stop, ExpectedInputs(), kStateLimit);
    session.SendMessage(MFT_MESSAGE_COMMAND_FLUSH);
    session.SendMessage(MFT_MESSAGE_NOTIFY_END_STREAMING);
    ThrowOnFailure();
}

void StreamRun::LetGo(StreamReport &report)
{
    report.leftovers.transformReferences = session.Close();
    report.events = session.Counters();
    report.stalled = stalled;
    camera->WaitForReturnOfFrames(std::chrono::duration_cast<std::chrono::milliseconds>(kReturnLimit));
    camera->StopAll();
    for (const DWORD id : pinIds)
    {
        report.pins.push_back({id, camera->Statistics(id)});
        report.leftovers.frames += report.pins.back().statistics.outstanding;
    }
    report.leftovers.cameraReferences = camera.Detach()->Release();
    for (const auto &output : outputs)
    {
        const OutputCollector &collector = output->collector;
        report.outputs.push_back({collector.Id(), collector.Format().ToText(), collector.Summary()});
        output->type.Reset();
    }
}

Picture StreamRun::DrawFrames(const std::string &title) const
{
    std::vector<ContactSheetSection> sections;
    for (const auto &output : outputs)
    {
        const OutputCollector &collector = output->collector;
        sections.push_back({"output " + std::to_string(collector.Id()) + "   " + collector.Format().ToText() + "   " +
                                std::to_string(collector.FramesOut()) + " frames",
                            collector.Frames()});
    }
    return DrawContactSheet(title, sections);
}

HRESULT StreamRun::OnInputState(DWORD inputId, DeviceStreamState state, IMFMediaType *type)
{
    return camera->SetPinState(inputId, state, type);
}

void StreamRun::OnOutputSample(DWORD outputId, IMFSample *sample)
{
    for (const auto &output : outputs)
    {
        if (output->collector.Id() == outputId && FAILED(output->collector.FrameOut(*sample)))
        {
            std::fprintf(stderr, "tarn-host: a frame of output %lu cannot be read for the picture\n", outputId);
        }
    }
    progressed.notify_all();
}

void StreamRun::OnSessionFailure()
{
    progressed.notify_all();
}

void StreamRun::OnFrame(DWORD streamId, IMFSample *sample)
{
    for (const auto &output : outputs)
    {
        if (output->inputId == streamId)
        {
            output->collector.FrameIn(*sample);
        }
    }
    const HRESULT result = session.ProcessInput(streamId, sample);
    if (SUCCEEDED(result))
    {
        return;
    }
    for (const auto &output : outputs)
    {
        if (output->inputId == streamId)
        {
            output->collector.FrameRefused();
        }
    }
    const std::scoped_lock hold(lock);
    inputFailure = FAILED(inputFailure) ? inputFailure : result;
}

void StreamRun::ThrowOnFailure() const
{
    if (const auto failure = session.Failure())
    {
        throw HostError(*failure);
    }
    const std::scoped_lock hold(lock);
    ThrowIfFailed(inputFailure, "ProcessInput");
}

} // namespace tarn_host
