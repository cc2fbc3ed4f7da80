#include "bench/Task.h"

namespace tarn_bench
{
const char *KindName(Kind kind)
{
    switch (kind)
    {
    case Kind::TenToEight:
        return "10 to 8 bits";
    case Kind::Confidence:
        return "confidence";
    case Kind::Threshold:
        return "threshold";
    case Kind::Resize:
        return "resize";
    case Kind::Crop:
        return "crop";
    case Kind::PlaneCopy:
        return "plane copy";
    case Kind::DepthMove:
        return "depth move";
    case Kind::Median:
        return "median crop";
    case Kind::Sharpen:
        return "sharpen";
    case Kind::FaceLogin:
        return "face login";
    }
    return "";
}

std::size_t Task::InputSize() const
{
    return InPlace() ? 0 : inputWidth * inputHeight * 2;
}

std::size_t Task::OutputSize() const
{
    switch (kind)
    {
    case Kind::DepthMove:
        return outputWidth * outputHeight * 4;
    case Kind::Median: // the last row's whole runs
        return OutputPitch() * outputHeight + 16;
    default:
        return OutputPitch() * outputHeight;
    }
}

bool Task::InPlace() const
{
    return kind == Kind::Confidence || kind == Kind::Threshold || kind == Kind::DepthMove;
}

std::size_t Task::OutputPixelSize() const
{
    return kind == Kind::TenToEight || kind == Kind::Confidence || kind == Kind::FaceLogin ? 1 : 2;
}

std::size_t Task::OutputPitch() const
{
    return outputWidth * OutputPixelSize();
}

std::size_t Task::Border() const
{
    switch (kind)
    {
    case Kind::Median:
        return 1; // a peer repeats the rectangle's edge where we read the frame
    case Kind::Sharpen:
        return 4;
    case Kind::FaceLogin: // both of these, after the crop to the inner rectangle removed them
        return 0;
    default:
        return 0;
    }
}

std::vector<Task> AllTasks()
{
    std::vector<Task> tasks;
    struct Size
    {
        const char *name;
        std::size_t width, height;
    };
    for (const Size &size : {Size{"640x480", 640, 480}, Size{"1280x720", 1280, 720}, Size{"1920x1080", 1920, 1080}})
    {
        for (const Kind kind : {Kind::TenToEight, Kind::Confidence, Kind::Threshold, Kind::PlaneCopy, Kind::DepthMove})
        {
            tasks.push_back({kind, size.name, size.width, size.height, size.width, size.height});
        }
    }
    tasks.push_back({Kind::Crop, "434 to 415", kFaceCrop, kFaceCrop, kFaceInner, kFaceInner});
    tasks.push_back({Kind::Crop, "1920x1080 to 1280x720", 1920, 1080, 1280, 720});
    tasks.push_back({Kind::Resize, "415 to 360", kFaceInner, kFaceInner, kFaceOutput, kFaceOutput});
    tasks.push_back({Kind::Resize, "1920x1080 to 1280x720", 1920, 1080, 1280, 720});
    tasks.push_back({Kind::Median, "434 of 640x480", 640, 480, kFaceCrop, kFaceCrop});
    tasks.push_back({Kind::Median, "1912x1072 of 1920x1080", 1920, 1080, 1912, 1072});
    tasks.push_back({Kind::Sharpen, "434x434", kFaceCrop, kFaceCrop, kFaceCrop, kFaceCrop});
    tasks.push_back({Kind::Sharpen, "1280x720", 1280, 720, 1280, 720});
    tasks.push_back({Kind::FaceLogin, "640x480 to 360x360", 640, 480, kFaceOutput, kFaceOutput});
    return tasks;
}
} // namespace tarn_bench
