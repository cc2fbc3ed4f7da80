// The camera model on a sample is right for that sample's pixels, whatever was cut and scaled on the way.
#include <array>
#include <cmath>
#include <cstring>

#include "sim/CalibrationTable.h"
#include "tests/device/DepthServer.h"
#include "tools/frameserver/SampleDetails.h"

using tarn_host::VideoSize;
using tarn_test::DepthServer;
using tarn_test::kDepth;
using tarn_test::kInfrared;
using Model = MFPinholeCameraIntrinsic_IntrinsicModel;

namespace
{

constexpr double kMiddle = 512; // the value at a probe
constexpr double kGain = 64;    // per pixel of the sensor

using Point = std::array<double, 2>; // on the sensor of 640 x 480 pixels; +x right, +y down

// Around each probe a small square with a ramp in it, nothing elsewhere; depth and infrared alike. A frame of another
// ratio shows the largest centred part of the sensor. Confined: change it only while no frame is made.
class ProbeScene : public tarn_sim::IFrameSource
{
  public:
    void Render(const tarn_sim::FrameRequest &request, tarn_sim::Plane plane, std::uint8_t *pixels) override
    {
        const std::size_t bytesPerPixel = plane == tarn_sim::Plane::Confidence ? 1 : 2;
        std::memset(pixels, 0, std::size_t{request.width} * request.height * bytesPerPixel);
        const double scale = std::min(640.0 / request.width, 480.0 / request.height); // sensor's pixels per frame's
        const Point origin{319.5 - (request.width - 1) / 2.0 * scale, 239.5 - (request.height - 1) / 2.0 * scale};
        for (const Point &probe : plane == tarn_sim::Plane::Confidence ? std::vector<Point>{} : probes)
        {
            const auto isNear = [&](std::uint32_t at, std::size_t direction) {
                return std::abs(origin.at(direction) + at * scale - probe.at(direction)) < 20 * scale;
            };
            for (std::uint32_t y = 0; y < request.height; ++y)
            {
                for (std::uint32_t x = 0; isNear(y, 1) && x < request.width; ++x)
                {
                    const double offset = origin.at(axis) + (axis == 0 ? x : y) * scale - probe.at(axis);
                    const auto value =
                        static_cast<std::uint16_t>(std::lround(std::clamp(kMiddle + kGain * offset, 0.0, 1023.0)));
                    if (isNear(x, 0))
                    {
                        std::memcpy(pixels + 2 * (std::size_t{y} * request.width + x), &value, sizeof(value));
                    }
                }
            }
        }
    }

    std::vector<Point> probes;
    std::size_t axis = 0; // 0: values rise to the right, 1: downwards
};

enum class Mode
{
    Plain,
    ConfidenceMap,
    FaceLogin
};

class SampleIntrinsicsTest : public testing::Test
{
  protected:
    using Outputs = std::vector<std::pair<DWORD, VideoSize>>;

    static tarn_sim::CameraConfiguration CameraThatSees(const std::shared_ptr<ProbeScene> &seen)
    {
        auto configuration = DepthServer::SteppedTarnDepth();
        configuration.frameSource = seen;
        return configuration;
    }

    // A sample of that output; all others are taken away.
    static ComPtr<IMFSample> Frame(DepthServer &server, const Outputs &outputs, DWORD wanted)
    {
        EXPECT_HR(S_OK, server.camera->Pins().Step(0, 1));
        ComPtr<IMFSample> frame;
        for (const auto &[output, size] : outputs)
        {
            const auto sample = server.WaitForSamples(output, 1).at(0);
            frame = output == wanted ? sample : frame;
        }
        return frame;
    }

