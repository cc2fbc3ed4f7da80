// The test frame server over a depth transform, with a work queue for the frames and the application's properties.
#pragma once

#include <string>

#include "platform/ExtendedCameraControl.h"
#include "platform/RealTimeClientEx.h"

#include "tarn/tarn_dmft.h"
#include "tarn/tarn_formats.h"
#include "tests/support/TestFrameServer.h"
#include "media/MediaTypeParser.h"

namespace tarn_test
{

inline constexpr DWORD kDepth = 0;
inline constexpr DWORD kInfrared = 1;

class DepthFrameServer : public TestFrameServer
{
  public:
    DepthFrameServer(const ComPtr<IMFDeviceTransform> &deviceTransform,
                     const ComPtr<tarn_sim::SimulatedCamera> &simulatedCamera)
        : TestFrameServer(deviceTransform, simulatedCamera)
    {
        EXPECT_HR(S_OK, MFAllocateWorkQueueEx(MF_MULTITHREADED_WORKQUEUE, &workQueue));
        ComPtr<IMFRealTimeClientEx> client;
        EXPECT_HR(S_OK, transform.As(&client));
        EXPECT_HR(S_OK, client->SetWorkQueueEx(workQueue, 0));
    }
    ~DepthFrameServer() override
    {
        camera->Pins().SetFrameSink(nullptr);
        {
            ComPtr<IMFShutdown> shutdown;
            EXPECT_HR(S_OK, transform.As(&shutdown));
            EXPECT_HR(S_OK, shutdown->Shutdown());
        }
        EXPECT_HR(S_OK, MFUnlockWorkQueue(workQueue)); // only now does no frame need it
    }

    // The output's type of that size and rate; null when it has none.
    ComPtr<IMFMediaType> FindType(DWORD output, UINT32 width, UINT32 height, UINT32 fps)
    {
        for (DWORD index = 0;; ++index)
        {
            ComPtr<IMFMediaType> type;
            if (FAILED(transform->GetOutputAvailableType(output, index, &type)))
            {
                return nullptr;
            }
            mft_utils::MediaTypeData data;
            EXPECT_HR(S_OK, mft_utils::MediaTypeParser::GetMediaTypeData(data, type.Get()));
            if (data.width == width && data.height == height && data.FPS() == fps)
            {
                return type;
            }
        }
    }

    HRESULT Run(DWORD output, UINT32 width, UINT32 height, UINT32 fps)
    {
        const HRESULT result = transform->SetOutputStreamState(output, FindType(output, width, height, fps).Get(),
                                                               DeviceStreamState_Run, 0);
        Pump();
        return result;
    }

    // What the pin runs with, for example "INZI 640x480@30"; "stopped" when it does not run.
    std::string Pin()
    {
        if (camera->Pins().GetPinState(0) != DeviceStreamState_Run)
        {
            return "stopped";
        }
        ComPtr<IMFMediaType> type;
        EXPECT_HR(S_OK, transform->GetInputCurrentType(0, &type));
        GUID subtype{};
        EXPECT_HR(S_OK, type->GetGUID(MF_MT_SUBTYPE, &subtype));
        mft_utils::MediaTypeData data;
        EXPECT_HR(S_OK, mft_utils::MediaTypeParser::GetMediaTypeData(data, type.Get()));
        std::string text(reinterpret_cast<const char *>(&subtype.Data1), sizeof(subtype.Data1));
        return text + ' ' + std::to_string(data.width) + 'x' + std::to_string(data.height) + '@' +
               std::to_string(data.FPS());
    }

    // Has the camera deliver frames and waits for as many samples of the output.
    std::vector<ComPtr<IMFSample>> StepAndCollect(DWORD output, std::uint32_t frames)
    {
        EXPECT_HR(S_OK, camera->Pins().Step(0, frames));
        return WaitForSamples(output, frames);
    }

