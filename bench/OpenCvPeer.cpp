// The same work in OpenCV calls, one thread.
#include "bench/Task.h"

#include "kernels/SharpenWeights.h"

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <memory>

namespace tarn_bench
{
namespace
{
cv::Mat Wrap(const std::uint8_t *bytes, std::size_t width, std::size_t height, int type)
{
    return cv::Mat(static_cast<int>(height), static_cast<int>(width), type, const_cast<std::uint8_t *>(bytes));
}

cv::Rect Centre(std::size_t width, std::size_t height, std::size_t newWidth, std::size_t newHeight)
{
    return cv::Rect(static_cast<int>((width - newWidth) / 2), static_cast<int>((height - newHeight) / 2),
                    static_cast<int>(newWidth), static_cast<int>(newHeight));
}

cv::Mat GaussianTaps()
{
    cv::Mat taps(1, static_cast<int>(mft_kernels::kSharpenTaps), CV_32F);
    for (std::size_t k = 0; k < mft_kernels::kSharpenTaps; ++k)
    {
        taps.at<float>(static_cast<int>(k)) = mft_kernels::kSharpenWeights[k];
    }
    return taps;
}

// Blurs in floats and adds the difference, the shortest way in OpenCV's calls.
struct SharpenState
{
    cv::Mat taps = GaussianTaps();
    cv::Mat blurred;

    void Run(const cv::Mat &in, cv::Mat &out)
    {
        cv::sepFilter2D(in, blurred, CV_32F, taps, taps);
        cv::addWeighted(in, 1.85, blurred, -0.85, 0, out, CV_16S);
        cv::max(out, 0, out);
    }
};

struct ChainState
{
    SharpenState sharpen;
    cv::Mat median, sharp, inner, small;

    void Run(const Task &t, const Slot &s)
    {
        const cv::Mat in = Wrap(s.input, t.inputWidth, t.inputHeight, CV_16SC1);
        cv::medianBlur(in(Centre(t.inputWidth, t.inputHeight, kFaceCrop, kFaceCrop)), median, 3);
        sharpen.Run(median, sharp);
        sharp(Centre(kFaceCrop, kFaceCrop, kFaceInner, kFaceInner)).copyTo(inner);
        const cv::Mat unsignedInner(inner.rows, inner.cols, CV_16UC1, inner.data, inner.step);
        const int size = static_cast<int>(kFaceOutput);
        cv::resize(unsignedInner, small, cv::Size(size, size), 0, 0, cv::INTER_LINEAR);
        cv::threshold(small, small, kFaceThreshold, 0, cv::THRESH_TRUNC);
        cv::Mat out = Wrap(s.output, kFaceOutput, kFaceOutput, CV_8UC1);
        small.convertTo(out, CV_8U, 255.0 / 1023);
    }
};

std::function<void(const Slot &)> MakeRun(const Task &t)
{
    switch (t.kind)
    {
    case Kind::TenToEight:
        return [t](const Slot &s) {
            cv::Mat out = Wrap(s.output, t.outputWidth, t.outputHeight, CV_8UC1);
            Wrap(s.input, t.inputWidth, t.inputHeight, CV_16UC1).convertTo(out, CV_8U, 255.0 / 1023);
        };
    case Kind::Confidence:
        return [t](const Slot &s) {
            cv::Mat image = Wrap(s.output, t.outputWidth, t.outputHeight, CV_8UC1);
            cv::subtract(image, 15, image);
            cv::min(image, 127, image);
            image.convertTo(image, CV_8U, 0.125, -0.4375);
        };
    case Kind::Threshold:
        return [t](const Slot &s) {
            cv::Mat image = Wrap(s.output, t.outputWidth, t.outputHeight, CV_16UC1);
            cv::threshold(image, image, 30000, 0, cv::THRESH_TRUNC);
        };
    case Kind::Resize:
        return [t](const Slot &s) {
            cv::Mat out = Wrap(s.output, t.outputWidth, t.outputHeight, CV_16UC1);
            cv::resize(Wrap(s.input, t.inputWidth, t.inputHeight, CV_16UC1), out, out.size(), 0, 0, cv::INTER_LINEAR);
        };
    case Kind::Crop:
    case Kind::PlaneCopy:
        return [t](const Slot &s) {
            cv::Mat out = Wrap(s.output, t.outputWidth, t.outputHeight, CV_16UC1);
            const cv::Rect rectangle = Centre(t.inputWidth, t.inputHeight, t.outputWidth, t.outputHeight);
            Wrap(s.input, t.inputWidth, t.inputHeight, CV_16UC1)(rectangle).copyTo(out);
        };
    case Kind::Median:
        return [t](const Slot &s) {
            const cv::Rect rectangle = Centre(t.inputWidth, t.inputHeight, t.outputWidth, t.outputHeight);
            cv::Mat out = Wrap(s.output, t.outputWidth, t.outputHeight, CV_16SC1);
            cv::medianBlur(Wrap(s.input, t.inputWidth, t.inputHeight, CV_16SC1)(rectangle), out, 3);
        };
    case Kind::Sharpen: {
        auto state = std::make_shared<SharpenState>();
        return [t, state](const Slot &s) {
            cv::Mat out = Wrap(s.output, t.outputWidth, t.outputHeight, CV_16SC1);
            state->Run(Wrap(s.input, t.inputWidth, t.inputHeight, CV_16SC1), out);
        };
    }
    case Kind::FaceLogin: {
        auto state = std::make_shared<ChainState>();
        return [t, state](const Slot &s) { state->Run(t, s); };
    }
    case Kind::DepthMove:
        break; // no call for overlapping memory
    }
    return {};
}
} // namespace

void AddOpenCv(const Task &task, std::vector<Contender> &contenders)
{
    cv::setNumThreads(1);
    if (auto run = MakeRun(task))
    {
        contenders.push_back({"opencv", std::move(run)});
    }
}
} // namespace tarn_bench
