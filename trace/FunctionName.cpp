#include "trace/FunctionName.h"

#include <cstddef>

namespace mft_utils
{

namespace
{

constexpr std::string_view kCallOperator = "operator()";
constexpr std::string_view kAnonymous = "(anonymous namespace)";

bool EndsInWord(std::string_view text, std::string_view word) noexcept
{
    return text.ends_with(word) && (text.size() == word.size() || text[text.size() - word.size() - 1] == ':' ||
                                    text[text.size() - word.size() - 1] == ' ');
}

// Length of what stands before the parameter list.
std::size_t EndOfName(std::string_view text) noexcept
{
    std::size_t templateDepth = 0;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const char character = text[i];
        if (character == '<')
        {
            ++templateDepth;
        }
        else if (character == '>' && templateDepth > 0)
        {
            --templateDepth;
        }
        else if (character == '(' && text.substr(i).starts_with(kAnonymous))
        {
            i += kAnonymous.size() - 1;
        }
        else if (character == '(' && templateDepth == 0)
        {
            if (!EndsInWord(text.substr(0, i), "operator"))
            {
                return i;
            }
            i += kCallOperator.size() - std::string_view("operator").size() - 1;
        }
    }
    return text.size();
}

} // namespace

std::string_view QualifiedFunctionName(const char *prettyFunction) noexcept
{
    if (prettyFunction == nullptr)
    {
        return {};
    }
    const std::string_view text(prettyFunction);
    const std::size_t end = EndOfName(text);
    // Return type and specifiers end at the last blank outside template arguments and outside "(anonymous namespace)".
    std::size_t begin = 0;
    std::size_t templateDepth = 0;
    for (std::size_t i = 0; i < end; ++i)
    {
        if (text[i] == '<')
        {
            ++templateDepth;
        }
        else if (text[i] == '>' && templateDepth > 0)
        {
            --templateDepth;
        }
        else if (text.substr(i).starts_with(kAnonymous))
        {
            i += kAnonymous.size() - 1;
        }
        else if (text[i] == ' ' && templateDepth == 0 && !EndsInWord(text.substr(0, i), "operator"))
        {
            begin = i + 1;
        }
    }
    while (begin < end && (text[begin] == '*' || text[begin] == '&'))
    {
        ++begin;
    }
    return text.substr(begin, end - begin);
}

} // namespace mft_utils
