// Stands in for the platform's event tracing, which under Wine neither enables a provider nor records an event.
#pragma once

#include "platform/EventTracing.h"

#include "trace/Trace.h"
#include "trace/TraceChannels.h"
#include "trace/Tracing.h"
#include "tests/support/Expect.h"

namespace tarn_test
{

struct WrittenMessage
{
    std::uint64_t logger;
    ULONG flags;
    GUID messageClass;
    USHORT number;
    std::vector<std::string> arguments; // raw bytes
};

struct WrittenEvent
{
    EVENT_DESCRIPTOR descriptor;
    bool hasActivity;
    GUID activity;
    std::vector<std::string> data; // raw bytes of each descriptor
    std::vector<ULONG> types;
};

// What the fake platform was told and what it answers. One per process.
struct FakeTracePlatform
{
    static FakeTracePlatform &Instance();
    void Reset();

    // As a controller would: through the callbacks given at registration.
    void EnableClassic(std::uint64_t logger, UCHAR level, ULONG flags);
    void DisableClassic();
    void EnableStructured(ULONG isEnabled, UCHAR level);

    ULONG registerResult = ERROR_SUCCESS; // of both registrations
    ULONG traitsResult = ERROR_SUCCESS;

    WMIDPREQUEST classicCallback = nullptr; // null while not registered
    GUID classicControl{};
    GUID classicMessageClass{};
    PENABLECALLBACK structuredCallback = nullptr; // null while not registered
    GUID structuredProvider{};
    std::string structuredTraits;
    std::uint64_t sessionLogger = 0;
    UCHAR sessionLevel = 0;
    ULONG sessionFlags = 0;
    std::vector<WrittenMessage> messages;
    std::vector<WrittenEvent> events;
    // The module's own record, which comes before the first of them.
    std::vector<WrittenMessage> moduleMessages;
    std::vector<WrittenEvent> moduleEvents;
};

// Tracing registered with the fake platform, and nothing left of it.
class TracePlatformTest : public testing::Test
{
  protected:
    void SetUp() override
    {
        platform.Reset();
        mft_utils::InitializeTracing();
        ASSERT_NE(nullptr, platform.classicCallback);
        ASSERT_NE(nullptr, platform.structuredCallback);
    }
    void TearDown() override
    {
        mft_utils::ShutdownTracing();
        mft_utils::ShutdownTracing();
        EXPECT_EQ(nullptr, platform.classicCallback);
        EXPECT_EQ(nullptr, platform.structuredCallback);
        EXPECT_FALSE(mft_utils::TraceEnabled(mft_utils::TraceLevel::Error));
        EXPECT_FALSE(mft_utils::TraceLoggingEnabled(mft_utils::TraceLevel::Error));
    }

    FakeTracePlatform &platform = FakeTracePlatform::Instance();
};

} // namespace tarn_test
