// What the depth transform must look like after any sequence of calls, kept beside it by the tests.
#pragma once

#include "tarn/depth_presets.h"
#include "tests/device/DepthServer.h"

namespace tarn_test
{

using tarn_host::VideoSize;

// Each call returns what the transform must answer, and changes nothing where that is a failure. The camera is
// CameraConfiguration::TarnDepth().
class DepthModel
{
  public:
    HRESULT Start(DWORD output, const VideoSize &format)
    {
        if (running.at(output) == format)
        {
            return S_OK; // unchanged: the topology stays, whatever it is
        }
        const auto &other = running.at(1 - output);
        const bool isFaceLogin = output == kInfrared && !other && faceLogin && format == VideoSize{360, 360, 60};
        std::string next;
        if (output == kDepth && !other)
        {
            next = (confidenceMap ? "INZC " : "INVZ ") + format.ToText();
        }
        else if (isFaceLogin)
        {
            next = "PAIR 640x480@60";
        }
        else if (const auto closest = Closest(format, other.value_or(format)))
        {
            next = "INZI " + closest->ToText();
        }
        else
        {
            return E_FAIL;
        }
        EndTopology();
        pin = next;
        isDepthAlone = output == kDepth && !other;
        presetInForce = isFaceLogin ? UINT32{TARN_DEPTH_PRESET_FACE_LOGIN} : preset;
        isListening = isListening || !running.at(output);
        running.at(output) = format;
        hasStopped.at(output) = false;
        return S_OK;
    }

    HRESULT Stop(DWORD output)
    {
        isListening = isListening && hasStopped.at(output); // a second stop changes nothing
        hasStopped.at(output) = true;
        running.at(output).reset();
        if (!AnyRuns())
        {
            EndTopology();
            pin = "stopped";
        }
        return S_OK;
    }

    HRESULT SetConfidenceMap(bool on)
    {
        if (on == confidenceMap)
        {
            return S_OK;
        }
        if (running[kInfrared])
        {
            return E_UNEXPECTED;
        }
        confidenceMap = on;
        if (running[kDepth])
        {
            isDepthAlone = true;
            pin = (on ? "INZC " : "INVZ ") + running[kDepth]->ToText();
        }
        return S_OK;
    }

    HRESULT SetPreset(UINT32 wanted)
    {
        preset = wanted;
        presetInForce = IsFaceLogin() ? presetInForce : wanted;
        return S_OK;
    }

    HRESULT SetFaceLogin(bool on)
    {
        if (AnyRuns())
        {
            return E_FAIL;
        }
        faceLogin = on;
        return S_OK;
    }

    bool IsFaceLogin() const { return pin.rfind("PAIR", 0) == 0; }

    bool AnyRuns() const { return running[kDepth] || running[kInfrared]; }

    std::array<std::optional<VideoSize>, 2> running;
    std::string pin = "stopped"; // as DepthServer::Pin tells it
    bool isDepthAlone = false;   // the topology of depth alone
    bool confidenceMap = false;
    bool faceLogin = false;
    UINT32 preset = TARN_DEPTH_PRESET_DEFAULT; // that applications want
    UINT32 presetInForce = TARN_DEPTH_PRESET_DEFAULT;
    bool isListening = false; // to the camera's auto-update event

  private:
    // The smallest infrared-and-depth frame that serves both.
    static std::optional<VideoSize> Closest(const VideoSize &one, const VideoSize &other)
    {
        constexpr std::array<VideoSize, 5> kByCloseness{
            {{320, 240, 30}, {320, 240, 60}, {640, 480, 30}, {640, 480, 60}, {1280, 720, 30}}};
        const auto *const found = std::find_if(kByCloseness.begin(), kByCloseness.end(), [&](const VideoSize &format) {
            return format.width >= std::max(one.width, other.width) &&
                   format.height >= std::max(one.height, other.height) &&
                   format.framesPerSecond >= std::max(one.framesPerSecond, other.framesPerSecond);
        });
        return found == kByCloseness.end() ? std::nullopt : std::optional(*found);
    }

    void EndTopology()
    {
        isDepthAlone = false;
        presetInForce = preset;
    }

    std::array<bool, 2> hasStopped{};
};

} // namespace tarn_test
