#include "tests/support/OwnWork.h"

namespace tarn_test
{

namespace
{
thread_local int depth = 0;
}

OwnWork::OwnWork()
{
    ++depth;
}

OwnWork::~OwnWork()
{
    --depth;
}

bool OwnWork::IsUnderWay()
{
    return depth != 0;
}

} // namespace tarn_test
