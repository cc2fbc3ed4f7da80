#include "tests/device/PatternedMemory.h"

#include <algorithm>
#include <mutex>
#include <set>
#include <vector>

#include "base/ComObject.h"

namespace tarn_test
{

namespace
{

class Buffer;

std::mutex lock;
std::set<Buffer *> buffers; // guarded by lock
int pattern = -1;           // guarded by lock; below 0: the platform's own buffers

class Buffer : public user_space_frameworks::ComObject<IMFMediaBuffer>
{
  public:
    Buffer(DWORD size, BYTE value) : bytes(size + kAlignment, value), capacity(size) { buffers.insert(this); }
    ~Buffer() override
    {
        const std::scoped_lock guard(lock);
        buffers.erase(this);
    }

    HRESULT STDMETHODCALLTYPE Lock(BYTE **data, DWORD *maxLength, DWORD *currentLength) noexcept override
    {
        *data = Data();
        for (const auto &[target, size] : {std::pair{maxLength, capacity}, std::pair{currentLength, length}})
        {
            if (target != nullptr)
            {
                *target = size;
            }
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Unlock() noexcept override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetCurrentLength(DWORD *current) noexcept override
    {
        *current = length;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetCurrentLength(DWORD current) noexcept override
    {
        length = current;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetMaxLength(DWORD *maxLength) noexcept override
    {
        *maxLength = capacity;
        return S_OK;
    }

    bool IsFree() noexcept
    {
        AddRef();
        return Release() == 1;
    }
    void Fill(BYTE value) { std::fill_n(Data(), capacity, value); }
    bool HoldsOnly(BYTE value)
    {
        return std::all_of(Data(), Data() + capacity, [value](BYTE present) { return present == value; });
    }

  private:
    static constexpr std::size_t kAlignment = 64;

    BYTE *Data() noexcept
    {
        const auto address = reinterpret_cast<std::uintptr_t>(bytes.data());
        return bytes.data() + (kAlignment - address % kAlignment) % kAlignment;
    }

    std::vector<BYTE> bytes;
    const DWORD capacity;
    DWORD length = 0;
};

} // namespace

PatternedMemory::PatternedMemory(BYTE value)
{
    const std::scoped_lock guard(lock);
    pattern = value;
}

PatternedMemory::~PatternedMemory()
{
    const std::scoped_lock guard(lock);
    pattern = -1;
}

std::size_t PatternedMemory::FillFree() const
{
    const std::scoped_lock guard(lock);
    std::size_t filled = 0;
    for (Buffer *const buffer : buffers)
    {
        if (buffer->IsFree())
        {
            buffer->Fill(static_cast<BYTE>(pattern));
            ++filled;
        }
    }
    return filled;
}

std::size_t PatternedMemory::CountWithout(BYTE value)
{
    const std::scoped_lock guard(lock);
    return static_cast<std::size_t>(
        std::count_if(buffers.begin(), buffers.end(), [value](Buffer *buffer) { return !buffer->HoldsOnly(value); }));
}

} // namespace tarn_test

// The linker sends the module's calls here.
extern "C"
{
    HRESULT __real_MFCreateAlignedMemoryBuffer(DWORD size, DWORD alignment, IMFMediaBuffer **buffer);
    HRESULT __wrap_MFCreateAlignedMemoryBuffer(DWORD size, DWORD alignment, IMFMediaBuffer **buffer)
    {
        const std::scoped_lock guard(tarn_test::lock);
        if (tarn_test::pattern < 0)
        {
            return __real_MFCreateAlignedMemoryBuffer(size, alignment, buffer);
        }
        *buffer = new tarn_test::Buffer(size, static_cast<BYTE>(tarn_test::pattern));
        return S_OK;
    }
}
