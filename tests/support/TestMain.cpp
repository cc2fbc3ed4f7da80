// Every test ends with no object of ours alive and all heaps valid.

#include "tests/support/Expect.h"
#include "base/Object.h"

namespace
{

bool AllHeapsAreValid()
{
    std::array<HANDLE, 64> heaps{};
    const DWORD count = GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    for (DWORD i = 0; i < count && i < heaps.size(); ++i)
    {
        if (HeapValidate(heaps[i], 0, nullptr) == FALSE)
        {
            return false;
        }
    }
    return true;
}

class NothingLeft : public testing::EmptyTestEventListener
{
  private:
    void OnTestStart(const testing::TestInfo &) override { before = user_space_frameworks::Object::LiveCount(); }
    void OnTestEnd(const testing::TestInfo &) override
    {
        // The platform lets go of a work item's references a moment after the item has run.
        EXPECT_TRUE(tarn_test::WaitUntil([&] { return user_space_frameworks::Object::LiveCount() == before; }))
            << "objects alive: " << user_space_frameworks::Object::LiveCount() << ", before the test: " << before;
        EXPECT_TRUE(AllHeapsAreValid());
    }

    std::size_t before = 0;
};

class Platform : public testing::Environment
{
  private:
    void SetUp() override
    {
        ASSERT_HR(S_OK, CoInitializeEx(nullptr, COINIT_MULTITHREADED));
        ASSERT_HR(S_OK, MFStartup(MF_VERSION, MFSTARTUP_FULL));
    }
    void TearDown() override
    {
        MFShutdown();
        CoUninitialize();
    }
};

} // namespace

int main(int argc, char **argv)
{
    testing::InitGoogleTest(&argc, argv);
    testing::AddGlobalTestEnvironment(new Platform);
    testing::UnitTest::GetInstance()->listeners().Append(new NothingLeft);
    return RUN_ALL_TESTS();
}
