// The avx512 table. Built with that instruction set: see Rows.h for what must not be used here.
#include "kernels/KernelTable.h"

#include "kernels/SimdAvx512.h"

#include "kernels/CopyVector.h"
#include "kernels/MedianCropVector.h"
#include "kernels/PointwiseVector.h"
#include "kernels/ResizeVector.h"
#include "kernels/SharpenVector.h"

namespace mft_kernels
{
const KernelTable kAvx512Kernels = {"avx512",
                                    TenToEightVector<Avx512>,
                                    ConfidenceVector<Avx512>,
                                    ClampAboveVector<Avx512>,
                                    CopyRowsVector<Avx512>,
                                    MoveBytesVector<Avx512>,
                                    MedianCropVector<Avx512>,
                                    ResizeVector<Avx512>,
                                    SharpenVector<Avx512>};
} // namespace mft_kernels
