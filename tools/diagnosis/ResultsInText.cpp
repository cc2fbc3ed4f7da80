#include "tools/diagnosis/ResultsInText.h"

#include "tools/diagnosis/TextScanner.h"

namespace tarn_host
{

std::optional<std::uint32_t> ResultOf(std::string_view text)
{
    std::uint32_t result = 0;
    TextScanner scanner(text);
    const bool isHexadecimal = scanner.Take("0x") || scanner.Take("0X");
    return scanner.TakeNumber(result, isHexadecimal ? 16 : 10) ? std::optional(result) : std::nullopt;
}

std::string WithResultNames(std::string_view text)
{
    std::string named;
    std::string_view before;
    TextScanner scanner(text);
    while (scanner.TakeUntil("hr 0x", before))
    {
        named.append(before).append("hr ");
        std::uint32_t result = 0;
        named += scanner.TakeNumber(result, 16) ? ResultText(result) : "0x";
    }
    return named.append(scanner.Rest());
}

} // namespace tarn_host
