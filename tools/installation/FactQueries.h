// What several decisions ask of the facts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/installation/InstallDecisions.h"

namespace tarn_host
{

// How a build of Windows registers classes: in the class root, below the device, or as the package's COM server.
enum class Generation : std::uint8_t
{
    A,
    B,
    C
};

enum class Filter : std::uint8_t
{
    Depth,
    Color
};

bool SameText(std::string_view a, std::string_view b) noexcept; // without case
bool ContainsText(std::string_view text, std::string_view part) noexcept;
bool EndsWithText(std::string_view text, std::string_view end) noexcept;

// None when the build is not known.
std::optional<Generation> GenerationOf(const InstallFacts &facts) noexcept;
// None of a device that is neither.
std::optional<Filter> FilterOf(const DeviceFacts &device) noexcept;
std::string_view OwnClass(Filter filter) noexcept;

// Present ones of both filters, in the order of the facts. Borrows.
std::vector<const DeviceFacts *> PresentDevices(const InstallFacts &facts);

bool HasClass(const std::vector<ClassFacts> &classes, std::string_view clsid) noexcept;
// In the class root and below the present devices. Borrows.
std::vector<const ClassFacts *> NamedClasses(const InstallFacts &facts);

// Whether a class names that file; the class's text may hold a variable, the path does not.
bool NamesFile(const ClassFacts &named, std::string_view path) noexcept;
// Those that the classes name; where no class is known those that are loaded. Borrows.
std::vector<const FileFacts *> JudgedFiles(const InstallFacts &facts);

// The worst of several.
class Worst
{
  public:
    void Add(Verdict verdict, const std::string &found)
    {
        if (verdict > outcome.verdict || isEmpty)
        {
            outcome = {verdict, verdict == Verdict::Ok ? std::string() : found};
        }
        isEmpty = false;
    }
    // Skipped when there was none.
    Outcome Result() const
    {
        return isEmpty ? Outcome{Verdict::Skipped, {}} : outcome;
    }

  private:
    Outcome outcome;
    bool isEmpty = true;
};

} // namespace tarn_host
