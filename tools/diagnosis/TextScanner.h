// Steps through a text that may be damaged: nothing is read past its end, and what is not there is said.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <system_error>

namespace tarn_host
{

// Borrows the text. Confined.
class TextScanner
{
  public:
    explicit TextScanner(std::string_view scanned) noexcept : text(scanned) {}

    std::string_view Rest() const noexcept
    {
        return text;
    }
    bool AtEnd() const noexcept
    {
        return text.empty();
    }
    // Takes it if it is next.
    bool Take(std::string_view expected) noexcept
    {
        const bool isNext = text.starts_with(expected);
        text.remove_prefix(isNext ? expected.size() : 0);
        return isNext;
    }
    void SkipBlanks() noexcept
    {
        const std::size_t end = text.find_first_not_of(" \t\r\n");
        text.remove_prefix(end == std::string_view::npos ? text.size() : end);
    }
    // Up to a mark, which is taken too; false, and nothing taken, when there is none.
    bool TakeUntil(std::string_view mark, std::string_view &taken) noexcept
    {
        const std::size_t end = text.find(mark);
        if (end == std::string_view::npos)
        {
            return false;
        }
        taken = text.substr(0, end);
        text.remove_prefix(end + mark.size());
        return true;
    }
    // Up to a blank or the end.
    std::string_view TakeWord() noexcept
    {
        const std::string_view word = text.substr(0, text.find_first_of(" \t\r\n"));
        text.remove_prefix(word.size());
        return word;
    }
    // False, and nothing taken, when no number that fits is next.
    template <class Number>
    bool TakeNumber(Number &number, int base = 10) noexcept
    {
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
        if (error != std::errc{})
        {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(end - text.data()));
        return true;
    }

  private:
    std::string_view text;
};

} // namespace tarn_host
