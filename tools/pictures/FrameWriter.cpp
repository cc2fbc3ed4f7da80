#include "tools/pictures/FrameWriter.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <vector>

#include "tools/command/ExitCode.h"
#include "tools/command/Text.h"

namespace tarn_host
{

namespace
{

using Json = nlohmann::ordered_json;

constexpr unsigned kLargestConfidence = 15;

// "Netpbm greymap, raw" (P5): text header, then rows; 16-bit values have their high byte first.
std::string GreyMapHeader(const FrameFormat &format, unsigned largest)
{
    return "P5\n" + std::to_string(format.size.width) + ' ' + std::to_string(format.size.height) + '\n' +
           std::to_string(largest) + '\n';
}

std::vector<std::byte> HighByteFirst(std::span<const std::byte> pixels)
{
    std::vector<std::byte> turned(pixels.begin(), pixels.end());
    for (std::size_t i = 1; i < turned.size(); i += 2)
    {
        std::swap(turned[i - 1], turned[i]);
    }
    return turned;
}

Json ToJson(const TARN_FRAME_METADATA &record)
{
    return {{"frameCounter", record.frameCounter},
            {"timestamp100ns", record.timestamp100ns},
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

} // namespace

FrameWriter::FrameWriter(std::filesystem::path outputFolder)
    : folder(std::move(outputFolder)), lines(folder / "frames.jsonl", std::ios::binary)
{
    if (!lines)
    {
        throw HostError("cannot write to " + ToText(folder));
    }
}

void FrameWriter::Write(const std::string &stream, std::uint64_t number, const FrameFormat &format,
                        std::span<const std::byte> pixels, const SampleDetails &details)
{
    char suffix[32];
    std::snprintf(suffix, sizeof suffix, "-%06llu", static_cast<unsigned long long>(number));

    Json line{{"stream", stream},
              {"number", number},
              {"file", WritePixels(stream + suffix, format, pixels)},
              {"format", format.subtypeName},
              {"width", format.size.width},
              {"height", format.size.height},
              {"time100ns", details.time100ns},
              {"duration100ns", details.duration100ns}};
    const std::size_t pixelCount = std::size_t{format.size.width} * format.size.height;
    if (!details.confidence.empty() && details.confidence.size() >= pixelCount)
    {
        const std::string name = "confidence" + std::string(suffix) + ".pgm";
        WriteFile(name, GreyMapHeader(format, kLargestConfidence),
                  std::as_bytes(std::span(details.confidence).first(pixelCount)));
        line["confidenceFile"] = name;
    }
    if (details.isIlluminated)
    {
        line["illuminated"] = *details.isIlluminated;
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
    lines << line.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n' << std::flush;
    if (!lines)
    {
        throw HostError("cannot write to " + ToText(folder / "frames.jsonl"));
    }
}

std::string FrameWriter::WritePixels(const std::string &name, const FrameFormat &format,
                                     std::span<const std::byte> pixels)
{
    const bool isWide = format.pixels == PixelKind::Depth16 || format.pixels == PixelKind::Grey16;
    const std::size_t needed = std::size_t{format.size.width} * format.size.height * (isWide ? 2 : 1);
    if ((isWide || format.pixels == PixelKind::Grey8) && pixels.size() >= needed)
    {
        // Depth with a confidence map has its buffer for both planes; only the first is the picture.
        const auto picture = pixels.first(needed);
        WriteFile(name + ".pgm", GreyMapHeader(format, isWide ? 0xFFFF : 0xFF),
                  isWide ? HighByteFirst(picture) : std::vector(picture.begin(), picture.end()));
        return name + ".pgm";
    }
    WriteFile(name + ".raw", {}, pixels);
    return name + ".raw";
}

void FrameWriter::WriteFile(const std::string &name, const std::string &header, std::span<const std::byte> bytes)
{
    std::ofstream file(folder / name, std::ios::binary);
    file << header;
    file.write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!file.flush())
    {
        throw HostError("cannot write to " + ToText(folder / name));
    }
}

} // namespace tarn_host
