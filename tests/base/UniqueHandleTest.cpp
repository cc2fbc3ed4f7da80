#include "base/UniqueHandle.h"

#include "tests/support/Expect.h"

namespace
{

using user_space_frameworks::UniqueHandle;

bool IsOpen(HANDLE handle)
{
    DWORD flags = 0;
    return GetHandleInformation(handle, &flags) != FALSE;
}

TEST(UniqueHandleTest, ClosesWhatItOwnsAndHandsOver)
{
    const HANDLE first = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const HANDLE second = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    {
        UniqueHandle source(first);
        source.Reset(second);
        EXPECT_FALSE(IsOpen(first));
        source.Reset(second);
        UniqueHandle target;
        target = std::move(source);
        EXPECT_EQ(second, target.Get());
        target.Reset(target.Detach());
        EXPECT_TRUE(IsOpen(second));
    }
    EXPECT_FALSE(IsOpen(second));
    EXPECT_FALSE(UniqueHandle(INVALID_HANDLE_VALUE));
}

} // namespace
