// The avx2 table. Built with that instruction set: see Rows.h for what must not be used here.
#include "kernels/KernelTable.h"

#include "kernels/SimdAvx2.h"

#include "kernels/CopyVector.h"
#include "kernels/MedianCropVector.h"
#include "kernels/PointwiseVector.h"
#include "kernels/ResizeVector.h"
#include "kernels/SharpenVector.h"

namespace mft_kernels
{
const KernelTable kAvx2Kernels = {"avx2",
                                  TenToEightVector<Avx2>,
                                  ConfidenceVector<Avx2>,
                                  ClampAboveVector<Avx2>,
                                  CopyRowsVector<Avx2>,
                                  MoveBytesVector<Avx2>,
                                  MedianCropVector<Avx2>,
                                  ResizeVector<Avx2>,
                                  SharpenVector<Avx2>};
} // namespace mft_kernels
