// Processor time that this process has used.
#pragma once

#include <chrono>

namespace tarn_host
{

// Of all threads, in user and in kernel mode; 0 when it cannot be told.
std::chrono::microseconds ProcessorTime() noexcept;

} // namespace tarn_host
