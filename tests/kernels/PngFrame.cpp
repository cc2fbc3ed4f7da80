#include "tests/kernels/PngFrame.h"

#define STB_IMAGE_IMPLEMENTATION
#define STBI_ONLY_PNG
#include <stb/stb_image.h>

namespace mft_kernels
{
bool ReadPng(const std::string &path, PngFrame &frame)
{
    int width = 0;
    int height = 0;
    int channels = 0;
    stbi_us *pixels = stbi_load_16(path.c_str(), &width, &height, &channels, 1);
    if (pixels == nullptr)
    {
        return false;
    }
    frame.width = static_cast<std::size_t>(width);
    frame.height = static_cast<std::size_t>(height);
    frame.pixels.assign(pixels, pixels + frame.width * frame.height);
    stbi_image_free(pixels);
    return true;
}
} // namespace mft_kernels
