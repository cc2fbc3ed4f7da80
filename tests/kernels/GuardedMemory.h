// Memory between two pages that fault, so that one byte read or written outside it ends the test.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mft_kernels
{
// Owns pages for at least `size` bytes. Confined. The constructor throws std::bad_alloc.
class GuardedMemory
{
  public:
    explicit GuardedMemory(std::size_t size);
    ~GuardedMemory();
    GuardedMemory(const GuardedMemory &) = delete;
    GuardedMemory &operator=(const GuardedMemory &) = delete;

    // First byte after the page in front.
    std::uint8_t *Begin() const;
    // First byte of the page behind.
    std::uint8_t *End() const;

  private:
    std::uint8_t *pages;
    std::size_t usable;
};
} // namespace mft_kernels
