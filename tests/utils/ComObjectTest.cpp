#include "utils/ComObject.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace
{

using user_space_frameworks::ComObject;
using user_space_frameworks::MakeCom;

class TestObject : public ComObject<IMFShutdown, IMFAsyncCallback>
{
  public:
    explicit TestObject(std::atomic<int> &liveCount) : live(liveCount)
    {
        ++live;
    }
    HRESULT STDMETHODCALLTYPE Shutdown() noexcept override
    {
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetShutdownStatus(MFSHUTDOWN_STATUS *) noexcept override
    {
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetParameters(DWORD *, DWORD *) noexcept override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(IMFAsyncResult *) noexcept override
    {
        return S_OK;
    }

  private:
    ~TestObject() override
    {
        --live;
    }

    std::atomic<int> &live;
};

class ComObjectTest : public testing::Test
{
  protected:
    void TearDown() override
    {
        EXPECT_EQ(0, live);
    }

    std::atomic<int> live{0};
};

TEST_F(ComObjectTest, EveryInterfaceLeadsToTheSameIdentity)
{
    const ComPtr<TestObject> object = MakeCom<TestObject>(live);
    IUnknown *const identity = static_cast<IMFShutdown *>(object.Get());
    const IID interfaces[] = {__uuidof(IUnknown), __uuidof(IMFShutdown), __uuidof(IMFAsyncCallback),
                              __uuidof(IAgileObject), __uuidof(IMarshal)};
    for (const IID &from : interfaces)
    {
        ComPtr<IUnknown> face;
        ASSERT_EQ(S_OK, object->QueryInterface(from, reinterpret_cast<void **>(face.GetAddressOf())));
        for (const IID &to : interfaces)
        {
            ComPtr<IUnknown> other;
            EXPECT_EQ(S_OK, face->QueryInterface(to, reinterpret_cast<void **>(other.GetAddressOf())));
        }
        ComPtr<IUnknown> unknown;
        EXPECT_EQ(S_OK, face->QueryInterface(IID_PPV_ARGS(&unknown)));
        EXPECT_EQ(identity, unknown.Get());
    }
    EXPECT_EQ(2u, object->AddRef());
    EXPECT_EQ(1u, object->Release());
}

TEST_F(ComObjectTest, UnknownInterfaceAndNullAreRefused)
{
    const ComPtr<TestObject> object = MakeCom<TestObject>(live);
    void *other = &live;
    EXPECT_EQ(E_NOINTERFACE, object->QueryInterface(__uuidof(IMFSample), &other));
    EXPECT_EQ(nullptr, other);
    EXPECT_EQ(E_POINTER, object->QueryInterface(__uuidof(IUnknown), nullptr));
}

TEST_F(ComObjectTest, ReferencesBalanceUnderThreads)
{
    ComPtr<TestObject> object = MakeCom<TestObject>(live);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
    {
        threads.emplace_back([copy = ComPtr<TestObject>(object)] {
            for (int round = 0; round < 2000; ++round)
            {
                // The first rounds race for the marshaler.
                ComPtr<IMarshal> marshal;
                ComPtr<IMFAsyncCallback> callback;
                EXPECT_EQ(S_OK, copy->QueryInterface(IID_PPV_ARGS(&marshal)));
                EXPECT_EQ(S_OK, marshal.As(&callback));
            }
        });
    }
    for (std::thread &thread : threads)
    {
        thread.join();
    }
    threads.clear();
    EXPECT_EQ(1, live);
    EXPECT_EQ(0u, object.Detach()->Release());
}

TEST_F(ComObjectTest, OtherApartmentsGetTheObjectItself)
{
    // The class that unmarshals is the platform's free-threaded one, which hands out the pointer unchanged.
    constexpr CLSID kInProcFreeMarshaler = {0x0000033A, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    const ComPtr<TestObject> object = MakeCom<TestObject>(live);
    ComPtr<IMarshal> marshal;
    ASSERT_EQ(S_OK, object->QueryInterface(IID_PPV_ARGS(&marshal)));

    CLSID unmarshalClass{};
    EXPECT_EQ(S_OK, marshal->GetUnmarshalClass(__uuidof(IMFShutdown), static_cast<IMFShutdown *>(object.Get()),
                                               MSHCTX_INPROC, nullptr, MSHLFLAGS_NORMAL, &unmarshalClass));
    EXPECT_TRUE(IsEqualCLSID(kInProcFreeMarshaler, unmarshalClass));
}

} // namespace
