#include "tools/names/ResultNames.h"

#include <gtest/gtest.h>

namespace
{

TEST(ResultNamesTest, NamesResultsWrappedErrorsAndBareNumbers)
{
    const struct
    {
        std::uint32_t result;
        const char *text;
    } cases[] = {
        {0, "S_OK (0x00000000)"},
        {1, "S_FALSE (0x00000001)"},
        {0x8000FFFF, "E_UNEXPECTED (0x8000FFFF)"},
        {0xC00D3E85, "MF_E_SHUTDOWN (0xC00D3E85)"},
        {0x80070057, "E_INVALIDARG (0x80070057)"},
        {0x80070001, "HRESULT_FROM_WIN32(ERROR_INVALID_FUNCTION) (0x80070001)"},
        {0x80070492, "HRESULT_FROM_WIN32(ERROR_SET_NOT_FOUND) (0x80070492)"},
        {0x00000492, "ERROR_SET_NOT_FOUND (0x00000492)"},
        {0xC0000374, "STATUS_HEAP_CORRUPTION (0xC0000374)"},
        {0x80070000, "0x80070000"},
        {0x8004ABCD, "0x8004ABCD"},
        {0xFFFFFFFF, "0xFFFFFFFF"},
    };
    for (const auto &[result, text] : cases)
    {
        EXPECT_EQ(text, tarn_host::ResultText(result));
    }
}

} // namespace
