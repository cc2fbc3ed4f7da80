// The module as it is installed: registered for the length of a test, activated by class id.
#pragma once

#include "platform/DeviceTransform.h"

#include <gtest/gtest.h>

#include "tests/module/LoadedDll.h"
#include "tests/support/Expect.h"

namespace tarn_test
{

class RegisteredModule : public testing::Test
{
  protected:
    void SetUp() override
    {
        ASSERT_HR(S_OK, dll.RegisterServer());
    }
    void TearDown() override
    {
        EXPECT_TRUE(WaitUntil([&] { return dll.CanUnloadNow() == S_OK; })); // callbacks leave a moment later
        EXPECT_HR(S_OK, dll.UnregisterServer());
    }

    static ComPtr<IMFDeviceTransform> Activate(const CLSID &clsid)
    {
        ComPtr<IMFDeviceTransform> transform;
        EXPECT_HR(S_OK, CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&transform)));
        return transform;
    }

    LoadedDll dll;
};

} // namespace tarn_test
