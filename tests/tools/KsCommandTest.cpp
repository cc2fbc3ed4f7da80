#include "tools/ks/KsCommand.h"

#include <CLI/CLI.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "device/TarnColorDeviceMft.h"
#include "sim/CameraRecords.h"
#include "tarn/tarn_formats.h"
#include "tests/device/DepthServer.h"
#include "tools/command/CommandLine.h"
#include "tools/ks/KsText.h"

namespace
{

using namespace tarn_host;
using tarn_sim::CameraConfiguration;
using user_space_frameworks::MakeCom;

// The whole command line over transforms of this process.
class KsCommandTest : public testing::Test
{
  protected:
    ExitCode Run(std::vector<std::string> arguments)
    {
        output.str({});
        errors.str({});
        arguments.insert(arguments.begin(), "ks");
        const auto runner = [this](const KsSessionOptions &options, const auto &use) { Serve(options, use); };
        std::vector<std::unique_ptr<Command>> commands;
        commands.push_back(std::make_unique<KsCommand>(runner, output));
        return CommandLine(std::move(commands)).Run(std::move(arguments), output, errors);
    }
    nlohmann::ordered_json RunForJson(std::vector<std::string> arguments)
    {
        arguments.emplace_back("--json");
        EXPECT_EQ(Run(std::move(arguments)), ExitCode::Success) << errors.str();
        return nlohmann::ordered_json::parse(output.str());
    }
    void ExpectOneErrorLineWith(const std::string &part) const
    {
        const std::string text = errors.str();
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
        EXPECT_NE(text.find(part), std::string::npos) << text;
    }

    CameraConfiguration depthCamera = tarn_test::DepthServer::SteppedTarnDepth();
    tarn_sim::FaultPlan faults; // from the first call of the command on

  private:
    void Serve(const KsSessionOptions &options, const std::function<void(const KsClient &)> &use) const
    {
        std::optional<tarn_test::TestFrameServer> color;
        std::optional<tarn_test::DepthServer> depth;
        tarn_test::TestFrameServer &server =
            options.transform == TransformKind::Color
                ? color.emplace(MakeCom<mft_core::TarnColorDeviceMft>(),
                                MakeCom<tarn_sim::SimulatedCamera>(CameraConfiguration::TarnColor()))
                : depth.emplace(depthCamera);
        server.camera->Faults().SetPlan(faults);
        ComPtr<IKsControl> control;
        ASSERT_HR(S_OK, server.transform.As(&control));
        use(KsClient(control));
    }

