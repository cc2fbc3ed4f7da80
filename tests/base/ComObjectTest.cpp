#include "base/ComObject.h"

#include "base/Object.h"
#include "tests/support/Expect.h"

using namespace user_space_frameworks;

namespace
{

class TestObject : public ComObject<IMFShutdown, IMFAsyncCallback>, private Object
{
  public:
    TestObject() : Object("Test object") {}
    HRESULT STDMETHODCALLTYPE Shutdown() noexcept override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetShutdownStatus(MFSHUTDOWN_STATUS *) noexcept override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetParameters(DWORD *, DWORD *) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Invoke(IMFAsyncResult *) noexcept override { return S_OK; }
};

TEST(ComObjectTest, EveryInterfaceLeadsToTheSameIdentity)
{
    const ComPtr<TestObject> object = MakeCom<TestObject>();
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
    void *other = identity;
    EXPECT_EQ(E_NOINTERFACE, object->QueryInterface(__uuidof(IMFSample), &other));
    EXPECT_EQ(nullptr, other);
    EXPECT_EQ(E_POINTER, object->QueryInterface(__uuidof(IUnknown), nullptr));

    // Other apartments unmarshal with the platform's free-threaded class, which hands out the pointer unchanged.
    constexpr CLSID kInProcFreeMarshaler = {0x0000033A, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    ComPtr<IMarshal> marshal;
    CLSID unmarshalClass{};
    ASSERT_EQ(S_OK, object->QueryInterface(IID_PPV_ARGS(&marshal)));
    EXPECT_EQ(S_OK, marshal->GetUnmarshalClass(__uuidof(IMFShutdown), identity, MSHCTX_INPROC, nullptr,
                                               MSHLFLAGS_NORMAL, &unmarshalClass));
    EXPECT_TRUE(IsEqualCLSID(kInProcFreeMarshaler, unmarshalClass));
}

TEST(ComObjectTest, ReferencesBalanceUnderThreads)
{
    ComPtr<TestObject> object = MakeCom<TestObject>();
    tarn_test::OnThreads(4, [&, copy = object](int) {
        for (int round = 0; round < 2000; ++round)
        {
            // The first rounds race for the marshaler.
            ComPtr<IMarshal> marshal;
            ComPtr<IMFAsyncCallback> callback;
            EXPECT_EQ(S_OK, copy->QueryInterface(IID_PPV_ARGS(&marshal)));
            EXPECT_EQ(S_OK, marshal.As(&callback));
        }
    });
    EXPECT_EQ(0u, object.Detach()->Release());
} // nothing left alive: checked after every test

} // namespace
