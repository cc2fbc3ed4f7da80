// The public header alone, before any other, as an application in C++ sees it.
#include "tarn/tarn_dmft.h"

#include "tarn/tarn_formats.h"

#include <cstddef>
#include <cstring>

#include <gtest/gtest.h>

extern "C" const GUID *TarnSetAsSeenFromC(void);

static_assert(offsetof(KSPROPERTY_TARN_HW_COMMAND, bufferLength) == 4);
static_assert(offsetof(KSPROPERTY_TARN_HW_COMMAND, param4) == 20);

// What the camera's firmware knows: host, module and simulated camera all take it from the header.
constexpr bool Is(const GUID &guid, unsigned long first, unsigned short second, unsigned short third,
                  unsigned long long last)
{
    unsigned long long bytes = 0;
    for (const unsigned char each : guid.Data4)
    {
        bytes = bytes << 8 | each;
    }
    return guid.Data1 == first && guid.Data2 == second && guid.Data3 == third && bytes == last;
}
static_assert(Is(CUSTOM_GUID_KELP_Z, 0x5A564E49, 0x2D90, 0x4A58, 0x920B773F1F2C556B));
static_assert(Is(CUSTOM_GUID_KELP_ZI, 0x495A4E49, 0x1A66, 0xA242, 0x9065D01814A8EF8A));
static_assert(Is(CUSTOM_GUID_KELP_ZC, 0x435A4E49, 0xB602, 0x480F, 0x978CE4E88AE89B89));
static_assert(Is(CUSTOM_GUID_KELP_FACE_LOGIN, 0x52494150, 0x8536, 0x4841, 0xB6BF8FC6FFB083A8));
static_assert(Is(KSPROPERTYSETID_TARN_DEPTH_CONTROL, 0xA55751A1, 0xF3C5, 0x4A5E, 0x8D5A6854B8FA2716));
static_assert(Is(KSPROPERTYSETID_TARN_COLOR_CONTROL, 0xB8EC416E, 0xA3AC, 0x4580, 0x8D5C0BEE1597E43D));
static_assert(HWmonitor_GetDeviceInfo == 0x3B && HWmonitor_SetAutoRange == 0xA6 && HWmonitor_HDRSet == 0xD2 &&
              HWmonitor_HDRConfigSet == 0xD4);
static_assert(static_cast<int>(KSPROPERTY_XU_TARN_DEPTH::COMMAND) == 7 &&
              static_cast<int>(KSPROPERTY_XU_TARN_COLOR::EXPOSURE_GRANULARITY) == 4);

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
