#include "utils/UniqueHandle.h"

#include <gtest/gtest.h>

#include <utility>

namespace
{

using user_space_frameworks::UniqueHandle;

HANDLE MakeEvent()
{
    return CreateEventW(nullptr, TRUE, FALSE, nullptr);
}

bool IsOpen(HANDLE handle)
{
    DWORD flags = 0;
    return GetHandleInformation(handle, &flags) != FALSE;
}

TEST(UniqueHandleTest, ClosesWhatItOwns)
{
    const HANDLE first = MakeEvent();
    const HANDLE second = MakeEvent();
    {
        UniqueHandle handle(first);
        EXPECT_TRUE(handle);
        handle.Reset(second);
        EXPECT_FALSE(IsOpen(first));
        handle.Reset(second);
        EXPECT_TRUE(IsOpen(second));
    }
    EXPECT_FALSE(IsOpen(second));
}

TEST(UniqueHandleTest, MoveAndDetachHandOver)
{
    const HANDLE event = MakeEvent();
    UniqueHandle source(event);
    UniqueHandle target;
    target = std::move(source);
    EXPECT_EQ(event, target.Get());

    const HANDLE detached = target.Detach();
    EXPECT_FALSE(target);
    EXPECT_TRUE(IsOpen(detached));
    CloseHandle(detached);
}

TEST(UniqueHandleTest, PseudoHandleIsNeitherUsableNorClosed)
{
    UniqueHandle handle(INVALID_HANDLE_VALUE);
    EXPECT_FALSE(handle);
    EXPECT_FALSE(UniqueHandle());
}

} // namespace
