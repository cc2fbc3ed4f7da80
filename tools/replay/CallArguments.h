// The arguments of a recorded call.
#pragma once

#include <windows.h>

#include <cstdint>

#include "tools/recording/Value.h"

namespace tarn_replay
{

// Number of the argument; 0 where the recording does not tell it.
inline DWORD Number(tarn_recording::ValueList in, std::uint16_t name, std::size_t nth = 0)
{
    const auto value = in.Find(name, nth);
    return static_cast<DWORD>(value ? value->Unsigned().value_or(0) : 0);
}

// The out-pointer with this number (0 = the call's first), or null where null was given.
template <class T>
T *Out(tarn_recording::ValueList in, DWORD number, T *pointer)
{
    for (const auto &value : in)
    {
        if (value.Name() == TARN_VALUE_NO_OUT && value.Unsigned() == number)
        {
            return nullptr;
        }
    }
    return pointer;
}

} // namespace tarn_replay
