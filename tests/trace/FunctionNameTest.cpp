#include "trace/FunctionName.h"

#include <gtest/gtest.h>

#include <source_location>

namespace
{

TEST(FunctionNameTest, KeepsOnlyTheQualifiedName)
{
    using mft_utils::QualifiedFunctionName;
    const struct
    {
        const char *pretty;
        const char *name;
    } cases[] = {
        {"virtual HRESULT ns::Class::Method(int)::<lambda()>", "ns::Class::Method"},
        {"virtual ns::Class::~Class()", "ns::Class::~Class"},
        {"std::map<int, std::pair<int, int> > ns::Make(int)", "ns::Make"},
        {"HRESULT ns::Dispatcher<T>::Run(T) [with T = ns::Handler<int (*)()>]", "ns::Dispatcher<T>::Run"},
        {"bool ns::Less::operator()(int, int) const", "ns::Less::operator()"},
        {"const char* ns::Name()", "ns::Name"},
        {"char &(anonymous namespace)::Element(int)", "(anonymous namespace)::Element"},
        {"void {anonymous}::Run()", "{anonymous}::Run"},
        {"DllGetClassObject", "DllGetClassObject"},
        {"", ""},
        {nullptr, ""},
    };
    for (const auto &entry : cases)
    {
        EXPECT_EQ(entry.name, QualifiedFunctionName(entry.pretty)) << entry.name;
    }
    const auto inLambda = [] { return std::source_location::current().function_name(); }();
    EXPECT_TRUE(QualifiedFunctionName(inLambda).ends_with("KeepsOnlyTheQualifiedName_Test::TestBody")) << inLambda;
}

} // namespace