  protected:
    std::ostringstream output;
    std::ostringstream errors;
};

TEST_F(KsCommandTest, ListShowsEachControlAsTheCameraHasIt)
{
    const auto depth = RunForJson({"list"})["controls"];
    ASSERT_EQ(depth.size(), 7U);
    EXPECT_EQ(depth[2].dump(), R"({"control":"MOTION_VS_RANGE_TRADE","id":3,"size":1,"value":9,)"
                               R"("minimum":0,"maximum":100,"step":1,"default":9})");
    EXPECT_EQ(depth[6].dump(), R"({"control":"COMMAND","id":7,"size":1024})");

    const auto color = RunForJson({"list", "--transform", "color"})["controls"];
    ASSERT_EQ(color.size(), 4U);
    EXPECT_EQ(color[3].dump(), R"({"control":"EXPOSURE_GRANULARITY","id":4,"size":1,"value":10,)"
                               R"("minimum":2,"maximum":200,"step":2,"default":10})");
}

TEST_F(KsCommandTest, ValuesSetAreReadBackFromOneCamera)
{
    const auto results = RunForJson({"do", "set preset Low_Power", "set preset 14", "set confidence-map on",
                                     "set face-login on", "set accuracy 0x3", "get ACCURACY", "get api-version"});

    EXPECT_EQ(results.dump(), R"([{"name":"preset","before":0,"value":6},{"name":"preset","before":6,"value":14},)"
                              R"({"name":"confidence-map","before":false,"value":true},)"
                              R"({"name":"face-login","before":false,"value":true},)"
                              R"({"name":"ACCURACY","before":2,"value":3},{"name":"ACCURACY","value":3},)"
                              R"({"name":"api-version","value":"0.7"}])");
}

TEST_F(KsCommandTest, CommandCarriesItsWordsToTheFirmwareAndTheAnswerBack)
{
    const auto results = RunForJson({"do", "command 0xEC --param1 1 --param2 0xFFFFFFFF --answer 8",
                                     "command 0xEC --send '01 fe80'", "command 237 --answer 3"});

    EXPECT_EQ(results[0]["answer"], "01000000FFFFFFFF");
    EXPECT_EQ(results[1]["sent"], "01FE80");
    EXPECT_EQ(results[2]["answer"], "01FE80");
}

TEST_F(KsCommandTest, DeviceInformationIsDecodedWhateverTheCameraSends)
{
    const std::vector<std::string> ask{"command", "59", "--answer", "174"};
    EXPECT_EQ(RunForJson(ask)["deviceInfo"]["firmware"], "3.10.2.17");
    EXPECT_EQ(RunForJson(ask)["deviceInfo"]["record"], true);
    EXPECT_TRUE(RunForJson(ask)["deviceInfo"]["temperatureC"].is_number());

    depthCamera.deviceInfo.assign(sizeof(TARN_DEVICE_INFO), 0xC3); // neither text nor terminated
    const auto info = RunForJson(ask)["deviceInfo"];
    EXPECT_EQ(info["serialNumber"], std::string(16, '?'));
    EXPECT_EQ(info["record"], false);
    EXPECT_FALSE(RunForJson({"command", "59", "--answer", "173"}).contains("deviceInfo"));
}

TEST_F(KsCommandTest, RefusalsEndWithTheFailureCodeAndNameTheStep)
{
    EXPECT_EQ(Run({"set", "laser-power", "17"}), ExitCode::Failure);
    ExpectOneErrorLineWith("setting LASER_POWER to 17 failed with E_INVALIDARG (0x80070057)");
    EXPECT_EQ(Run({"command", "0xEE"}), ExitCode::Failure);
    ExpectOneErrorLineWith("firmware command 0xEE failed with E_FAIL (0x80004005)");

    depthCamera = tarn_test::DepthServer::WithoutSubtype(CUSTOM_GUID_KELP_FACE_LOGIN);
    EXPECT_EQ(Run({"get", "face-login"}), ExitCode::Failure) << "a positive result is no success";
    ExpectOneErrorLineWith("ERROR_SET_NOT_FOUND (0x00000492)");

    // Each call of the list in turn.
    for (faults.ksCall = {1, HRESULT_FROM_WIN32(ERROR_GEN_FAILURE)}; Run({"list"}) != ExitCode::Success;)
    {
        ExpectOneErrorLineWith("failed with HRESULT_FROM_WIN32(ERROR_GEN_FAILURE) (0x8007001F)");
        ASSERT_LT(++faults.ksCall.number, 100U);
    }
    EXPECT_GT(faults.ksCall.number, 20U);
}

TEST_F(KsCommandTest, WrongWordsGiveOneClearLineBeforeTheCameraIsAsked)
{
    const struct
    {
        std::vector<std::string> arguments;
        const char *named;
    } cases[] = {
        {{}, "list, get, set, command and do"},
        {{"dance"}, "dance"},
        {{"get", "dance"}, "it has api-version"},
        {{"get", "preset", "--transform", "color"}, "it has EXPOSURE_PRIORITY"},
        {{"get", "command"}, "ks command"},
        {{"set", "api-version", "8"}, "only be read"},
        {{"set", "preset", "best"}, "close-up"},
        {{"set", "confidence-map", "1"}, "neither on nor off"},
        {{"set", "accuracy", "256"}, "0 to 255"},
        {{"command", "0x"}, "'0x'"},
        {{"command", "4294967296"}, "4294967296"},
        {{"command", "1", "--param4", "-1"}, "--param4"},
        {{"command", "1", "--answer", "1021"}, "1020"},
        {{"command", "1", "--send", "123"}, "'3'"},
        {{"command", "1", "--send", "0x12"}, "'0x'"},
        {{"command", "1", "--send", std::string(2002, '0')}, "1000 bytes"},
        {{"command", "1", "--send", "00", "--answer", "1"}, "excludes"},
        {{"command", "1", "--transform", "color"}, "color"},
        {{"do", "list", "get"}, "'get': name is required"},
        {{"do", "list --bogus 3"}, "unknown: --bogus 3"},
    };
    faults.ksCall = {1, E_FAIL, true}; // would end as a failure instead
    for (const auto &one : cases)
    {
        EXPECT_EQ(Run(one.arguments), ExitCode::Usage) << one.named;
        ExpectOneErrorLineWith(one.named);
    }
}

// Says that everything went well, with as many bytes as it likes.
class TerseControl final : public user_space_frameworks::ComObject<IKsControl>
{
  public:
    explicit TerseControl(ULONG bytesReturned) : returned(bytesReturned) {}

    HRESULT STDMETHODCALLTYPE KsProperty(PKSPROPERTY, ULONG, void *, ULONG, ULONG *bytesReturned) override
    {
        *bytesReturned = returned;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE KsMethod(PKSMETHOD, ULONG, void *, ULONG, ULONG *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE KsEvent(PKSEVENT, ULONG, void *, ULONG, ULONG *) override { return E_NOTIMPL; }

  private:
    const ULONG returned;
};

TEST(KsClientTest, AnswersThatAreTooShortAreNotRead)
{
    const ExtensionControl control = ExtensionControlsOf(TransformKind::Depth).front();
    const auto clientOf = [](ULONG bytes) { return KsClient(MakeCom<TerseControl>(bytes)); };

    EXPECT_THROW(clientOf(7).ApiVersion(), HostError);
    EXPECT_THROW(clientOf(3).Preset(), HostError);
    EXPECT_THROW(clientOf(3).ConfidenceMap(), HostError);
    EXPECT_THROW(clientOf(39).FaceLogin(), HostError);
    EXPECT_THROW(clientOf(24 + 9).AskFirmware({}, 10), HostError);
    EXPECT_THROW(clientOf(0).Value(control), HostError);
    EXPECT_THROW(clientOf(58).Range(control), HostError);
    EXPECT_THROW(clientOf(56).Default(control), HostError);
    EXPECT_THROW(clientOf(0).Size(control), HostError);

    EXPECT_NO_THROW(clientOf(59).Range(control));
    EXPECT_NO_THROW(clientOf(57).Default(control));
    EXPECT_NO_THROW(clientOf(24 + 10).AskFirmware({}, 10));
}

TEST(KsTextTest, DumpShowsOffsetsBytesAndCharacters)
{
    const std::string text = "0123456789abcdef\x7F";
    EXPECT_EQ(HexDump({reinterpret_cast<const std::uint8_t *>(text.data()), text.size()}),
              "0000  30 31 32 33 34 35 36 37 38 39 61 62 63 64 65 66  0123456789abcdef\n"
              "0010  7F" +
                  std::string(45, ' ') + "  .\n");
}

} // namespace
