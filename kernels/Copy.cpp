#include "kernels/Copy.h"

#include <cstring>

#include "kernels/Rows.h"
#include "kernels/Scalar.h"

namespace mft_kernels
{
void CopyRowsScalar(const std::uint8_t *input, std::ptrdiff_t inputStride, std::uint8_t *output,
                    std::ptrdiff_t outputStride, std::size_t rowSize, std::size_t height)
{
    if (rowSize == 0)
    {
        return;
    }
    for (std::size_t y = 0; y < height; ++y)
    {
        std::memcpy(RowAt(output, outputStride, y), RowAt(input, inputStride, y), rowSize);
    }
}

void MoveBytesScalar(std::uint8_t *output, const std::uint8_t *input, std::size_t size)
{
    if (size != 0)
    {
        std::memmove(output, input, size);
    }
}

void CopyRectangle(const std::uint16_t *input, std::ptrdiff_t inputStride, std::uint16_t *output,
                   std::ptrdiff_t outputStride, std::size_t width, std::size_t height)
{
    std::size_t rowSize = width * sizeof(std::uint16_t);
    if (inputStride == outputStride && inputStride == static_cast<std::ptrdiff_t>(rowSize))
    {
        rowSize *= height;
        height = 1;
    }
    ActiveKernels().copyRows(reinterpret_cast<const std::uint8_t *>(input), inputStride,
                             reinterpret_cast<std::uint8_t *>(output), outputStride, rowSize, height);
}

void CopyPlane(void *output, const void *input, std::size_t size)
{
    const auto stride = static_cast<std::ptrdiff_t>(size);
    ActiveKernels().copyRows(static_cast<const std::uint8_t *>(input), stride, static_cast<std::uint8_t *>(output),
                             stride, size, 1);
}

void MovePlane(void *output, const void *input, std::size_t size)
{
    ActiveKernels().moveBytes(static_cast<std::uint8_t *>(output), static_cast<const std::uint8_t *>(input), size);
}
} // namespace mft_kernels
