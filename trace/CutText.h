// Texts that are longer than a trace can hold.
#pragma once

#include <array>
#include <cstddef>

namespace mft_utils
{

// Length of the text, at most `limit`; a cut does not fall inside a UTF-8 character.
std::size_t CutLength(const char *text, std::size_t limit) noexcept;

// Gives texts of at most kMaxBytes with their NUL. Holds one cut copy: a record has at most one text that can grow; a
// second one becomes "...". Confined.
class TextCutter
{
  public:
    static constexpr std::size_t kMaxBytes = 1024;

    struct Piece
    {
        const char *text;
        std::size_t size; // with the NUL
    };

    // The text itself where it fits.
    Piece Fit(const char *text) noexcept;

  private:
    std::array<char, kMaxBytes> cut{};
    bool used = false;
};

} // namespace mft_utils
