// An RGB picture in memory, with the few drawing steps that a contact sheet needs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace tarn_host
{

struct Rgb
{
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    friend bool operator==(const Rgb &, const Rgb &) = default;
};

// Drawing outside the picture is cut off. Confined.
class Picture
{
  public:
    Picture(std::size_t pictureWidth, std::size_t pictureHeight, Rgb background);

    std::size_t Width() const noexcept;
    std::size_t Height() const noexcept;
    Rgb At(std::size_t x, std::size_t y) const;

    void Set(std::size_t x, std::size_t y, Rgb colour) noexcept;
    void Fill(std::size_t x, std::size_t y, std::size_t fillWidth, std::size_t fillHeight, Rgb colour) noexcept;
    // One line of text with its upper left corner at x, y; `scale` is whole pixels per dot of the font.
    void Write(std::size_t x, std::size_t y, const std::string &text, std::size_t scale, Rgb colour);
    static std::size_t TextWidth(const std::string &text, std::size_t scale);

    // Throws HostError when the file cannot be written completely.
    void SavePng(const std::filesystem::path &path) const;

  private:
    std::size_t width;
    std::size_t height;
    std::vector<Rgb> pixels;
};

} // namespace tarn_host
