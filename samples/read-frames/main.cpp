// Finds the Tarn depth camera, asks its device transform for a private property, and prints what the camera says of
// each frame. Exit code 0: frames were read, 1: something failed or there is no camera.
#include <windows.h>

#include <mfapi.h>
#include <mfidl.h>
#include <mfreadwrite.h>

#include <ks.h>
#include <ksproxy.h>

#include <cstdio>
#include <cstring>

#include <tarn/frame_metadata.h>
#include <tarn/sample_attributes.h>
#include <tarn/tarn_dmft.h>

namespace
{

// The depth filter is a sensor camera, which is not among the webcams.
constexpr GUID kSensorCameras = {0x24E552D7, 0x6523, 0x47F7, {0xA6, 0x47, 0xD3, 0x46, 0x5B, 0xF1, 0xF5, 0xCA}};
constexpr GUID kKsControl = {0x28F54685, 0x06FD, 0x11D2, {0xB2, 0x7A, 0x00, 0xA0, 0xC9, 0x22, 0x31, 0x96}};
constexpr int kFrames = 30;

// Holds a COM object for the length of a block.
template <class T>
class Held
{
  public:
    Held() = default;
    Held(const Held &) = delete;
    Held &operator=(const Held &) = delete;
    ~Held()
    {
        if (object != nullptr)
        {
            object->Release();
        }
    }
    T *operator->() const
    {
        return object;
    }
    operator T *() const
    {
        return object;
    }
    T **operator&()
    {
        return &object;
    }
    void **AsVoid()
    {
        return reinterpret_cast<void **>(&object);
    }

  private:
    T *object = nullptr;
};

bool Succeeded(const char *step, HRESULT hr)
{
    if (FAILED(hr))
    {
        std::fprintf(stderr, "%s failed: 0x%08lX\n", step, static_cast<unsigned long>(hr));
    }
    return SUCCEEDED(hr);
}

// Only the Tarn transform answers this property; a camera that has none of it is another one.
bool IsTarn(IMFMediaSource *source)
{
    Held<IKsControl> control;
    KSPROPERTY request = {};
    request.Set = KSPROPERTYSETID_TARN_DMFT_CONTROL;
    request.Id = KSPROPERTY_TARN_DMFT_CONTROL_API_VERSION;
    request.Flags = KSPROPERTY_TYPE_GET;
    KSPROPERTY_TARN_API_VERSION version = {};
    ULONG returned = 0;
    // Not FAILED: a driver that does not know the set answers with a positive number.
    if (FAILED(source->QueryInterface(kKsControl, control.AsVoid())) ||
        control->KsProperty(&request, sizeof(request), &version, sizeof(version), &returned) != S_OK ||
        version.first != TARN_API_VERSION_FIRST)
    {
        return false;
    }
    std::printf("interface version %u.%u\n", version.first, version.second);
    return true;
}

// Gives the caller a reference on the first Tarn depth camera; null when there is none.
IMFMediaSource *OpenCamera()
{
    Held<IMFAttributes> wanted;
    IMFActivate **devices = nullptr;
    UINT32 count = 0;
    if (!Succeeded("MFCreateAttributes", MFCreateAttributes(&wanted, 2)) ||
        !Succeeded("SetGUID", wanted->SetGUID(MF_DEVSOURCE_ATTRIBUTE_SOURCE_TYPE,
                                              MF_DEVSOURCE_ATTRIBUTE_SOURCE_TYPE_VIDCAP_GUID)) ||
        !Succeeded("SetGUID", wanted->SetGUID(MF_DEVSOURCE_ATTRIBUTE_SOURCE_TYPE_VIDCAP_CATEGORY, kSensorCameras)) ||
        !Succeeded("MFEnumDeviceSources", MFEnumDeviceSources(wanted, &devices, &count)))
    {
        return nullptr;
    }
    IMFMediaSource *found = nullptr;
    for (UINT32 index = 0; index < count; ++index)
    {
        IMFMediaSource *source = nullptr;
        if (found == nullptr && SUCCEEDED(devices[index]->ActivateObject(IID_PPV_ARGS(&source))))
        {
            if (IsTarn(source))
            {
                found = source;
            }
            else
            {
                source->Shutdown();
                source->Release();
            }
        }
        devices[index]->Release();
    }
    CoTaskMemFree(devices);
    return found;
}

void Print(IMFSample *sample, LONGLONG time)
{
    UINT8 blob[1024];
    UINT32 length = 0;
    TARN_FRAME_METADATA record = {};
    // Later versions of the record are longer.
    if (FAILED(sample->GetBlob(TARN_SAMPLE_FRAME_METADATA, blob, sizeof(blob), &length)) || length < sizeof(record))
    {
        std::printf("%10.3f s  no record\n", static_cast<double>(time) / 1e7);
        return;
    }
    std::memcpy(&record, blob, sizeof(record));
    std::printf("%10.3f s  frame %llu  %ux%u  exposure %u us  laser %s  %.1f C\n", static_cast<double>(time) / 1e7,
                static_cast<unsigned long long>(record.frameCounter), record.width, record.height, record.exposureUs,
                record.illumination != 0 ? "on" : "off", record.temperatureDeciC / 10.0);
}

bool ReadFrames(IMFMediaSource *camera)
{
    Held<IMFSourceReader> reader;
    if (!Succeeded("MFCreateSourceReaderFromMediaSource",
                   MFCreateSourceReaderFromMediaSource(camera, nullptr, &reader)))
    {
        return false;
    }
    for (int frames = 0; frames < kFrames;)
    {
        Held<IMFSample> sample;
        DWORD stream = 0;
        DWORD flags = 0;
        LONGLONG time = 0;
        const DWORD first = static_cast<DWORD>(MF_SOURCE_READER_FIRST_VIDEO_STREAM); // depth
        if (!Succeeded("ReadSample", reader->ReadSample(first, 0, &stream, &flags, &time, &sample)))
        {
            return false;
        }
        if ((flags & (MF_SOURCE_READERF_ERROR | MF_SOURCE_READERF_ENDOFSTREAM)) != 0)
        {
            std::fprintf(stderr, "the camera ended the stream\n");
            return false;
        }
        if (sample != nullptr) // else a tick without a frame
        {
            Print(sample, time);
            ++frames;
        }
    }
    return true;
}

bool Run()
{
    IMFMediaSource *const camera = OpenCamera();
    if (camera == nullptr)
    {
        std::fprintf(stderr, "no Tarn depth camera\n");
        return false;
    }
    const bool read = ReadFrames(camera);
    camera->Shutdown();
    camera->Release();
    return read;
}

} // namespace

int main()
{
    if (!Succeeded("CoInitializeEx", CoInitializeEx(nullptr, COINIT_MULTITHREADED)) ||
        !Succeeded("MFStartup", MFStartup(MF_VERSION, MFSTARTUP_LITE)))
    {
        return 1;
    }
    const bool read = Run();
    MFShutdown();
    CoUninitialize();
    return read ? 0 : 1;
}
