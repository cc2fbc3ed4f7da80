#include "tools/diagnosis/TraceSummary.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iostream>

TEST(TraceSummaryTest, Try)
{
    std::ifstream file(std::getenv("TRY"), std::ios::binary);
    tarn_host::TraceSummary summary;
    summary.Read(file);
    summary.Write(std::cout);
}
