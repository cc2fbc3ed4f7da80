// A bound member function.
#pragma once

#include <stdexcept>
#include <utility>

namespace mft_utils
{

// Calls Result Instance::Function(Argument) on a borrowed instance that outlives the callback. Immutable after Init.
template <class Instance, class Argument, class Result>
class Callback
{
  public:
    using Function = Result (Instance::*)(Argument);

    Callback() noexcept = default;
    Callback(Instance *boundInstance, Function boundFunction) noexcept
        : instance(boundInstance), function(boundFunction)
    {
    }

    explicit operator bool() const noexcept
    {
        return instance != nullptr && function != nullptr;
    }

    // Throws std::runtime_error when empty, and what the function throws.
    Result operator()(Argument argument) const
    {
        if (!*this)
        {
            throw std::runtime_error("no callback function or instance");
        }
        return (instance->*function)(std::forward<Argument>(argument));
    }

  private:
    Instance *instance = nullptr;
    Function function = nullptr;
};

} // namespace mft_utils
