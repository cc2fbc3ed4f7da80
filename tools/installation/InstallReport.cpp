#include "tools/installation/InstallReport.h"

#include <algorithm>
#include <array>
#include <ostream>

namespace tarn_host
{

namespace
{
std::string_view NameOf(Verdict verdict)
{
    static constexpr std::array<std::string_view, 5> kNames{"ok     ", "-      ", "unknown", "advice ", "WRONG  "};
    return kNames[static_cast<std::size_t>(verdict)];
}

std::string Padded(std::string_view text, std::size_t width)
{
    std::string padded(text);
    padded.resize(std::max(width, padded.size()), ' ');
    return padded;
}
} // namespace

bool WriteInstallReport(std::ostream &output, const std::vector<Judgement> &judgements)
{
    const auto wrong = std::find_if(judgements.begin(), judgements.end(),
                                    [](const Judgement &one) { return one.verdict == Verdict::Wrong; });
    if (wrong == judgements.end())
    {
        output << "OK      nothing is wrong with this installation\n\n";
    }
    else
    {
        output << "WRONG   " << wrong->row << ": " << wrong->says << "\n        " << wrong->todo
               << "\n        begin with this one: later ones often follow from it\n\n";
    }
    for (const Judgement &one : judgements)
    {
        output << "  " << NameOf(one.verdict) << "  " << Padded(one.row, one.says.empty() ? 0 : 16) << one.says << '\n';
        if (!one.todo.empty() && one.todo != "-")
        {
            output << std::string(27, ' ') << "do: " << one.todo << '\n';
        }
    }
    return wrong == judgements.end();
}

} // namespace tarn_host
