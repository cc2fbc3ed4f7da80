#include "media/BufferPool.h"

#include "tests/support/Expect.h"

namespace
{

using mft_utils::BufferPool;

ComPtr<IMFMediaBuffer> Taken(BufferPool &pool, DWORD length)
{
    ComPtr<IMFMediaBuffer> buffer;
    EXPECT_HR(S_OK, pool.Take(length, &buffer));
    DWORD capacity = 0;
    BYTE *data = nullptr;
    EXPECT_HR(S_OK, buffer->Lock(&data, &capacity, nullptr));
    EXPECT_EQ(length, capacity);
    EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(data) % 64);
    EXPECT_HR(S_OK, buffer->Unlock());
    return buffer;
}

TEST(BufferPoolTest, ABufferComesAgainOnlyWhenNobodyElseHoldsIt)
{
    BufferPool pool;
    auto first = Taken(pool, 1000);
    IMFMediaBuffer *const address = first.Get();
    const auto second = Taken(pool, 1000);
    EXPECT_NE(address, second.Get());

    // A consumer's sample holds it, and then a buffer without its sample.
    ComPtr<IMFSample> sample;
    ASSERT_HR(S_OK, MFCreateSample(&sample));
    ASSERT_HR(S_OK, sample->AddBuffer(first.Get()));
    first.Reset();
    EXPECT_NE(address, Taken(pool, 1000).Get());
    ASSERT_HR(S_OK, sample->GetBufferByIndex(0, &first));
    sample.Reset();
    EXPECT_NE(address, Taken(pool, 1000).Get());
    first.Reset();
    EXPECT_NE(address, Taken(pool, 999).Get());
    const auto third = Taken(pool, 1000); // the one that was used last comes first
    EXPECT_EQ(address, Taken(pool, 1000).Get());
}

TEST(BufferPoolTest, HoldsNoMoreThanItMay)
{
    BufferPool pool;
    std::vector<ComPtr<IMFMediaBuffer>> held;
    for (std::size_t i = 0; i < BufferPool::kMostBuffers + 1; ++i)
    {
        held.push_back(Taken(pool, 100));
    }
    EXPECT_REFS(held[0], 1);
    EXPECT_REFS(held[1], 2);
    pool.Forget();
    EXPECT_REFS(held[1], 1);
    EXPECT_REFS(held.back(), 1);
}

} // namespace
