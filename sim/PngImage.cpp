#include "sim/PngImage.h"

#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>

#define STBI_NO_STDIO
#include <stb_image.h>

namespace tarn_sim
{

namespace
{
[[noreturn]] void Fail(const std::filesystem::path &file, const std::string &reason)
{
    throw std::runtime_error("cannot read picture " + file.string() + ": " + reason);
}

std::vector<unsigned char> ReadFile(const std::filesystem::path &file)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
    {
        Fail(file, "the file does not open");
    }
    std::vector<unsigned char> bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
    {
        Fail(file, "the file is too large");
    }
    return bytes;
}

struct StbFree
{
    void operator()(void *pixels) const noexcept
    {
        stbi_image_free(pixels);
    }
};
} // namespace

GreyImage ReadGreyPng(const std::filesystem::path &file)
{
    const auto bytes = ReadFile(file);
    const int size = static_cast<int>(bytes.size());
    int width = 0;
    int height = 0;
    int channels = 0;
    if (stbi_info_from_memory(bytes.data(), size, &width, &height, &channels) == 0)
    {
        Fail(file, "not a PNG picture");
    }
    if (channels != 1)
    {
        Fail(file, "not a single-channel picture");
    }

    GreyImage image;
    image.width = static_cast<std::uint32_t>(width);
    image.height = static_cast<std::uint32_t>(height);
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    if (stbi_is_16_bit_from_memory(bytes.data(), size) != 0)
    {
        const std::unique_ptr<stbi_us, StbFree> pixels(
            stbi_load_16_from_memory(bytes.data(), size, &width, &height, &channels, 1));
        if (!pixels)
        {
            Fail(file, "the picture data are damaged");
        }
        image.bits = 16;
        image.pixels.assign(pixels.get(), pixels.get() + count);
    }
    else
    {
        const std::unique_ptr<stbi_uc, StbFree> pixels(
            stbi_load_from_memory(bytes.data(), size, &width, &height, &channels, 1));
        if (!pixels)
        {
            Fail(file, "the picture data are damaged");
        }
        image.bits = 8;
        image.pixels.assign(pixels.get(), pixels.get() + count);
    }
    return image;
}

} // namespace tarn_sim
