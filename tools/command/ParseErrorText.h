// One line about a command line that cannot be parsed.
#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace tarn_host
{

// The parser lists words that nobody knows in reverse order.
inline std::string ParseErrorText(const CLI::App &app, const CLI::ParseError &error)
{
    if (dynamic_cast<const CLI::ExtrasError *>(&error) != nullptr)
    {
        return "unknown: " + CLI::detail::join(app.remaining(true), " ");
    }
    const std::string text = error.what();
    return text.substr(0, text.find('\n'));
}

} // namespace tarn_host
