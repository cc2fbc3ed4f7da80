// Turns a failing platform call into an exception, for code that runs on the camera's own thread or in constructors.
#pragma once

#include <windows.h>

#include <cstdio>
#include <stdexcept>
#include <string>

namespace tarn_sim
{

// Throws std::runtime_error that names the call and its result.
inline void Require(HRESULT result, const char *call)
{
    if (FAILED(result))
    {
        char text[16] = {};
        std::snprintf(text, sizeof(text), "0x%08lX", static_cast<unsigned long>(result));
        throw std::runtime_error(std::string(call) + " failed with " + text);
    }
}

} // namespace tarn_sim
