// The camera model on a sample is right for that sample's pixels, whatever was cut and scaled on the way.
#include <ostream>

#include "platform/CameraAttributes.h"

#include "tests/device/DepthServer.h"
#include "tests/device/ProbeScene.h"

using namespace tarn_test;

namespace
{

constexpr double kInfraredStep = 65535.0 / 255 / 64; // camera's counts per count of the 8-bit output

struct Output
{
    DWORD id;
    UINT32 width;
    UINT32 height;
    UINT32 fps;
};

enum class Mode
{
    Plain,
    ConfidenceMap,
    FaceLogin
};

struct Session
{
    const char *pin;
    std::vector<Output> outputs;
    Mode mode = Mode::Plain;

    friend std::ostream &operator<<(std::ostream &out, const Session &session)
    {
        return out << session.pin << " to " << session.outputs.size() << " outputs";
    }
};

class SampleIntrinsicsTest : public testing::TestWithParam<Session>
{
  protected:
    ComPtr<IMFSample> Frame(const Output &wanted)
    {
        server.Step(1);
        ComPtr<IMFSample> frame;
        for (const Output &output : GetParam().outputs)
        {
            const auto samples = server.WaitForSamples(output.id, 1);
            frame = output.id == wanted.id && !samples.empty() ? samples.front() : frame;
        }
        return frame;
    }

    static std::vector<std::pair<UINT32, UINT32>> ProbedPixels(const Output &output)
    {
        const UINT32 right = output.width - 1;
        const UINT32 bottom = output.height - 1;
        return {{0, 0}, {right, 0}, {0, bottom}, {right, bottom}, {right / 2, bottom / 2}};
    }

    // Puts a point where the model of the output's samples says that each probed pixel looks, and expects it there.
    void CheckModel(const Output &output)
    {
        MFPinholeCameraIntrinsics intrinsics{};
        const ComPtr<IMFSample> first = Frame(output);
        ASSERT_NE(nullptr, first.Get());
        const auto blob = BlobOf(first, MFSampleExtension_PinholeCameraIntrinsics);
        ASSERT_EQ(sizeof(intrinsics), blob.size()) << "one model";
        std::memcpy(&intrinsics, blob.data(), sizeof(intrinsics));
        EXPECT_EQ(1u, intrinsics.IntrinsicModelCount);
        const MFPinholeCameraIntrinsic_IntrinsicModel &model = intrinsics.IntrinsicModels[0];
        EXPECT_EQ(output.width, model.Width);
        EXPECT_EQ(output.height, model.Height);

        std::vector<Ray> rays;
        for (const auto &[x, y] : ProbedPixels(output))
        {
            rays.push_back(Unproject(model, x, y));
        }
        for (const std::size_t axis : {0u, 1u})
        {
            scene->Show(rays, axis);
            const std::vector<BYTE> pixels = BytesOf(Frame(output));
            const double pixelsPerCount =
                axis == 0 ? model.CameraModel.FocalLength.x / scene->lens.focalLengthX / ProbeScene::kGain
                          : model.CameraModel.FocalLength.y / scene->lens.focalLengthY / ProbeScene::kGain;
            for (const auto &[x, y] : ProbedPixels(output))
            {
                const double value = ValueAt(output, pixels, std::size_t{y} * output.width + x);
                EXPECT_NEAR(0, (value - ProbeScene::kMiddle) * pixelsPerCount, 0.1)
                    << "output " << output.id << ", pixel " << x << " " << y << ", axis " << axis;
            }
        }
    }

    static Ray Unproject(const MFPinholeCameraIntrinsic_IntrinsicModel &model, UINT32 x, UINT32 y)
    {
        TARN_CALIBRATION_TABLE lens{};
        lens.radialK1 = model.DistortionModel.Radial_k1;
        lens.radialK2 = model.DistortionModel.Radial_k2;
        lens.radialK3 = model.DistortionModel.Radial_k3;
        lens.tangentialP1 = model.DistortionModel.Tangential_p1;
        lens.tangentialP2 = model.DistortionModel.Tangential_p2;
        return Undistort(lens, {(x - double{model.CameraModel.PrincipalPoint.x}) / model.CameraModel.FocalLength.x,
                                (y - double{model.CameraModel.PrincipalPoint.y}) / model.CameraModel.FocalLength.y});
    }

    static double ValueAt(const Output &output, const std::vector<BYTE> &pixels, std::size_t index)
    {
        if (output.id == kInfrared)
        {
            return pixels.at(index) * kInfraredStep;
        }
        std::uint16_t depth = 0;
        std::memcpy(&depth, &pixels.at(2 * index), sizeof(depth));
        return depth;
    }

    std::shared_ptr<ProbeScene> scene = std::make_shared<ProbeScene>();
    DepthServer server{DepthServer::SteppedTarnDepth([this](auto &camera) { camera.frameSource = scene; })};
};

TEST_P(SampleIntrinsicsTest, EveryProbedPixelSeesThePointThatItsModelNames)
{
    const Session &session = GetParam();
    ASSERT_HR(S_OK, server.initialized);
    ASSERT_HR(S_OK, server.SetConfidenceMap(session.mode == Mode::ConfidenceMap));
    ASSERT_HR(S_OK, server.SetFaceLogin(session.mode == Mode::FaceLogin));
    for (const Output &output : session.outputs)
    {
        ASSERT_HR(S_OK, server.Run(output.id, output.width, output.height, output.fps));
    }
    ASSERT_EQ(session.pin, server.Pin());
    for (const Output &output : session.outputs)
    {
        CheckModel(output);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Sessions, SampleIntrinsicsTest,
    testing::Values(Session{"INVZ 640x480@30", {{kDepth, 640, 480, 30}}},
                    Session{"INVZ 1280x720@30", {{kDepth, 1280, 720, 30}}},
                    Session{"INVZ 320x240@30", {{kDepth, 320, 240, 30}}},
                    Session{"INZC 640x480@30", {{kDepth, 640, 480, 30}}, Mode::ConfidenceMap},
                    Session{"INZI 640x480@60", {{kInfrared, 360, 360, 60}}},
                    Session{"PAIR 640x480@60", {{kInfrared, 360, 360, 60}}, Mode::FaceLogin},
                    Session{"INZI 640x480@30", {{kDepth, 320, 240, 30}, {kInfrared, 640, 480, 30}}},
                    Session{"INZI 1280x720@30", {{kDepth, 640, 480, 30}, {kInfrared, 1280, 720, 30}}},
                    Session{"INZI 640x480@60", {{kDepth, 320, 240, 60}, {kInfrared, 360, 360, 60}}},
                    Session{"INZI 640x480@60", {{kDepth, 640, 480, 60}, {kInfrared, 320, 240, 60}}}),
    [](const auto &session) { return "Number" + std::to_string(session.index); });

} // namespace