    // Puts a point where the model of the output's samples says that each probed pixel looks, and expects it there.
    void CheckModel(DepthServer &server, const Outputs &outputs, DWORD output, const VideoSize &size)
    {
        const auto models = tarn_host::SampleDetails::Of(*Frame(server, outputs, output).Get()).intrinsics;
        ASSERT_EQ(1u, models.size());
        const Model &model = models.front();
        EXPECT_EQ(size.width, model.Width);
        EXPECT_EQ(size.height, model.Height);
        EXPECT_EQ(lens.radialK1, model.DistortionModel.Radial_k1); // as it is: it has no unit of pixels
        EXPECT_EQ(lens.tangentialP2, model.DistortionModel.Tangential_p2);

        const Point focal{model.CameraModel.FocalLength.x / lens.focalLengthX,
                          model.CameraModel.FocalLength.y / lens.focalLengthY};
        const UINT32 right = size.width - 1;
        const UINT32 bottom = size.height - 1;
        const std::array<std::array<UINT32, 2>, 5> probed{
            {{0, 0}, {right, 0}, {0, bottom}, {right, bottom}, {right / 2, bottom / 2}}};
        scene->probes.clear();
        for (const auto &[x, y] : probed)
        {
            scene->probes.push_back(
                {(x - double{model.CameraModel.PrincipalPoint.x}) / focal[0] + lens.principalPointX,
                 (y - double{model.CameraModel.PrincipalPoint.y}) / focal[1] + lens.principalPointY});
        }
        for (const std::size_t axis : {0u, 1u})
        {
            scene->axis = axis;
            const tarn_test::Bytes pixels = tarn_test::PixelsOf(Frame(server, outputs, output));
            for (const auto &[x, y] : probed)
            {
                const double value = ValueAt(output, pixels, std::size_t{y} * size.width + x);
                EXPECT_NEAR(0, (value - kMiddle) / kGain * focal.at(axis), 0.1)
                    << "output " << output << ", pixel " << x << " " << y << ", axis " << axis;
            }
        }
    }

    static double ValueAt(DWORD output, const tarn_test::Bytes &pixels, std::size_t index)
    {
        return output == kInfrared ? pixels.at(index) * 65535.0 / 255 / 64 // counts of the camera's 10 bits
                                   : pixels.at(2 * index) + pixels.at(2 * index + 1) * 256;
    }

    const TARN_CALIBRATION_TABLE lens = tarn_sim::DefaultCalibration();
    std::shared_ptr<ProbeScene> scene = std::make_shared<ProbeScene>();
};

TEST_F(SampleIntrinsicsTest, EveryProbedPixelSeesThePointThatItsModelNames)
{
    const struct
    {
        const char *pin;
        Outputs outputs;
        Mode mode = Mode::Plain;
    } rows[] = {
        {"INVZ 640x480@30", {{kDepth, {640, 480, 30}}}},
        {"INVZ 1280x720@30", {{kDepth, {1280, 720, 30}}}},
        {"INVZ 320x240@30", {{kDepth, {320, 240, 30}}}},
        {"INZC 640x480@30", {{kDepth, {640, 480, 30}}}, Mode::ConfidenceMap},
        {"INZI 640x480@60", {{kInfrared, {360, 360, 60}}}},
        {"PAIR 640x480@60", {{kInfrared, {360, 360, 60}}}, Mode::FaceLogin},
        {"INZI 640x480@30", {{kDepth, {320, 240, 30}}, {kInfrared, {640, 480, 30}}}},
        {"INZI 1280x720@30", {{kDepth, {640, 480, 30}}, {kInfrared, {1280, 720, 30}}}},
        {"INZI 640x480@60", {{kDepth, {320, 240, 60}}, {kInfrared, {360, 360, 60}}}},
        {"INZI 640x480@60", {{kDepth, {640, 480, 60}}, {kInfrared, {320, 240, 60}}}},
    };
    for (const auto &row : rows)
    {
        SCOPED_TRACE(testing::Message() << "row " << &row - rows);
        DepthServer server(CameraThatSees(scene));
        ASSERT_HR(S_OK, server.SetConfidenceMap(row.mode == Mode::ConfidenceMap));
        ASSERT_HR(S_OK, server.SetFaceLogin(row.mode == Mode::FaceLogin));
        for (const auto &[output, size] : row.outputs)
        {
            ASSERT_HR(S_OK, server.Run(output, size.width, size.height, size.framesPerSecond));
        }
        ASSERT_EQ(row.pin, server.Pin());
        for (const auto &[output, size] : row.outputs)
        {
            CheckModel(server, row.outputs, output, size);
        }
    }
}

} // namespace
