#include "sim/RecordingNotes.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace tarn_sim
{

namespace
{
constexpr const char *kFileName = "recording.txt";
constexpr const char *kUnitWord = "depth_mm_per_unit";
constexpr const char *kConfidenceWord = "confidence";
constexpr std::array<std::string_view, 3> kConfidenceKinds{"error", "level", "map"};

std::vector<std::string> SplitLine(const std::string &line)
{
    std::vector<std::string> fields;
    std::istringstream stream(line);
    std::string field;
    while (std::getline(stream, field, ','))
    {
        std::erase(field, '\r');
        fields.push_back(field);
    }
    return fields;
}

// The depth unit that the collection's manifest gives for the folder.
std::optional<double> UnitFromManifest(const std::filesystem::path &folder)
{
    std::ifstream manifest(folder.parent_path() / "manifest.csv");
    std::string line;
    if (!manifest || !std::getline(manifest, line))
    {
        return std::nullopt;
    }
    const auto header = SplitLine(line);
    const auto columnOf = [&header](std::string_view name) {
        return static_cast<std::size_t>(std::ranges::find(header, name) - header.begin());
    };
    const std::size_t set = columnOf("set");
    const std::size_t kind = columnOf("kind");
    const std::size_t unit = columnOf("mm_per_unit");
    while (std::getline(manifest, line))
    {
        const auto fields = SplitLine(line);
        if (std::max({set, kind, unit}) >= fields.size() || fields[set] != folder.filename().string() ||
            fields[kind] != "depth")
        {
            continue;
        }
        const double value = std::strtod(fields[unit].c_str(), nullptr);
        if (value > 0.0)
        {
            return value;
        }
    }
    return std::nullopt;
}

// False when the words mean nothing.
bool Read(const std::string &word, const std::string &value, RecordingNotes &notes)
{
    if (word == kUnitWord)
    {
        char *end = nullptr;
        notes.mmPerUnit = std::strtod(value.c_str(), &end);
        return *end == '\0' && *notes.mmPerUnit > 0.0;
    }
    const auto kind = std::ranges::find(kConfidenceKinds, value);
    notes.confidence = static_cast<ConfidenceKind>(kind - kConfidenceKinds.begin());
    return word == kConfidenceWord && kind != kConfidenceKinds.end();
}
} // namespace

RecordingNotes RecordingNotes::Of(const std::filesystem::path &folder)
{
    RecordingNotes notes;
    std::ifstream file(folder / kFileName);
    if (!file)
    {
        notes.mmPerUnit = UnitFromManifest(folder);
        return notes;
    }
    std::string line;
    while (std::getline(file, line))
    {
        std::istringstream words(line.substr(0, line.find('#')));
        std::string word;
        std::string value;
        std::string more;
        if (!(words >> word))
        {
            continue;
        }
        if (!(words >> value) || words >> more || !Read(word, value, notes))
        {
            throw std::runtime_error((folder / kFileName).string() + ": cannot understand '" + line + "'");
        }
    }
    return notes;
}

void RecordingNotes::Save(const std::filesystem::path &folder) const
{
    std::ofstream file(folder / kFileName, std::ios::binary);
    file << "# How the pictures of this folder are to be read.\n";
    if (mmPerUnit)
    {
        file << kUnitWord << ' ' << *mmPerUnit << '\n';
    }
    if (confidence)
    {
        file << kConfidenceWord << ' ' << kConfidenceKinds.at(static_cast<std::size_t>(*confidence)) << '\n';
    }
    if (!file.flush())
    {
        throw std::runtime_error("cannot write " + (folder / kFileName).string());
    }
}

} // namespace tarn_sim
