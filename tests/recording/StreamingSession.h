// A recording of a depth transform that streams for a while.
#pragma once

#include "tests/recording/RecordingBuilder.h"
#include "tools/names/PipelineNames.h"

namespace tarn_tests
{

constexpr std::int64_t kFrameTicks = 333'333;
constexpr std::uint32_t kCaptureThread = 200;
constexpr std::uint32_t kConsumerThread = 300;

inline ValueBytes TypeOf(const char *subtype, std::uint64_t width, std::uint64_t height, std::uint64_t rate)
{
    using tarn_host::GuidNamed;
    return ValueBytes()
        .Attribute(GuidNamed("MF_MT_SUBTYPE"), GuidNamed(subtype))
        .Attribute(GuidNamed("MF_MT_FRAME_SIZE"), width << 32 | height)
        .Attribute(GuidNamed("MF_MT_FRAME_RATE"), rate << 32 | 1);
}

inline ValueBytes StateOf(std::uint32_t stream, std::uint32_t state, const ValueBytes &type)
{
    return ValueBytes().U32(TARN_VALUE_STREAM, stream).List(TARN_VALUE_MEDIA_TYPE, type).U32(TARN_VALUE_STATE, state);
}

inline ValueBytes SampleOf(std::uint64_t number, std::int64_t time)
{
    return ValueBytes().U64(TARN_VALUE_NUMBER, number).I64(TARN_VALUE_TIME, time).U64(TARN_VALUE_LENGTH, 16);
}

inline std::vector<std::uint8_t> KsRequest(const tarn_host::Guid &set, std::uint32_t id, std::uint32_t flags)
{
    std::vector<std::uint8_t> bytes(set.bytes.begin(), set.bytes.end());
    for (const std::uint32_t word : {id, flags})
    {
        for (int shift = 0; shift < 32; shift += 8)
        {
            bytes.push_back(static_cast<std::uint8_t>(word >> shift));
        }
    }
    return bytes;
}

struct SessionPlan
{
    std::uint64_t frames = 20;
    std::uint64_t lostFrame = 0;           // its sample never comes out; 0 = none
    std::uint64_t hungInput = 0;           // its ProcessInput never returns
    std::uint32_t controlResult = 0;       // of an application's KS call, which the camera answers
    std::uint8_t controlValue = 5;         // that the camera answers
    std::vector<std::uint8_t> pixels = {}; // of each input frame
    bool consumerFirst = false;            // another interleaving of the threads
};

// Start, one KS call that is passed on, frames of INZI 4x2 in and of D16 out, stop.
inline RecordingBuilder StreamingSession(const SessionPlan &plan = {})
{
    using tarn_host::GuidNamed;
    RecordingBuilder builder;
    builder.header.flags = TARN_RECORDING_CLOSED | (plan.pixels.empty() ? 0 : TARN_RECORDING_HOLDS_PICTURES);
    builder.Add(TARN_RECORD_SESSION, 0, ValueBytes().Text(TARN_VALUE_PROCESS_PATH, "C:\\host.exe"));
    builder.Add(TARN_RECORD_TRANSFORM, 1, ValueBytes().Text(TARN_VALUE_NAME, "DepthTransform"));
    builder.Call(TARN_CALL_SET_OUTPUT_STREAM_STATE, StateOf(0, 2, TypeOf("MFVideoFormat_D16", 4, 2, 30)));
    builder.Call(TARN_CALL_SET_INPUT_STREAM_STATE, StateOf(0, 2, TypeOf("CUSTOM_GUID_KELP_ZI", 4, 2, 30)));

    const auto request = KsRequest(GuidNamed("KSPROPERTYSETID_TARN_DEPTH_CONTROL"), 1, 0x10000001);
    const ValueBytes ask = ValueBytes().Bytes(TARN_VALUE_REQUEST, request).U32(TARN_VALUE_DATA_LENGTH, 1);
    const ValueBytes answer = ValueBytes().Bytes(TARN_VALUE_DATA, {plan.controlValue});
    const auto asked = builder.Add(TARN_RECORD_KS_CALL, TARN_KS_PROPERTY, ask);
    const auto passedOn = builder.Add(TARN_RECORD_KS_CALL, TARN_KS_PROPERTY | TARN_KS_TO_CAMERA, ask, asked);
    builder.Add(TARN_RECORD_KS_RETURN, TARN_KS_PROPERTY | TARN_KS_TO_CAMERA, answer, passedOn, plan.controlResult);
    builder.Add(TARN_RECORD_KS_RETURN, TARN_KS_PROPERTY, answer, asked, plan.controlResult);

    std::uint64_t out = 0;
    for (std::uint64_t frame = 1; frame <= plan.frames; ++frame)
    {
        const auto time = static_cast<std::int64_t>(frame) * kFrameTicks;
        builder.clock += kFrameTicks - 5 * builder.stepClock;
        builder.thread = kCaptureThread;
        const ValueBytes sample = ValueBytes().U32(TARN_VALUE_STREAM, 0).List(TARN_VALUE_SAMPLE, SampleOf(frame, time));
        const auto input = builder.Add(TARN_RECORD_CALL, TARN_CALL_PROCESS_INPUT, sample);
        if (!plan.pixels.empty())
        {
            builder.Add(TARN_RECORD_PIXELS, 0,
                        ValueBytes().U32(TARN_VALUE_STREAM, 0).Bytes(TARN_VALUE_PIXELS, plan.pixels), input);
        }
        const auto returnInput = [&] {
            builder.thread = kCaptureThread;
            if (frame != plan.hungInput)
            {
                builder.Add(TARN_RECORD_RETURN, TARN_CALL_PROCESS_INPUT, {}, input);
            }
        };
        if (!plan.consumerFirst)
        {
            returnInput();
        }
        if (frame != plan.lostFrame)
        {
            builder.Add(
                TARN_RECORD_EVENT, 0,
                ValueBytes().U32(TARN_VALUE_EVENT_TYPE, 602).U32(TARN_VALUE_STREAM, 0).I64(TARN_VALUE_TIME, time));
            builder.thread = kConsumerThread;
            const ValueBytes buffer =
                ValueBytes().U32(TARN_VALUE_STREAM, 0).List(TARN_VALUE_SAMPLE, SampleOf(++out, time));
            builder.Call(TARN_CALL_PROCESS_OUTPUT, {}, ValueBytes().List(TARN_VALUE_BUFFER, buffer));
        }
        if (plan.consumerFirst)
        {
            returnInput();
        }
    }
    builder.thread = 100;
    builder.Call(TARN_CALL_SET_OUTPUT_STREAM_STATE, StateOf(0, 0, TypeOf("MFVideoFormat_D16", 4, 2, 30)));
    return builder;
}

} // namespace tarn_tests
