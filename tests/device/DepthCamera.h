// A simulated depth camera with what the transform's components reach it through.
#pragma once

#include "ks/ExtensionUnitKsControl.h"
#include "ks/FirmwareCommandPipe.h"
#include "sim/CameraIdentifiers.h"
#include "sim/SimulatedCamera.h"
#include "tarn/tarn_dmft.h"
#include "tests/support/Expect.h"
#include "tests/trace/TraceLines.h"
#include "base/ComObject.h"

namespace tarn_test
{

struct DepthCamera
{
    explicit DepthCamera(
        const tarn_sim::CameraConfiguration &configuration = tarn_sim::CameraConfiguration::TarnDepth())
        : camera(user_space_frameworks::MakeCom<tarn_sim::SimulatedCamera>(configuration)),
          unit(user_space_frameworks::MakeCom<mft_core::ExtensionUnitKsControl>(KSPROPERTYSETID_TARN_DEPTH_CONTROL))
    {
        EXPECT_HR(S_OK, unit->Init(camera.Get(), camera.Get(), tarn_sim::kControlDepthError));
        pipe = std::make_shared<mft_core::FirmwareCommandPipe>(unit.Get(), KSPROPERTYSETID_TARN_DEPTH_CONTROL,
                                                               tarn_sim::kControlCommand, "Test pipe");
    }

    void FailKsCall(std::uint32_t number, bool allFollowing = false) const
    {
        tarn_sim::FaultPlan plan;
        plan.ksCall = {number, E_ABORT, allFollowing};
        camera->Faults().SetPlan(plan);
    }

    ComPtr<tarn_sim::SimulatedCamera> camera;
    ComPtr<mft_core::ExtensionUnitKsControl> unit;
    std::shared_ptr<mft_core::FirmwareCommandPipe> pipe;
};

} // namespace tarn_test
