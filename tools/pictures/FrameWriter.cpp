#include "tools/pictures/FrameWriter.h"

#include <nlohmann/json.hpp>

#include <regex>
#include <set>
#include <vector>

#include "sim/PngImage.h"
#include "sim/RecordingNotes.h"
#include "tools/command/ExitCode.h"
#include "tools/command/Text.h"

namespace tarn_host
{

namespace
{

using Json = nlohmann::ordered_json;

constexpr const char *kListName = "frames.jsonl";
constexpr double kMmPerDepthUnit = 0.125;

// "depth_000012.png" and what else this program has ever named its pictures. Nothing with a folder in it.
bool IsPictureName(const std::string &name)
{
    static const std::regex pattern("(depth|ir|infrared|color|confidence)[-_][0-9]+\\.(png|pgm|raw)");
    return std::regex_match(name, pattern);
}

// The pictures that an earlier run listed.
std::set<std::string> ListedPictures(const std::filesystem::path &folder)
{
    std::set<std::string> names;
    std::ifstream list(folder / kListName, std::ios::binary);
    std::string line;
    while (std::getline(list, line))
    {
        const Json frame = Json::parse(line, nullptr, false);
        for (const char *member : {"file", "confidenceFile"})
        {
            const std::string name = frame.is_object() ? frame.value(member, "") : "";
            if (IsPictureName(name))
            {
                names.insert(name);
            }
        }
    }
    return names;
}

void RequireNoPicturesOfOthers(const std::filesystem::path &folder)
{
    const std::set<std::string> own = ListedPictures(folder);
    std::error_code error;
    for (const auto &entry : std::filesystem::directory_iterator(folder, error))
    {
        const std::string name = ToText(entry.path().filename());
        if (IsPictureName(name) && !own.contains(name))
        {
            throw UsageError("--out: " + ToText(folder) + " holds pictures that are no saved frames, such as " + name +
                             "; name another folder");
        }
    }
    if (error)
    {
        throw HostError("cannot read " + ToText(folder));
    }
}

// A point in time does not fit the numbers of every reader of JSON, which are doubles.
std::string TimeText(std::int64_t time100ns)
{
    return std::to_string(time100ns);
}

Json ToJson(const TARN_FRAME_METADATA &record)
{
    return {{"frameCounter", record.frameCounter},
            {"timestamp100ns", std::to_string(record.timestamp100ns)},
            {"exposureUs", record.exposureUs},
            {"gain", record.gain256 / 256.0},
            {"cameraFormat", std::string(reinterpret_cast<const char *>(&record.formatFourCc), 4)},
            {"cameraWidth", record.width},
            {"cameraHeight", record.height},
            {"privacy", (record.flags & TARN_FRAME_FLAG_PRIVACY) != 0},
            {"confidenceSuppressed", (record.flags & TARN_FRAME_FLAG_CONFIDENCE_SUPPRESSED) != 0},
            {"hdr", (record.flags & TARN_FRAME_FLAG_HDR) != 0},
            {"temperatureC", record.temperatureDeciC / 10.0},
            {"errorCode", record.errorCode},
            {"illumination", record.illumination},
            {"laserPower", record.laserPower},
            {"accuracy", record.accuracy},
            {"motionVersusRange", record.motionVersusRange},
            {"filterOption", record.filterOption},
            {"confidenceThreshold", record.confidenceThreshold}};
}

Json ToJson(const MFPinholeCameraIntrinsic_IntrinsicModel &model)
{
    const auto &distortion = model.DistortionModel;
    return {{"width", model.Width},
            {"height", model.Height},
            {"focalLength", {model.CameraModel.FocalLength.x, model.CameraModel.FocalLength.y}},
            {"principalPoint", {model.CameraModel.PrincipalPoint.x, model.CameraModel.PrincipalPoint.y}},
            {"radial", {distortion.Radial_k1, distortion.Radial_k2, distortion.Radial_k3}},
            {"tangential", {distortion.Tangential_p1, distortion.Tangential_p2}}};
}

Json ToJson(const MFCameraExtrinsic_CalibratedTransform &transform)
{
    const auto &position = transform.Position;
    const auto &orientation = transform.Orientation;
    return {{"positionMetres", {position.x, position.y, position.z}},
            {"orientation", {orientation.x, orientation.y, orientation.z, orientation.w}}};
}

template <class Entry>
Json ToJsonArray(const std::vector<Entry> &entries)
{
    Json array = Json::array();
    for (const Entry &entry : entries)
    {
        array.push_back(ToJson(entry));
    }
    return array;
}

void AddDetails(Json &line, const SampleDetails &details)
{
    if (details.isIlluminated)
    {
        line["lit"] = *details.isIlluminated;
    }
    if (details.minReliableDepth && details.maxReliableDepth)
    {
        line["reliableDepth"] = {*details.minReliableDepth, *details.maxReliableDepth};
    }
    if (details.record)
    {
        line["metadata"] = ToJson(*details.record);
    }
    line["intrinsics"] = ToJsonArray(details.intrinsics);
    line["extrinsics"] = ToJsonArray(details.extrinsics);
}

// What the pictures' writers throw names the file already.
template <class Write>
void Run(const Write &write)
{
    try
    {
        write();
    }
    catch (const std::runtime_error &error)
    {
        throw HostError(error.what());
    }
}

} // namespace

FrameWriter::FrameWriter(std::filesystem::path outputFolder) : folder(std::move(outputFolder))
{
    RequireNoPicturesOfOthers(folder);
}

void FrameWriter::Begin()
{
    for (const std::string &name : ListedPictures(folder))
    {
        std::error_code ignored; // it may be gone already
        std::filesystem::remove(folder / name, ignored);
    }
    lines.open(folder / kListName, std::ios::binary);
    Run([&] { tarn_sim::RecordingNotes{kMmPerDepthUnit, tarn_sim::ConfidenceKind::Map}.Save(folder); });
}

void FrameWriter::Write(const std::string &stream, std::uint64_t number, const FrameFormat &format,
                        std::span<const std::byte> pixels, const SampleDetails &details)
{
    if (!lines.is_open())
    {
        Begin();
    }
    const std::string suffix = Format("_%06llu", static_cast<unsigned long long>(number));
    const std::size_t pixelCount = std::size_t{format.size.width} * format.size.height;
    const bool isWide = format.pixels == PixelKind::Depth16 || format.pixels == PixelKind::Grey16;
    const bool isPicture = (isWide || format.pixels == PixelKind::Grey8) && pixelCount != 0 &&
                           pixels.size() >= pixelCount * (isWide ? 2 : 1);
    const std::string file = (stream == "infrared" ? "ir" : stream) + suffix + (isPicture ? ".png" : ".raw");
    const std::string confidenceFile =
        pixelCount != 0 && details.confidence.size() >= pixelCount ? "confidence" + std::string(suffix) + ".png" : "";

    Json line{{"stream", stream},
              {"number", number},
              {"file", file},
              {"format", format.subtypeName},
              {"width", format.size.width},
              {"height", format.size.height},
              {"time100ns", TimeText(details.time100ns)},
              {"duration100ns", details.duration100ns}};
    if (!confidenceFile.empty())
    {
        line["confidenceFile"] = confidenceFile;
    }
    AddDetails(line, details);
    // Before the files, so that the next run knows them as its own even when this one ends in between.
    lines << line.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n' << std::flush;
    if (!lines)
    {
        throw HostError("cannot write to " + ToText(folder / kListName));
    }
    Run([&] {
        if (isPicture)
        {
            // Depth with a confidence map has its buffer for both planes; only the first is the picture.
            tarn_sim::WriteGreyPng(folder / file, format.size.width, format.size.height, isWide ? 16 : 8, pixels);
        }
        else
        {
            WriteRaw(file, pixels);
        }
        if (!confidenceFile.empty())
        {
            tarn_sim::WriteGreyPng(folder / confidenceFile, format.size.width, format.size.height, 8,
                                   std::as_bytes(std::span(details.confidence)));
        }
    });
}

void FrameWriter::WriteRaw(const std::string &name, std::span<const std::byte> bytes)
{
    std::ofstream file(folder / name, std::ios::binary);
    file.write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!file.flush())
    {
        throw HostError("cannot write to " + ToText(folder / name));
    }
}

} // namespace tarn_host
