// The sse4.1 table. Built with that instruction set: see Rows.h for what must not be used here.
#include "kernels/KernelTable.h"

#include "kernels/SimdSse41.h"

#include "kernels/CopyVector.h"
#include "kernels/MedianCropVector.h"
#include "kernels/PointwiseVector.h"
#include "kernels/ResizeVector.h"
#include "kernels/SharpenVector.h"

namespace mft_kernels
{
const KernelTable kSse41Kernels = {"sse4.1",
                                   TenToEightVector<Sse41>,
                                   ConfidenceVector<Sse41>,
                                   ClampAboveVector<Sse41>,
                                   CopyRowsVector<Sse41>,
                                   MoveBytesVector<Sse41>,
                                   MedianCropVector<Sse41>,
                                   ResizeVector<Sse41>,
                                   SharpenVector<Sse41>};
} // namespace mft_kernels
