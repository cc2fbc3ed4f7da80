#include "tools/ks/KsSession.h"

#include "sim/SimulatedCamera.h"
#include "tools/frameserver/DeviceTransformSession.h"
#include "tools/command/ExitCode.h"
#include "tools/frameserver/PlatformSession.h"

namespace tarn_host
{

namespace
{

// The camera's pins follow; the session itself remembers failures.
class PinDriver final : public SessionListener
{
  public:
    explicit PinDriver(tarn_sim::SimulatedCamera &simulatedCamera) : camera(simulatedCamera) {}

    HRESULT OnInputState(DWORD inputId, DeviceStreamState state, IMFMediaType *type) override
    {
        return camera.Pins().SetPinState(inputId, state, type);
    }
    void OnOutputSample(DWORD, IMFSample *) override {}
    void OnSessionFailure() override {}

  private:
    tarn_sim::SimulatedCamera &camera;
};

} // namespace

void RunOverModule(const KsSessionOptions &options, const std::function<void(const KsClient &)> &use)
{
    const PlatformSession platform;
    const LoadedModule module(options.module, options.moduleAccess);
    const auto camera = user_space_frameworks::MakeCom<tarn_sim::SimulatedCamera>(
        options.transform == TransformKind::Depth ? tarn_sim::CameraConfiguration::TarnDepth()
                                                  : tarn_sim::CameraConfiguration::TarnColor());
    PinDriver pins(*camera.Get());
    DeviceTransformSession session(pins);
    session.Open(module.Create(ClassOf(options.transform)), static_cast<IMFTransform *>(camera.Get()));
    use(KsClient(session.KsControl()));
    if (const std::optional<std::string> failure = session.Failure())
    {
        throw HostError(*failure);
    }
    const ULONG left = session.Close();
    if (left != 0)
    {
        throw HostError(std::to_string(left) + " references on the transform left");
    }
}

} // namespace tarn_host
