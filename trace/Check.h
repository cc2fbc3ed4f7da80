// The check convention: a failing step is logged with function, expression text and result, and returned unchanged.
#pragma once

#include "platform/MediaFoundation.h"

#include <source_location>

#include "trace/Trace.h"

namespace mft_utils
{

// Name is what support tools search for. Logs at the error level and returns `result`. Thread-safe.
HRESULT PrintRetOnHResultErrorMessage_LM_DMFT_COMMON(const char *prettyFunction, const char *expression,
                                                     HRESULT result) noexcept;

// The same for a value that is not what it should be, for example "nullptr" where a "valid pointer" was expected.
HRESULT PrintRetOnHResultErrorMessage_LM_DMFT_COMMON(const char *prettyFunction, const char *expression,
                                                     const char *actual, const char *expected, HRESULT result) noexcept;

} // namespace mft_utils

#define TARN_CONCATENATE_(a, b) a##b
#define TARN_CONCATENATE(a, b) TARN_CONCATENATE_(a, b)

// The counter keeps a check inside a lambda inside a check from shadowing the outer one.
#define TARN_CHECK_HR(variable, text, ...)                                                                             \
    do                                                                                                                 \
    {                                                                                                                  \
        const HRESULT variable = (__VA_ARGS__);                                                                        \
        if (FAILED(variable))                                                                                          \
        {                                                                                                              \
            return ::mft_utils::PrintRetOnHResultErrorMessage_LM_DMFT_COMMON(                                          \
                std::source_location::current().function_name(), text, variable);                                      \
        }                                                                                                              \
    } while (false)

// Returns from the calling function when the expression fails.
#define CHECK_HR(...) TARN_CHECK_HR(TARN_CONCATENATE(checkResult, __COUNTER__), #__VA_ARGS__, __VA_ARGS__)

// The same where the fixed log text differs from the natural expression.
#define CHECK_HR_AS(text, ...) TARN_CHECK_HR(TARN_CONCATENATE(checkResult, __COUNTER__), text, __VA_ARGS__)

// Returns `result` from the calling function when the pointer is null, logged under `name`.
#define CHECK_POINTER_AS(name, pointer, result)                                                                        \
    do                                                                                                                 \
    {                                                                                                                  \
        if (!(pointer))                                                                                                \
        {                                                                                                              \
            return ::mft_utils::PrintRetOnHResultErrorMessage_LM_DMFT_COMMON(                                          \
                std::source_location::current().function_name(), name, "nullptr", "valid pointer", result);            \
        }                                                                                                              \
    } while (false)

// Returns E_POINTER from the calling function when the pointer is null.
#define CHECK_POINTER(pointer) CHECK_POINTER_AS(#pointer, pointer, E_POINTER)