    std::vector<ComPtr<IMFSample>> WaitForSamples(DWORD output, std::size_t count)
    {
        std::vector<ComPtr<IMFSample>> samples;
        EXPECT_TRUE(WaitUntil([&] {
            for (auto &sample : CollectAll(output))
            {
                samples.push_back(sample);
            }
            return samples.size() >= count;
        })) << samples.size()
            << " of " << count << " samples";
        Pump();
        return samples;
    }

    HRESULT SendProperty(const GUID &set, ULONG id, ULONG flags, void *data, ULONG size)
    {
        return SendProperty(transform, set, id, flags, data, size);
    }
    static HRESULT SendProperty(const ComPtr<IMFDeviceTransform> &receiver, const GUID &set, ULONG id, ULONG flags,
                                void *data, ULONG size)
    {
        ComPtr<IKsControl> control;
        EXPECT_HR(S_OK, receiver.As(&control));
        KSPROPERTY property{};
        property.Set = set;
        property.Id = id;
        property.Flags = flags;
        ULONG returned = 0;
        return control->KsProperty(&property, sizeof(property), data, size, &returned);
    }

    // One of the private properties that hold a number.
    HRESULT SetProperty(ULONG id, UINT32 value)
    {
        return SendProperty(KSPROPERTYSETID_TARN_DMFT_CONTROL, id, KSPROPERTY_TYPE_SET, &value, sizeof(value));
    }
    UINT32 Property(ULONG id)
    {
        UINT32 value = 0xFFFFFFFF;
        EXPECT_HR(S_OK,
                  SendProperty(KSPROPERTYSETID_TARN_DMFT_CONTROL, id, KSPROPERTY_TYPE_GET, &value, sizeof(value)));
        return value;
    }

    HRESULT SetConfidenceMap(bool enable)
    {
        const HRESULT result = SetProperty(KSPROPERTY_TARN_DMFT_CONTROL_CONFIDENCE_MAP, enable ? 1 : 0);
        Pump();
        return result;
    }
    bool HasConfidenceMap()
    {
        return Property(KSPROPERTY_TARN_DMFT_CONTROL_CONFIDENCE_MAP) != 0;
    }

    HRESULT SetFaceLogin(bool on)
    {
        return SetFaceLogin(transform, on);
    }
    static HRESULT SetFaceLogin(const ComPtr<IMFDeviceTransform> &receiver, bool on)
    {
        struct
        {
            KSCAMERA_EXTENDEDPROP_HEADER header;
            KSCAMERA_EXTENDEDPROP_VALUE value;
        } mode{};
        mode.header.Flags = on ? KSCAMERA_EXTENDEDPROP_FACEAUTH_MODE_ALTERNATIVE_FRAME_ILLUMINATION
                               : KSCAMERA_EXTENDEDPROP_FACEAUTH_MODE_DISABLED;
        return SendProperty(receiver, KSPROPERTYSETID_ExtendedCameraControl,
                            KSPROPERTY_CAMERACONTROL_EXTENDED_FACEAUTH_MODE, KSPROPERTY_TYPE_SET, &mode, sizeof(mode));
    }

    // What applications want.
    UINT32 Preset()
    {
        return Property(KSPROPERTY_TARN_DMFT_CONTROL_DEPTH_PRESETS);
    }

  private:
    DWORD workQueue = 0;
};

inline std::vector<BYTE> PixelsOf(const ComPtr<IMFSample> &sample)
{
    ComPtr<IMFMediaBuffer> buffer;
    EXPECT_HR(S_OK, sample->ConvertToContiguousBuffer(&buffer));
    BYTE *data = nullptr;
    DWORD length = 0;
    EXPECT_HR(S_OK, buffer->Lock(&data, nullptr, &length));
    std::vector<BYTE> pixels(data, data + length);
    EXPECT_HR(S_OK, buffer->Unlock());
    return pixels;
}

template <class Value>
bool HasBlob(const ComPtr<IMFSample> &sample, const GUID &key, Value &value)
{
    UINT32 size = 0;
    return SUCCEEDED(sample->GetBlob(key, reinterpret_cast<UINT8 *>(&value), sizeof(value), &size)) &&
           size == sizeof(value);
}

} // namespace tarn_test
