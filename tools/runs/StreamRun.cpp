#include "tools/runs/StreamRun.h"

#include <algorithm>
#include <chrono>

#include "sim/CameraConfiguration.h"
#include "sim/GeneratedScene.h"
#include "sim/RecordedFrames.h"
#include "tools/runs/ProcessorTime.h"
#include "tools/command/ExitCode.h"
#include "tools/command/Interruption.h"
#include "tools/ks/KsClient.h"
#include "tools/command/Text.h"
#include "base/ComObject.h"

namespace tarn_host
{

namespace
{

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using user_space_frameworks::MakeCom;

constexpr auto kStateLimit = 10s; // For the transform's events to be answered.
constexpr auto kStallLimit = 10s; // Without any frame coming out.
constexpr auto kReturnLimit = 2s; // For frames to come back to the camera.

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

} // namespace

StreamRun::StreamRun(const Scenario &playedScenario, const RunOptions &runOptions, ProgressLine &progressLine)
    : scenario(playedScenario), options(runOptions), progress(progressLine), session(*this),
      books(runOptions.framesToShow)
{
}

StreamRun::~StreamRun()
{
    // No frame may arrive any more when the session goes, and no pin change when the camera does.
    if (camera)
    {
        camera->Pins().SetFrameSink(nullptr);
    }
}

StreamReport StreamRun::Run(const LoadedModule &module)
{
    if (options.saveFrames)
    {
        writer.emplace(options.outFolder);
    }
    CreateCamera();
    if (options.allocator)
    {
        session.OfferAllocators();
    }
    session.Open(module.Create(ClassOf(scenario.transform)), static_cast<IMFTransform *>(camera.Get()));
    camera->Pins().SetFrameSink(this);
    session.SendMessage(MFT_MESSAGE_NOTIFY_BEGIN_STREAMING);
    session.SendMessage(MFT_MESSAGE_NOTIFY_START_OF_STREAM);
    const auto processorTimeBefore = ProcessorTime();
    for (std::size_t index = 0; index < scenario.phases.size() && !stalled && !interrupted; ++index)
    {
        Enter(index);
        Play(index);
        progress.EndPart();
    }
    StopOutputs();

    StreamReport report;
    report.processorTime = ProcessorTime() - processorTimeBefore;
    report.title = scenario.title;
    report.transform = NameOf(scenario.transform);
    report.source = sourceText;
    LetGo(report);
    return report;
}

void StreamRun::CreateCamera()
{
    auto configuration = scenario.transform == TransformKind::Depth ? tarn_sim::CameraConfiguration::TarnDepth()
                                                                    : tarn_sim::CameraConfiguration::TarnColor();
    configuration.frameSource = MakeSource(options.frames);
    configuration.pacing = options.pace == Pace::Fast ? tarn_sim::Pacing::AsFastAsTaken : tarn_sim::Pacing::RealTime;
    // Exactly so many frames can only be asked of the camera when nothing restarts it.
    const Phase &first = scenario.phases.front();
    if (scenario.phases.size() == 1 && first.seconds == 0)
    {
        frameLimit = first.frames != 0 ? first.frames : configuration.frameSource->PictureCount();
    }
    configuration.frameLimit = frameLimit;
    std::transform(configuration.pins.begin(), configuration.pins.end(), std::back_inserter(pinIds),
                   [](const tarn_sim::PinConfiguration &pin) { return pin.streamId; });
    sourceText = options.frames.empty() ? "generated scene"
                                        : std::to_string(configuration.frameSource->PictureCount()) +
                                              " recorded frames from " + ToText(options.frames);
    camera = MakeCom<tarn_sim::SimulatedCamera>(std::move(configuration));
}

void StreamRun::Enter(std::size_t index)
{
    const Phase &phase = scenario.phases[index];
    const bool restartsAll = phase.faceLogin || phase.confidenceMap || !phase.start.empty();
    // Nothing of an earlier topology can come then: the first frame counts already.
    const bool countsAtOnce = running.empty() && phase.start.size() == 1;
    books.BeginChange(restartsAll, phase.stop);
    for (const DWORD id : phase.stop)
    {
        session.SetOutputState(id, DeviceStreamState_Stop, running.at(id).Get());
        running.erase(id);
        books.Remove(id);
    }
    SwitchModes(phase);
    for (const OutputChoice &choice : phase.start)
    {
        const ComPtr<IMFMediaType> type = ChooseType(choice);
        running[choice.outputId] = type;
        books.Add(choice.outputId, InputOf(choice.outputId), FrameFormat::Of(*type.Get()));
        if (countsAtOnce)
        {
            books.Begin(choice.outputId, index, ConfidenceMapComes());
        }
        session.SetOutputState(choice.outputId, DeviceStreamState_Run, type.Get());
    }
    session.Synchronise(kStateLimit);
    books.EndChange(index, ConfidenceMapComes());
    pinTexts.push_back(PinText());
}

void StreamRun::SwitchModes(const Phase &phase)
{
    if (!phase.faceLogin && !phase.confidenceMap)
    {
        return;
    }
    const KsClient controls(session.KsControl());
    if (phase.faceLogin)
    {
        controls.SetFaceLogin(*phase.faceLogin);
    }
    if (phase.confidenceMap)
    {
        controls.SetConfidenceMap(*phase.confidenceMap);
        confidenceMapIsOn = *phase.confidenceMap;
    }
}

void StreamRun::Play(std::size_t index)
{
    const Phase &phase = scenario.phases[index];
    const bool isLast = index + 1 == scenario.phases.size();
    const auto startedAt = Clock::now();
    const auto endsAt =
        startedAt + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(phase.seconds));
    bool feeding = true;
    std::uint64_t seen = 0;
    auto seenAt = startedAt;
    for (;;)
    {
        ThrowOnFailure();
        const auto now = Clock::now();
        progress.Show(ShareDone(phase, now - startedAt), ProgressText(phase));
        const bool isDone = phase.seconds > 0 ? now >= endsAt : AllFramesIn(phase);
        if (feeding && (isDone || Interruption::IsAsked()))
        {
            interrupted = Interruption::IsAsked() && !(isDone && isLast);
            if (!isLast && !interrupted)
            {
                return; // the next change finds frames on their way
            }
            camera->Pins().SetFrameSink(nullptr);
            feeding = false;
        }
        if (!feeding && books.FramesInFlight() == 0)
        {
            return;
        }
        const std::uint64_t framesOut = books.FramesOut();
        if (framesOut != seen)
        {
            seen = framesOut;
            seenAt = now;
        }
        if (now - seenAt > kStallLimit)
        {
            camera->Pins().SetFrameSink(nullptr);
            stalled = feeding;
            return;
        }
        std::unique_lock hold(lock);
        progressed.wait_for(hold, 50ms);
    }
}

