#include "trace/Guard.h"

#include <new>
#include <stdexcept>

#include "TraceLines.h"
#include "base/Checked.h"
#include "base/ComException.h"
#include "tests/support/Expect.h"

using namespace tarn_test;

namespace sample_code
{

HRESULT FailingStep()
{
    return MF_E_INVALIDTYPE;
}

HRESULT Checked(int step, void *theAttr = nullptr)
{
    if (step == 1)
    {
        CHECK_HR(FailingStep());
    }
    if (step == 2)
    {
        CHECK_HR_AS("stream.SetState(state)", FailingStep());
    }
    CHECK_POINTER(theAttr);
    return S_OK;
}

template <class Exception>
HRESULT Throwing(const Exception &exception)
{
    return mft_utils::Guarded([&]() -> HRESULT { throw exception; });
}

HRESULT Entry(HRESULT result)
{
    return mft_utils::EntryPoint("camera", [&] { return result; });
}

} // namespace sample_code

namespace
{

using Texts = std::vector<std::string>;

TEST(CheckTest, LogsFunctionExpressionAndResultAndReturnsIt)
{
    EXPECT_EQ(MF_E_INVALIDTYPE, sample_code::Checked(1)); // nobody listens
    const TraceLines trace;

    EXPECT_EQ(MF_E_INVALIDTYPE, sample_code::Checked(1));
    EXPECT_EQ(MF_E_INVALIDTYPE, sample_code::Checked(2));
    EXPECT_EQ(E_POINTER, sample_code::Checked(3));
    int object = 0;
    EXPECT_EQ(S_OK, sample_code::Checked(3, &object));

    EXPECT_EQ((Texts{"sample_code::Checked: FailingStep() failed, hr 0xC00D36BD",
                     "sample_code::Checked: stream.SetState(state) failed, hr 0xC00D36BD",
                     "sample_code::Checked: theAttr is nullptr, expected valid pointer, hr 0x80004003"}),
              trace.Texts());
}

TEST(GuardTest, TurnsEachExceptionIntoItsResult)
{
    const TraceLines trace;

    EXPECT_EQ(MF_E_NOT_FOUND, sample_code::Throwing(mft_utils::ComException(MF_E_NOT_FOUND, "no pin")));
    EXPECT_EQ(E_OUTOFMEMORY, sample_code::Throwing(std::bad_alloc()));
    EXPECT_EQ(MF_E_INVALIDINDEX, mft_utils::Guarded([] { return mft_utils::At(std::vector<HRESULT>{S_OK}, 1); }));
    EXPECT_EQ(E_FAIL, sample_code::Throwing(std::invalid_argument("unsupported order")));
    EXPECT_EQ(E_FAIL, sample_code::Throwing(42));

    const Texts expected{
        "Caught Com Exception error: no pin, hr 0xC00D36D5", "Bad allocation exception trapped, hr 0x8007000E",
        "Out of range exception trapped: invalid vector<T> subscript, hr 0xC00D36BF",
        "Standard exception trapped: unsupported order, hr 0x80004005", "General exception trapped, hr 0x80004005"};
    const Texts texts = trace.Texts();
    ASSERT_EQ(expected.size(), texts.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
    {
        EXPECT_TRUE(texts[i].ends_with(": " + expected[i])) << texts[i];
    }
    EXPECT_EQ(E_FAIL, sample_code::Throwing(mft_utils::ComException(S_FALSE, "never a success")));
}

TEST(EntryPointTest, FramesTheCallAndLogsItsFailure)
{
    TraceLines trace;

    for (const HRESULT quiet : {S_FALSE, MF_E_NO_EVENTS_AVAILABLE})
    {
        EXPECT_EQ(quiet, sample_code::Entry(quiet));
        EXPECT_EQ((Texts{"sample_code::Entry: ==> camera", "sample_code::Entry: <== camera"}), trace.Texts());
        trace.lines.clear();
    }

    EXPECT_EQ(E_ABORT, sample_code::Entry(E_ABORT));
    EXPECT_EQ((Texts{"sample_code::Entry: ==> camera", "sample_code::Entry: camera failed, hr 0x80004004",
                     "sample_code::Entry: <== camera"}),
              trace.Texts());
}

} // namespace
