#include "utils/Callback.h"

#include <windows.h>

#include <gtest/gtest.h>

#include "utils/HResultFromWin32.h"

namespace
{

struct Listener
{
    long OnConfig(bool enable)
    {
        enabled = enable;
        return 7;
    }

    bool enabled = false;
};

using ConfigCallback = mft_utils::Callback<Listener, bool, long>;

TEST(CallbackTest, CallsTheBoundMember)
{
    Listener listener;
    const ConfigCallback callback(&listener, &Listener::OnConfig);

    EXPECT_EQ(7, callback(true));
    EXPECT_TRUE(listener.enabled);
}

TEST(CallbackTest, EmptyOneThrowsItsText)
{
    Listener listener;
    const ConfigCallback cases[] = {ConfigCallback(), ConfigCallback(nullptr, &Listener::OnConfig),
                                    ConfigCallback(&listener, nullptr)};
    for (const ConfigCallback &callback : cases)
    {
        EXPECT_FALSE(callback);
        try
        {
            callback(true);
            ADD_FAILURE() << "no exception";
        }
        catch (const std::runtime_error &error)
        {
            EXPECT_STREQ("no callback function or instance", error.what());
        }
    }
}

TEST(HResultFromWin32Test, FollowsThePlatformsRule)
{
    using mft_utils::HResultFromWin32;
    EXPECT_EQ(S_OK, HResultFromWin32(ERROR_SUCCESS));
    EXPECT_EQ(static_cast<HRESULT>(0x8007139F), HResultFromWin32(ERROR_INVALID_STATE));
    EXPECT_EQ(static_cast<HRESULT>(0x80070002), HResultFromWin32(0x10002)); // only the low half is a code
    EXPECT_EQ(E_FAIL, HResultFromWin32(static_cast<DWORD>(E_FAIL)));

    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(E_FAIL, mft_utils::HResultFromLastError());
}

} // namespace
