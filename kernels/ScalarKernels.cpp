#include "kernels/Scalar.h"

namespace mft_kernels
{
const KernelTable kScalarKernels = {"scalar",         TenToEightScalar, ConfidenceScalar,
                                    ClampAboveScalar, CopyRowsScalar,   MoveBytesScalar,
                                    MedianCropScalar, ResizeScalar,     SharpenScalar};

const std::uint32_t kEveryLane = 0xFFFFFFFF;
} // namespace mft_kernels
