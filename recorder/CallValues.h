// The arguments and results of recorded calls, each a function that adds it to a record.
#pragma once

#include "platform/DeviceTransform.h"

#include "recorder/AttributeEncoder.h"

namespace mft_der
{

// Several, one after the other; what a call gives or takes.
template <class... Items>
auto Values(Items... items) noexcept
{
    return [=]([[maybe_unused]] RecordBuilder &values) { (items(values), ...); };
}

inline auto Number(std::uint16_t name, std::uint32_t number) noexcept
{
    return [=](RecordBuilder &values) { values.U32(name, number); };
}

inline auto StreamId(DWORD id) noexcept
{
    return Number(TARN_VALUE_STREAM, id);
}

// Told only when it is null: the call then fails.
inline auto OutPointer(std::uint32_t number, const void *pointer) noexcept
{
    return [=](RecordBuilder &values) {
        if (pointer == nullptr)
        {
            values.U32(TARN_VALUE_NO_OUT, number);
        }
    };
}

// What an out-pointer holds after a success.
template <class T>
auto NumberAt(std::uint16_t name, const T *pointer) noexcept
{
    return [=](RecordBuilder &values) {
        if (pointer != nullptr)
        {
            values.U32(name, static_cast<std::uint32_t>(*pointer));
        }
    };
}

inline auto Store(std::uint16_t name, IMFAttributes *store) noexcept
{
    return [=](RecordBuilder &values) { AddAttributes(values, name, store); };
}

template <class Attributes>
auto StoreAt(std::uint16_t name, Attributes *const *pointer) noexcept
{
    return [=](RecordBuilder &values) {
        if (pointer != nullptr)
        {
            AddAttributes(values, name, *pointer);
        }
    };
}

inline auto ObjectGiven(IUnknown *object) noexcept
{
    return [=](RecordBuilder &values) { AddObject(values, TARN_VALUE_OBJECT, object); };
}

inline auto EventGiven(IMFMediaEvent *event) noexcept
{
    return [=](RecordBuilder &values) { AddEvent(values, event); };
}

inline auto EventAt(IMFMediaEvent *const *pointer) noexcept
{
    return [=](RecordBuilder &values) { AddEvent(values, *pointer); };
}

} // namespace mft_der
