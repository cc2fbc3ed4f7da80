// An option whose value is one of a few words.
#pragma once

#include <CLI/CLI.hpp>

#include <map>
#include <string>

namespace tarn_host
{

// Another word is a usage error that lists the words.
template <class Value>
void AddChoice(CLI::App &app, const std::string &name, Value &value, const std::map<std::string, Value> &choices,
               const std::string &help)
{
    std::string words;
    for (const auto &choice : choices)
    {
        words += (words.empty() ? "" : "|") + choice.first;
    }
    const auto choose = [&value, choices, name, words](const std::string &word) {
        const auto found = choices.find(word);
        if (found == choices.end())
        {
            throw CLI::ValidationError(name, "'" + word + "' is not one of " + words);
        }
        value = found->second;
    };
    app.add_option_function<std::string>(name, choose, help)->type_name(words);
}

} // namespace tarn_host
