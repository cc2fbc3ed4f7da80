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

// Locks and what they guard, as clang's analysis of thread safety knows them: a class is a capability or holds one for
// its scope, data is guarded by one, a function requires, acquires or releases one.
#if defined(__clang__)
#define TARN_THREAD_SAFETY(attribute) __attribute__((attribute))
#else
#define TARN_THREAD_SAFETY(attribute)
#endif

#define TARN_CAPABILITY(name) TARN_THREAD_SAFETY(capability(name))
#define TARN_SCOPED_CAPABILITY TARN_THREAD_SAFETY(scoped_lockable)

#define TARN_GUARDED_BY(lock) TARN_THREAD_SAFETY(guarded_by(lock))
#define TARN_POINTEE_GUARDED_BY(lock) TARN_THREAD_SAFETY(pt_guarded_by(lock))

#define TARN_REQUIRES(...) TARN_THREAD_SAFETY(requires_capability(__VA_ARGS__))
#define TARN_EXCLUDES(...) TARN_THREAD_SAFETY(locks_excluded(__VA_ARGS__))
#define TARN_ACQUIRE(...) TARN_THREAD_SAFETY(acquire_capability(__VA_ARGS__))
#define TARN_ACQUIRE_SHARED(...) TARN_THREAD_SAFETY(acquire_shared_capability(__VA_ARGS__))
#define TARN_TRY_ACQUIRE(...) TARN_THREAD_SAFETY(try_acquire_capability(__VA_ARGS__))
#define TARN_RELEASE(...) TARN_THREAD_SAFETY(release_capability(__VA_ARGS__))
#define TARN_RELEASE_SHARED(...) TARN_THREAD_SAFETY(release_shared_capability(__VA_ARGS__))
// Holds from here to the end of the function, by the word of the code.
#define TARN_ASSERT_HELD(lock) TARN_THREAD_SAFETY(assert_capability(lock))