void StreamRun::StopOutputs()
{
    session.SendMessage(MFT_MESSAGE_NOTIFY_END_OF_STREAM);
    session.SendMessage(MFT_MESSAGE_COMMAND_DRAIN);
    for (const auto &[id, type] : running)
    {
        session.SetOutputState(id, DeviceStreamState_Stop, type.Get());
    }
    session.WaitForInputs(DeviceStreamState_Stop, std::min(session.InputIds().size(), running.size()), kStateLimit);
    session.SendMessage(MFT_MESSAGE_COMMAND_FLUSH);
    session.SendMessage(MFT_MESSAGE_NOTIFY_END_STREAMING);
    ThrowOnFailure();
}

void StreamRun::LetGo(StreamReport &report)
{
    report.leftovers.transformReferences = session.Close();
    report.events = session.Counters();
    report.stalled = stalled;
    report.interrupted = interrupted;
    camera->Pins().WaitForReturnOfFrames(std::chrono::duration_cast<std::chrono::milliseconds>(kReturnLimit));
    camera->Pins().StopAll();
    for (const DWORD id : pinIds)
    {
        report.pins.push_back({id, camera->Pins().Statistics(id), books.FramesOf(id)});
        report.leftovers.frames += report.pins.back().statistics.outstanding;
    }
    running.clear();
    report.leftovers.cameraReferences = camera.Detach()->Release();
    for (std::size_t index = 0; index < pinTexts.size(); ++index)
    {
        report.phases.push_back({scenario.phases[index].caption, pinTexts[index], {}});
    }
    for (const auto &stretch : books.Stretches())
    {
        const OutputCollector &collector = stretch->collector;
        report.phases[stretch->phase].outputs.push_back(
            {collector.Id(), NameOfOutput(scenario.transform, collector.Id()), collector.Format().ToText(),
             collector.Summary(), collector.Attachments(), stretch->confidenceMapIsOn});
    }
}

std::vector<PhasePictures> StreamRun::Pictures() const
{
    std::vector<PhasePictures> pictures;
    for (const auto &stretch : books.Stretches())
    {
        const OutputCollector &collector = stretch->collector;
        const std::string title =
            std::string(NameOfOutput(scenario.transform, collector.Id())) + " " + collector.Format().ToText();
        pictures.push_back({stretch->phase,
                            collector.Id(),
                            {title, collector.Frames()},
                            {title + ", confidence map", collector.ConfidenceMaps()}});
    }
    return pictures;
}

HRESULT StreamRun::OnInputState(DWORD inputId, DeviceStreamState state, IMFMediaType *type)
{
    if (state == DeviceStreamState_Run && type != nullptr)
    {
        const std::string format = FrameFormat::Of(*type).ToText();
        const std::scoped_lock hold(lock);
        pinFormats[inputId] = format;
    }
    return camera->Pins().SetPinState(inputId, state, type);
}

void StreamRun::OnOutputSample(DWORD outputId, IMFSample *sample)
{
    try
    {
        CollectSample(outputId, *sample);
    }
    catch (const std::exception &error)
    {
        Fail(error.what());
    }
    progressed.notify_all();
}

void StreamRun::CollectSample(DWORD outputId, IMFSample &sample)
{
    const SampleDetails details = SampleDetails::Of(sample);
    OutputCollector *const collector = books.CollectorOf(outputId, details);
    if (collector == nullptr)
    {
        return;
    }
    const std::uint64_t number = collector->FrameOut(details);
    if (writer || collector->WantsPixels(number))
    {
        const LockedFrame frame(sample);
        if (collector->WantsPixels(number))
        {
            collector->Keep(number, frame, details);
        }
        if (writer)
        {
            writer->Write(NameOfOutput(scenario.transform, outputId), number, collector->Format(), frame.Bytes(),
                          details);
        }
    }
}

void StreamRun::OnSessionFailure()
{
    progressed.notify_all();
}

void StreamRun::OnFrame(DWORD streamId, IMFSample *sample)
{
    const PhaseBooks::EnteredFrame entered = books.FrameIn(streamId, *sample);
    const HRESULT result = session.ProcessInput(streamId, sample);
    if (FAILED(result) && !books.FrameRefused(entered))
    {
        Fail(HostError(result, "ProcessInput").what());
    }
}

void StreamRun::Fail(const std::string &reason)
{
    const std::scoped_lock hold(lock);
    if (!failure)
    {
        failure = reason;
    }
}

void StreamRun::ThrowOnFailure() const
{
    if (const auto sessionFailure = session.Failure())
    {
        throw HostError(*sessionFailure);
    }
    const std::scoped_lock hold(lock);
    if (failure)
    {
        throw HostError(*failure);
    }
}

} // namespace tarn_host
