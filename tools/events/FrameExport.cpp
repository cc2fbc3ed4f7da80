#include "tools/events/FrameExport.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <map>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "sim/PngImage.h"
#include "sim/RecordingNotes.h"
#include "tools/names/Format.h"
#include "tools/names/PipelineNames.h"

namespace tarn_host
{

namespace
{
constexpr double kMmPerDepthUnit = 0.125;

// One picture in a frame's bytes.
struct Plane
{
    const char *name;
    std::uint32_t bits;
};

// The planes of a subtype, each in a 16-bit plane's room unless it stands alone.
struct Layout
{
    const char *subtype;
    std::array<Plane, 2> planes;
    std::size_t planeCount;
};

constexpr auto kLayouts = std::to_array<Layout>({
    {"INVZ", {{{"depth", 16}}}, 1},
    {"D16", {{{"depth", 16}}}, 1},
    {"INZI", {{{"ir", 16}, {"depth", 16}}}, 2},
    {"INZC", {{{"confidence", 8}, {"depth", 16}}}, 2},
    {"PAIR", {{{"ir", 16}}}, 1},
    {"L16", {{{"ir", 16}}}, 1},
    {"L8", {{{"ir", 8}}}, 1},
});

void RequireEmpty(const std::filesystem::path &folder)
{
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error || !std::filesystem::is_empty(folder, error) || error)
    {
        throw std::runtime_error("--frames: " + tarn_recording::PathText(folder) +
                                 (error ? " cannot be made or read" : " holds something already; name another folder"));
    }
}

class Exporter
{
  public:
    explicit Exporter(const std::filesystem::path &targetFolder) : folder(targetFolder) {}

    void Take(const RecordedSession &session)
    {
        types.clear();
        for (const Record &record : session.Records())
        {
            if (record.Is(TARN_RECORD_CALL, TARN_CALL_SET_INPUT_STREAM_STATE))
            {
                const ValueList values = record.Values();
                const auto type = values.Find(TARN_VALUE_MEDIA_TYPE);
                if (type && !type->IsNull())
                {
                    // A frame of the type before may still come.
                    std::vector<TypeView> &known = types[Key(record, values)];
                    known.insert(known.begin(), TypeView::Of(type->Items()));
                    known.resize(std::min<std::size_t>(known.size(), 2));
                }
            }
            else if (record.header.type == TARN_RECORD_PIXELS)
            {
                Write(record);
            }
        }
    }

    FrameExportResult result;

  private:
    using StreamKey = std::pair<std::uint32_t, std::uint64_t>; // transform, stream

    static StreamKey Key(const Record &record, const ValueList &values)
    {
        return {record.header.transform, values.Unsigned(TARN_VALUE_STREAM).value_or(0)};
    }

    void Write(const Record &record)
    {
        const ValueList values = record.Values();
        const auto pixels = values.Find(TARN_VALUE_PIXELS);
        const auto type = types.find(Key(record, values));
        if (!pixels || pixels->Kind() != TARN_KIND_BYTES || pixels->Payload().empty() ||
            values.Find(TARN_VALUE_FULL_LENGTH) || type == types.end())
        {
            ++result.skipped;
            return;
        }
        const std::string number = Format("_%06llu", static_cast<unsigned long long>(result.frames + result.raw));
        const Bytes bytes = pixels->Payload();
        for (const TypeView &one : type->second)
        {
            const std::string subtype = SubtypeText(one.subtype.bytes);
            const auto layout = std::ranges::find(kLayouts, subtype, [](const Layout &known) { return known.subtype; });
            if (layout != kLayouts.end() && WritePlanes(*layout, one, number, bytes))
            {
                ++result.frames;
                return;
            }
        }
        WriteRaw((SubtypeText(type->second.front().subtype.bytes) == "YUY2" ? "color" : "frame") + number + ".raw",
                 bytes);
    }

    void WriteRaw(const std::string &name, Bytes bytes)
    {
        std::ofstream file(folder / name, std::ios::binary);
        file.write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        if (!file.flush())
        {
            throw std::runtime_error("cannot write to " + tarn_recording::PathText(folder));
        }
        ++result.raw;
    }

    // False when the bytes are not those of this layout.
    bool WritePlanes(const Layout &layout, const TypeView &type, const std::string &number, Bytes bytes)
    {
        const std::size_t pixelCount = std::size_t{type.width} * type.height;
        const std::size_t room = layout.planeCount == 1 ? pixelCount * layout.planes[0].bits / 8 : 2 * pixelCount;
        if (pixelCount == 0 || room * layout.planeCount != bytes.size())
        {
            return false;
        }
        for (std::size_t i = 0; i < layout.planeCount; ++i)
        {
            const Plane &plane = layout.planes[i];
            tarn_sim::WriteGreyPng(folder / (plane.name + number + ".png"), type.width, type.height, plane.bits,
                                   std::as_bytes(bytes.subspan(i * room, pixelCount * plane.bits / 8)));
        }
        return true;
    }

    const std::filesystem::path &folder;
    std::map<StreamKey, std::vector<TypeView>> types; // the latest first
};
} // namespace

FrameExportResult ExportFrames(const std::vector<RecordedSession> &sessions, const std::filesystem::path &folder)
{
    RequireEmpty(folder);
    Exporter exporter(folder);
    for (const RecordedSession &session : sessions)
    {
        exporter.Take(session);
    }
    if (exporter.result.frames != 0)
    {
        tarn_sim::RecordingNotes{kMmPerDepthUnit, tarn_sim::ConfidenceKind::Level}.Save(folder);
    }
    return exporter.result;
}

} // namespace tarn_host
