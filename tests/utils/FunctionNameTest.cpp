#include "utils/FunctionName.h"

#include <gtest/gtest.h>

#include <source_location>

namespace
{

using mft_utils::QualifiedFunctionName;

TEST(FunctionNameTest, KeepsOnlyTheQualifiedName)
{
    const struct
    {
        const char *pretty;
        const char *name;
    } cases[] = {
        {"virtual HRESULT ns::Class::Method(int)::<lambda()>", "ns::Class::Method"},
        {"virtual HRESULT mft_core::DeviceMft::ProcessInput(DWORD, IMFSample*, DWORD)",
         "mft_core::DeviceMft::ProcessInput"},
        {"ns::Class::Class(const std::string&)", "ns::Class::Class"},
        {"virtual ns::Class::~Class()", "ns::Class::~Class"},
        {"std::map<int, std::pair<int, int> > ns::Make(int)", "ns::Make"},
        {"HRESULT ns::Dispatcher<T>::Run(T) [with T = ns::Handler<int (*)()>]", "ns::Dispatcher<T>::Run"},
        {"bool ns::Less::operator()(int, int) const", "ns::Less::operator()"},
        {"const char* ns::Name()", "ns::Name"},
        {"char &(anonymous namespace)::Element(int)", "(anonymous namespace)::Element"},
        {"void {anonymous}::Run()", "{anonymous}::Run"},
        {"int main(int, char**)", "main"},
        {"DllGetClassObject", "DllGetClassObject"},
        {"", ""},
    };

    for (const auto &entry : cases)
    {
        EXPECT_EQ(entry.name, QualifiedFunctionName(entry.pretty)) << entry.pretty;
    }
    EXPECT_EQ("", QualifiedFunctionName(nullptr));
}

TEST(FunctionNameTest, UnderstandsThisCompiler)
{
    const auto inLambda = [] { return std::source_location::current().function_name(); }();

    EXPECT_TRUE(QualifiedFunctionName(inLambda).ends_with("FunctionNameTest_UnderstandsThisCompiler_Test::TestBody"))
        << inLambda;
}

} // namespace
