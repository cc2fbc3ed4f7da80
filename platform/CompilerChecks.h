// What a compiler can check beyond the language when it is told; nothing where it cannot.
#pragma once

// The arguments fit the format, by the rules of the standard's printf, which this target's stdio follows here.
#if defined(__clang__)
#define TARN_PRINTF_LIKE(formatIndex, firstArgument) __attribute__((format(printf, formatIndex, firstArgument)))
#elif defined(__GNUC__)
#define TARN_PRINTF_LIKE(formatIndex, firstArgument) __attribute__((format(gnu_printf, formatIndex, firstArgument)))
#else
#define TARN_PRINTF_LIKE(formatIndex, firstArgument)
#endif
