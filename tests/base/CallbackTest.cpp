#include "base/Callback.h"

#include "tests/support/Expect.h"
#include "base/HResultFromWin32.h"

namespace
{

struct Listener
{
    long OnConfig(bool enable) { return enable ? 7 : 0; }
};

TEST(CallbackTest, CallsTheBoundMemberAndThrowsWithoutOne)
{
    using ConfigCallback = mft_utils::Callback<Listener, bool, long>;
    Listener listener;
    EXPECT_EQ(7, ConfigCallback(&listener, &Listener::OnConfig)(true));
    for (const ConfigCallback &callback :
         {ConfigCallback(), ConfigCallback(nullptr, &Listener::OnConfig), ConfigCallback(&listener, nullptr)})
    {
        EXPECT_FALSE(callback);
        EXPECT_EQ("no callback function or instance",
                  tarn_test::ThrownText<std::runtime_error>([&] { callback(true); }));
    }
}

TEST(HResultFromWin32Test, FollowsThePlatformsRule)
{
    using mft_utils::HResultFromWin32;
    EXPECT_EQ(S_OK, HResultFromWin32(ERROR_SUCCESS));
    EXPECT_EQ(static_cast<HRESULT>(0x80070002), HResultFromWin32(0xF80002)); // only the low half is a code
    EXPECT_EQ(E_FAIL, HResultFromWin32(static_cast<DWORD>(E_FAIL)));
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(E_FAIL, mft_utils::HResultFromLastError());
}

} // namespace
