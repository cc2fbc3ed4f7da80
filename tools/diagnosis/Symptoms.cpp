#include "tools/diagnosis/Symptoms.h"

#include <algorithm>
#include <array>

namespace tarn_host
{

namespace
{
using enum Severity;

constexpr auto kSymptoms = std::to_array<Symptom>({
    {"KsEventListener", "the stop did not complete", Wrong,
     "the listener for the camera's events is stuck: it did not stop",
     "the camera or its driver does not come back from a call; the lines before tell which"},
    {"AutoUpdateListening", ": did not ", Wrong, "the listener for the camera's events is stuck: it did not stop",
     "the camera or its driver does not come back from a call; the lines before tell which"},
    {"TarnFwErrorHandler", "firmware error: ", Wrong, "the camera reports a fault of its own",
     "the errors below name it; another cable or port, then the camera's maker"},
    {"", "exception trapped", Wrong, "an exception was stopped inside the module",
     "the errors below have its text; send the trace to the module's makers"},
    {"", "Caught Com Exception error", Wrong, "an exception was stopped inside the module",
     "the errors below have its text; send the trace to the module's makers"},
    {"Workqueue params not set", "", Wrong, "frames are dropped: no work queue was given",
     "SetWorkQueueEx has to come before the first output starts"},
    {"faild to queue workitem", "", Wrong, "frames are dropped: the work queue does not take them",
     "the pipeline is shutting down, or out of resources"},
    {"", "flush gave up after", Wrong, "frames are stuck in the module: a flush gave up",
     "a frame took longer than a second; other load on the machine"},
    {"Stream::Find", "ailed to find matching media type", Wrong,
     "an output was asked for a format that the camera does not have",
     "docs/depth-device.md: which formats go together"},
    {"Stream::Find", "no media type ", Wrong, "an output was asked for a format that the camera does not have",
     "docs/depth-device.md: which formats go together"},
    {"", "preferred media type is not supported", Wrong,
     "an output was asked for a format that the camera does not have",
     "docs/depth-device.md: which formats go together"},
    {"", "no topology serves", Wrong, "no output like the one asked for",
     "docs/depth-device.md: which outputs there are"},
    {"DeviceMft", "no filter attributes", Wrong, "the transform was not given a camera",
     "the camera's driver, or the host"},
    {"TarnDepthDeviceMft", " pins instead of one", Wrong, "the camera does not look as this module needs it",
     "is it the right camera: hardware id in the INF"},
    {"UvcMetaDataWrapper", "malformed", Advice, "the camera's records of frames are malformed",
     "its firmware; samples go without records"},
    {"TarnCalibration", "no table", Advice, "the camera has no calibration table", "samples go without a camera model"},
    {"TarnCalibration", " refused: ", Advice, "the camera's calibration table is refused",
     "samples go without a camera model"},
    {"FramePrivacy", "the camera does not answer", Advice, "the camera does not tell its privacy state",
     "the last known state stays"},
    {"SampleAllocator", "own memory instead", Advice, "the pipeline's frame memory is not used",
     "costs one copy of each frame"},
    {"trace", " lines lost)", Advice, "lines of this log were lost", "the disk is slow; record a trace instead"},
});

} // namespace

std::span<const Symptom> KnownSymptoms() noexcept
{
    return kSymptoms;
}

const Symptom *FindSymptom(const LogRecord &record) noexcept
{
    const auto *const found = std::find_if(kSymptoms.begin(), kSymptoms.end(), [&](const Symptom &one) {
        return record.source.find(one.source) != std::string::npos && record.text.find(one.text) != std::string::npos;
    });
    return found == kSymptoms.end() ? nullptr : found;
}

} // namespace tarn_host
