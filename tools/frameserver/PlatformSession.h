// COM and Media Foundation for the life of an object.
#pragma once

namespace tarn_host
{

// Multithreaded apartment and Media Foundation platform; taken down in the reverse order. Confined to the thread
// that made it.
class PlatformSession
{
  public:
    // Throws HostError.
    PlatformSession();
    ~PlatformSession();
    PlatformSession(const PlatformSession &) = delete;
    PlatformSession &operator=(const PlatformSession &) = delete;
};

} // namespace tarn_host
