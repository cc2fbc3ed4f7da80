// The public header alone, before any other, as an application in C++ sees it.
#include "tarn/tarn_dmft.h"

#include "tarn/tarn_formats.h"

#include <cstddef>
#include <cstring>

#include <gtest/gtest.h>

extern "C" const GUID *TarnSetAsSeenFromC(void);

static_assert(offsetof(KSPROPERTY_TARN_HW_COMMAND, bufferLength) == 4);
static_assert(offsetof(KSPROPERTY_TARN_HW_COMMAND, param4) == 20);

TEST(PublicHeaderTest, BothLanguagesSeeTheSameBytes)
{
    const unsigned char expected[] = {0x55, 0xB6, 0x4A, 0xF8, 0x31, 0x89, 0xBD, 0x42,
                                      0x8C, 0x04, 0x8A, 0xE2, 0x88, 0x14, 0x54, 0xFE};
    EXPECT_EQ(0, std::memcmp(expected, &KSPROPERTYSETID_TARN_DMFT_CONTROL, sizeof(GUID)));
    EXPECT_EQ(0, std::memcmp(expected, TarnSetAsSeenFromC(), sizeof(GUID)));
    const auto fourCc = [](const GUID &guid) { return std::string(reinterpret_cast<const char *>(&guid), 4); };
    EXPECT_EQ("INVZINZIINZCPAIRIV40RW16", fourCc(CUSTOM_GUID_KELP_Z) + fourCc(CUSTOM_GUID_KELP_ZI) +
                                              fourCc(CUSTOM_GUID_KELP_ZC) + fourCc(CUSTOM_GUID_KELP_FACE_LOGIN) +
                                              fourCc(CUSTOM_GUID_KELP_IV40) + fourCc(CUSTOM_GUID_INV_RAW16));
}
