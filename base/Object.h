// Named-object base of nearly every class; the name appears in log lines.
#pragma once

#include <cstddef>
#include <string>

namespace user_space_frameworks
{

// Holds the object's name. Owned by whoever owns the derived object. Immutable after Init.
class Object
{
  public:
    explicit Object(std::string objectName);
    Object(const Object &) = delete;
    Object &operator=(const Object &) = delete;

    virtual ~Object();
    virtual const char *GetName() const noexcept;
    virtual std::string GetNameCopy() const;

    // Number of objects alive in this module; a scenario that lets go of everything brings it back. Thread-safe.
    static std::size_t LiveCount() noexcept;

  private:
    const std::string name;
};

} // namespace user_space_frameworks
