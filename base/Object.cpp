#include "base/Object.h"

#include <atomic>
#include <utility>

namespace user_space_frameworks
{

namespace
{
std::atomic<std::size_t> liveCount{0};
} // namespace

Object::Object(std::string objectName) : name(std::move(objectName))
{
    liveCount.fetch_add(1, std::memory_order_relaxed);
}

Object::~Object()
{
    liveCount.fetch_sub(1, std::memory_order_relaxed);
}

const char *Object::GetName() const noexcept
{
    return name.c_str();
}

std::string Object::GetNameCopy() const
{
    return name;
}

std::size_t Object::LiveCount() noexcept
{
    return liveCount.load(std::memory_order_relaxed);
}

} // namespace user_space_frameworks
