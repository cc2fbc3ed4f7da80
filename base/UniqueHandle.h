// Scoped owner of a kernel handle.
#pragma once

#include <windows.h>

#include <utility>

namespace user_space_frameworks
{

// Closes the handle it owns; null means none. Confined.
class UniqueHandle
{
  public:
    UniqueHandle() noexcept = default;
    explicit UniqueHandle(HANDLE ownedHandle) noexcept : handle(ownedHandle) {}
    UniqueHandle(UniqueHandle &&other) noexcept : handle(std::exchange(other.handle, nullptr)) {}
    UniqueHandle &operator=(UniqueHandle &&other) noexcept
    {
        Reset(std::exchange(other.handle, nullptr));
        return *this;
    }
    UniqueHandle(const UniqueHandle &) = delete;
    UniqueHandle &operator=(const UniqueHandle &) = delete;
    ~UniqueHandle()
    {
        Reset();
    }

    HANDLE Get() const noexcept
    {
        return handle;
    }

    // True when it owns a handle that can be used: neither null nor INVALID_HANDLE_VALUE.
    explicit operator bool() const noexcept
    {
        return IsUsable(handle);
    }

    void Reset(HANDLE newHandle = nullptr) noexcept
    {
        const HANDLE old = std::exchange(handle, newHandle);
        // INVALID_HANDLE_VALUE is also the pseudo-handle of the process: never close it.
        if (IsUsable(old) && old != newHandle)
        {
            CloseHandle(old);
        }
    }

    // For functions that return a handle through a pointer; lets go of the present one first.
    HANDLE *ReleaseAndGetAddressOf() noexcept
    {
        Reset();
        return &handle;
    }

    // Gives the handle up without closing it.
    HANDLE Detach() noexcept
    {
        return std::exchange(handle, nullptr);
    }

  private:
    static bool IsUsable(HANDLE value) noexcept
    {
        return value != nullptr && value != INVALID_HANDLE_VALUE;
    }

    HANDLE handle = nullptr;
};

} // namespace user_space_frameworks
