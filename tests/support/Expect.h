// Our own words for results, references, texts, threads and waiting, and the headers that nearly every test needs.
#pragma once

#include "platform/MediaFoundation.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

// The exact result code.
#define EXPECT_HR(expected, call) EXPECT_EQ(static_cast<HRESULT>(expected), static_cast<HRESULT>(call))
#define ASSERT_HR(expected, call) ASSERT_EQ(static_cast<HRESULT>(expected), static_cast<HRESULT>(call))

#define EXPECT_CONTAINS(text, part) EXPECT_NE(std::string::npos, (text).find(part)) << (text)

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

// Runs the body on so many threads at once, given each one's number, until all have returned.
template <class Body>
void OnThreads(int count, const Body &body)
{
    std::vector<std::jthread> threads;
    for (int number = 0; number < count; ++number)
    {
        threads.emplace_back(body, number);
    }
}

// Repeats the step on a thread of its own for as long as it lives.
class Repeating
{
  public:
    explicit Repeating(std::function<void()> repeatedStep)
        : thread([step = std::move(repeatedStep)](const std::stop_token &stop) {
              for (; !stop.stop_requested(); std::this_thread::yield())
              {
                  step();
              }
          })
    {
    }

  private:
    std::jthread thread;
};

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
