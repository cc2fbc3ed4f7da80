// Our own words for results, references and waiting.
#pragma once

#include "platform/MediaFoundation.h"

#include <chrono>
#include <functional>
#include <string>
#include <thread>

#include <gtest/gtest.h>

// The exact result code.
#define EXPECT_HR(expected, call) EXPECT_EQ(static_cast<HRESULT>(expected), static_cast<HRESULT>(call))
#define ASSERT_HR(expected, call) ASSERT_EQ(static_cast<HRESULT>(expected), static_cast<HRESULT>(call))

// The object's reference count, the caller's own references included.
#define EXPECT_REFS(object, count) EXPECT_EQ(static_cast<ULONG>(count), ::tarn_test::ReferenceCount(object))

namespace tarn_test
{

template <class T>
ULONG ReferenceCount(T *object)
{
    object->AddRef();
    return object->Release();
}

template <class T>
ULONG ReferenceCount(const ComPtr<T> &object)
{
    return ReferenceCount(object.Get());
}

// The text of the exception of this type that the call throws; others pass through.
template <class Exception, class Call>
std::string ThrownText(const Call &call)
{
    try
    {
        call();
    }
    catch (const Exception &error)
    {
        return error.what();
    }
    return "nothing thrown";
}

// Polls for something that another thread brings about and nothing announces.
inline bool WaitUntil(const std::function<bool()> &condition,
                      std::chrono::milliseconds limit = std::chrono::milliseconds(5000))
{
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition())
    {
        if (std::chrono::steady_clock::now() > end)
        {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

} // namespace tarn_test
