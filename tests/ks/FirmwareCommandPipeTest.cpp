#include "ks/FirmwareCommandPipe.h"

#include <stdexcept>

#include "tests/ks/FakeFilter.h"

using namespace mft_core;
using namespace tarn_test;
using user_space_frameworks::MakeCom;

namespace
{

constexpr ULONG kControl = 7;

// The camera's end: keeps the last block and answers with its opcode and, as data, its first parameter in every byte.
class FirmwareCommandPipeTest : public testing::Test
{
  protected:
    FirmwareCommandPipeTest()
    {
        filter->answer = [this](const FilterCall &call) {
            if (call.request.Property.Flags == KSPROPERTY_TYPE_SET)
            {
                std::memcpy(block.data(), call.data, block.size());
                return setResult;
            }
            auto *answer = static_cast<BYTE *>(call.data);
            std::memcpy(answer, &block[4], 4);
            answer[0] = static_cast<BYTE>(answer[0] + echoError);
            std::memset(answer + 4, block[8], call.dataLength - 4);
            *call.bytesReturned = answerLength;
            return getResult;
        };
    }
    HRESULT Set(const BYTE *payload = nullptr, ULONG length = 0) { return pipe.Set(1, payload, length, 0, 0, 0, 0); }
    HRESULT Get(BYTE *buffer, ULONG length, ULONG mark) { return pipe.Get(buffer, 59, length, mark, 0, 0, 0); }
    int BlockLength() const { return block[0] | block[1] << 8; }

    ComPtr<FakeFilter> filter = MakeCom<FakeFilter>();
    std::array<BYTE, 1024> block{};
    ULONG answerLength = 1024;
    int echoError = 0;
    HRESULT setResult = S_OK;
    HRESULT getResult = S_OK;
    FirmwareCommandPipe pipe{filter, kTestSet, kControl, "pipe"};
};

} // namespace

TEST_F(FirmwareCommandPipeTest, PayloadLimitsFromBothSides)
{
    const std::vector<BYTE> payload(1001, 0x77);
    EXPECT_HR(S_OK, Set(payload.data(), 1000));
    EXPECT_EQ(1020, BlockLength());
    EXPECT_EQ(0x77, block[1023]);
    EXPECT_HR(S_OK, Set(nullptr, 5000));
    EXPECT_EQ(20, BlockLength());
    EXPECT_HR(S_OK, Set(payload.data(), 0));
    EXPECT_EQ(20, BlockLength());

    filter->Forget();
    EXPECT_EQ("failed to copy data", ThrownText<std::invalid_argument>([&] { Set(payload.data(), 1001); }));
    EXPECT_TRUE(filter->Calls().empty());
    EXPECT_HR(S_OK, Set()); // the lock was let go
}

TEST_F(FirmwareCommandPipeTest, AnswerLimitsFromBothSides)
{
    std::vector<BYTE> buffer(1021, 0xEE);
    EXPECT_HR(S_OK, Get(buffer.data(), 1020, 0x31));
    EXPECT_EQ(20, BlockLength());
    EXPECT_EQ(0x31, buffer[0]);
    EXPECT_EQ(0x31, buffer[1019]);
    EXPECT_EQ(0xEE, buffer[1020]);
    filter->Forget();
    EXPECT_HR(E_INVALIDARG, Get(buffer.data(), 1021, 0));
    EXPECT_HR(E_INVALIDARG, Get(buffer.data(), 0xFFFFFFFF, 0));
    EXPECT_TRUE(filter->Calls().empty());

    answerLength = 20;
    EXPECT_HR(S_OK, Get(buffer.data(), 16, 0x32));
    EXPECT_HR(E_FAIL, Get(buffer.data(), 17, 0x33));
    EXPECT_EQ(0x32, buffer[0]); // nothing of a short answer arrives
    answerLength = 3;
    EXPECT_HR(E_FAIL, Set());
    answerLength = 4;
    EXPECT_HR(S_OK, Set());
    EXPECT_HR(S_OK, Get(nullptr, 0, 0));
    answerLength = 1024;
    EXPECT_HR(E_FAIL, Get(nullptr, 1, 0));
}

TEST_F(FirmwareCommandPipeTest, RefusalsAndFailuresAreReported)
{
    BYTE buffer[4] = {9, 9, 9, 9};
    echoError = 1;
    EXPECT_HR(E_FAIL, Set());
    EXPECT_HR(E_FAIL, Get(buffer, 4, 0x55));
    echoError = 0;
    getResult = E_ACCESSDENIED;
    EXPECT_HR(E_ACCESSDENIED, Set());
    setResult = HRESULT_FROM_WIN32(ERROR_GEN_FAILURE);
    EXPECT_HR(setResult, Get(buffer, 4, 0x55));
    EXPECT_EQ(KSPROPERTY_TYPE_SET, filter->Calls().back().request.Property.Flags); // no read after a failed write
    EXPECT_EQ(9, buffer[0]);
    EXPECT_HR(E_POINTER,
              FirmwareCommandPipe(nullptr, kTestSet, kControl, "unconnected").Set(1, nullptr, 0, 0, 0, 0, 0));
}

TEST_F(FirmwareCommandPipeTest, EveryAnswerBelongsToItsCommandUnderEightThreads)
{
    constexpr int kRounds = 500;
    std::atomic<int> wrong{0};
    OnThreads(8, [&](int thread) {
        const auto number = static_cast<ULONG>(thread + 1);
        for (int round = 0; round < kRounds; ++round)
        {
            BYTE buffer[8] = {};
            const ULONG mark = (number << 4 | static_cast<ULONG>(round & 0xF)) & 0xFF;
            const bool read = (round + thread) % 3 != 0;
            const HRESULT result = read ? pipe.Get(buffer, number, sizeof(buffer), mark, 0, 0, 0)
                                        : pipe.Set(number, buffer, sizeof(buffer), mark, 0, 0, 0);
            wrong += FAILED(result) || (read && (buffer[0] != mark || buffer[7] != mark));
        }
    });
    EXPECT_EQ(0, wrong);
    EXPECT_EQ(8u * kRounds * 2, filter->Calls().size());
}
