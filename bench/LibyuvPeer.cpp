// The same work in libyuv calls.
#include "bench/Task.h"

#include <libyuv/planar_functions.h>
#include <libyuv/scale.h>

namespace libyuv
{
// Exported by the library, but declared in a header that Debian does not install beside the C interface.
void Convert16To8Plane(const uint16_t *src_y, int src_stride_y, uint8_t *dst_y, int dst_stride_y, int scale, int width,
                       int height);
} // namespace libyuv

namespace tarn_bench
{
void AddLibyuv(const Task &task, std::vector<Contender> &contenders)
{
    const int inputWidth = static_cast<int>(task.inputWidth);
    const int inputHeight = static_cast<int>(task.inputHeight);
    const int width = static_cast<int>(task.outputWidth);
    const int height = static_cast<int>(task.outputHeight);
    if (task.kind == Kind::TenToEight)
    {
        contenders.push_back({"libyuv", [=](const Slot &s) {
                                  constexpr int kQuarter = 16384; // of 65536
                                  libyuv::Convert16To8Plane(reinterpret_cast<const std::uint16_t *>(s.input), width,
                                                            s.output, width, kQuarter, width, height);
                              }});
    }
    else if (task.kind == Kind::PlaneCopy || task.kind == Kind::Crop)
    {
        const int left = (inputWidth - width) / 2;
        const int top = (inputHeight - height) / 2;
        contenders.push_back({"libyuv", [=](const Slot &s) {
                                  libyuv::CopyPlane(s.input + 2 * (top * inputWidth + left), 2 * inputWidth, s.output,
                                                    2 * width, 2 * width, height);
                              }});
    }
    else if (task.kind == Kind::Resize)
    {
        contenders.push_back({"libyuv", [=](const Slot &s) {
                                  libyuv::ScalePlane_16(reinterpret_cast<const std::uint16_t *>(s.input), inputWidth,
                                                        inputWidth, inputHeight,
                                                        reinterpret_cast<std::uint16_t *>(s.output), width, width,
                                                        height, libyuv::kFilterBilinear);
                              }});
    }
}
} // namespace tarn_bench
