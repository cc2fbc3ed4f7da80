#include "tools/nodes/NodeChain.h"

#include "platform/MediaFoundation.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "core/ITopologyNode.h"
#include "nodes/CropMmTopologyNode.h"
#include "nodes/SharpeningTopologyNode.h"
#include "device/nodes/TarnConfidenceMapTopologyNode.h"
#include "device/nodes/TarnIr10to8TopologyNode.h"
#include "nodes/Crop16BitTopologyNode.h"
#include "nodes/ImageResizeTopologyNode.h"
#include "nodes/ImageThresholdTopologyNode.h"
#include "nodes/SampleCopyTopologyNode.h"
#include "tools/command/ExitCode.h"
#include "media/MediaBufferWrapper.h"

namespace tarn_host
{

using namespace mft_core;

namespace
{

std::string_view Trimmed(std::string_view text)
{
    const std::size_t begin = text.find_first_not_of(' ');
    return begin == std::string_view::npos ? std::string_view{}
                                           : text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

[[noreturn]] void Refuse(const std::string &step, const std::string &reason)
{
    throw UsageError("step '" + step + "': " + reason);
}

template <class Number>
Number ParseNumber(const std::string &step, std::string_view text, const char *wanted)
{
    Number number{};
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || stop != text.data() + text.size())
    {
        Refuse(step, std::string("needs ") + wanted);
    }
    return number;
}

struct Pair
{
    std::string_view first, second;
};

Pair SplitAt(const std::string &step, std::string_view text, char separator, const char *wanted)
{
    const std::size_t position = text.find(separator);
    if (position == std::string_view::npos)
    {
        Refuse(step, std::string("needs ") + wanted);
    }
    return {text.substr(0, position), text.substr(position + 1)};
}

ComPtr<IMFSample> MakeSample(const ImageFrame &input)
{
    const auto bytes = static_cast<DWORD>(input.levels.size() * sizeof(input.levels[0]));
    ComPtr<IMFSample> sample;
    ThrowIfFailed(MFCreateSample(&sample), "MFCreateSample");
    const mft_utils::MediaBufferWrapper buffer(bytes);
    std::memcpy(buffer.data, input.levels.data(), bytes);
    ThrowIfFailed(sample->AddBuffer(buffer.mediaBuffer.Get()), "AddBuffer");
    return sample;
}

} // namespace

// Takes the result's bytes.
class NodeChain::End : public ITopologyNode
{
  public:
    End() : ITopologyNode(nullptr, "End of the chain") {}
    HRESULT ProcessSample(IMFSample *sample) override
    {
        const mft_utils::MediaBufferWrapper buffer(sample);
        bytes.assign(buffer.data, buffer.data + buffer.length);
        return S_OK;
    }

    std::vector<BYTE> bytes;
};

NodeChain::NodeChain(std::string_view text, std::uint32_t inputWidth, std::uint32_t inputHeight)
    : size{inputWidth, inputHeight, 16, {}}, end(std::make_shared<End>())
{
    for (std::size_t begin = 0; begin <= text.size();)
    {
        const std::size_t stop = std::min(text.find('>', begin), text.size());
        Add(std::string(Trimmed(text.substr(begin, stop - begin))));
        begin = stop + 1;
    }
    Build();
}

NodeChain::~NodeChain() = default;

ImageFrame NodeChain::Run(const ImageFrame &input) const
{
    end->bytes.clear();
    first->Process(MakeSample(input).Get());

    ImageFrame result = size;
    const std::size_t count = std::size_t{size.width} * size.height;
    if (end->bytes.size() < count * size.bits / 8)
    {
        throw HostError("a node dropped the frame; the lines above say which and why");
    }
    result.levels.resize(count);
    if (size.bits == 8)
    {
        std::copy_n(end->bytes.begin(), count, result.levels.begin());
    }
    else
    {
        std::memcpy(result.levels.data(), end->bytes.data(), count * sizeof(result.levels[0]));
    }
    return result;
}

std::string NodeChain::Help()
{
    return "Steps, joined by '>':\n"
           "  copy:OFFSET,LENGTH  part of the frame, as fractions of its height\n"
           "  crop:WxH            centred rectangle\n"
           "  median:WxH          centred rectangle, each pixel the median of its 3x3 neighbours; rows at a pitch of "
           "H\n"
           "  sharpen             unsharp mask\n"
           "  resize:WxH          bilinear\n"
           "  threshold:N         clamp from above\n"
           "  confidence          frame of a confidence plane above a depth plane becomes depth\n"
           "  10to8               10 of 16 bits become 8; last\n";
}

void NodeChain::Add(const std::string &text)
{
    const std::size_t colon = std::min(text.find(':'), text.size());
    const std::string_view name = Trimmed(std::string_view(text).substr(0, colon));
    const std::string_view value = colon < text.size() ? Trimmed(std::string_view(text).substr(colon + 1)) : "";
    if (size.bits != 16)
    {
        Refuse(text, "10to8 must be the last step");
    }
    if (name == "copy")
    {
        AddCopy(text, value);
    }
    else if (name == "crop" || name == "median" || name == "resize")
    {
        AddSized(text, name, value);
    }
    else if (name == "sharpen" || name == "threshold" || name == "confidence" || name == "10to8")
    {
        AddInPlaceSize(text, name, value);
    }
    else
    {
        Refuse(text, "no such step; use copy, crop, median, sharpen, resize, threshold, confidence or 10to8");
    }
}

void NodeChain::AddCopy(const std::string &text, std::string_view value)
{
    constexpr const char *wanted = "two fractions, like copy:0.5,0.5";
    const auto [offsetText, lengthText] = SplitAt(text, value, ',', wanted);
    const auto offset = ParseNumber<double>(text, offsetText, wanted);
    const auto length = ParseNumber<double>(text, lengthText, wanted);
    const double rows = size.height * length;
    if (rows != std::floor(rows))
    {
        Refuse(text, "does not end at a row");
    }
    steps.push_back({text, [=](const NodePtr &next) {
                         return std::make_shared<SampleCopyTopologyNode>(next, offset, length, "Copy");
                     }});
    size.height = static_cast<std::uint32_t>(std::max(rows, 0.0));
}

void NodeChain::AddSized(const std::string &text, std::string_view name, std::string_view value)
{
    constexpr const char *wanted = "a size, like 360x360";
    const auto [widthText, heightText] = SplitAt(text, value, 'x', wanted);
    const auto width = ParseNumber<std::uint16_t>(text, widthText, wanted);
    const auto height = ParseNumber<std::uint16_t>(text, heightText, wanted);
    const ImageFrame in{size.width, size.height, 16, {}};
    size.width = width;
    size.height = height;
    if (name == "crop")
    {
        steps.push_back({text, [=](const NodePtr &next) {
                             return std::make_shared<Crop16BitTopologyNode>(next, in.width, in.height, width, height);
                         }});
    }
    else if (name == "resize")
    {
        steps.push_back({text, [=](const NodePtr &next) {
                             return std::make_shared<ImageResizeTopologyNode>(next, in.width, in.height, width, height);
                         }});
    }
    else
    {
        steps.push_back({text, [=](const NodePtr &next) {
                             return std::make_shared<CropMmTopologyNode>(next, static_cast<std::int32_t>(in.width),
                                                                         static_cast<std::int32_t>(in.height), width,
                                                                         height);
                         }});
        size.width = height; // the pitch of its rows
    }
}

void NodeChain::AddInPlaceSize(const std::string &text, std::string_view name, std::string_view value)
{
    const auto width = static_cast<std::int32_t>(size.width);
    const auto height = static_cast<std::int32_t>(size.height);
    if (name == "threshold")
    {
        const auto threshold = ParseNumber<std::uint16_t>(text, value, "a value from 0 to 65535");
        const ImageFrame in{size.width, size.height, 16, {}};
        steps.push_back({text, [=](const NodePtr &next) {
                             return std::make_shared<ImageThresholdTopologyNode>(next, in.width, in.height, threshold);
                         }});
        return;
    }
    if (!value.empty())
    {
        Refuse(text, "takes no value");
    }
    if (name == "sharpen")
    {
        steps.push_back(
            {text, [=](const NodePtr &next) { return std::make_shared<SharpeningTopologyNode>(next, width, height); }});
    }
    else if (name == "confidence")
    {
        if (height % 2 != 0)
        {
            Refuse(text, "needs an even height");
        }
        const auto mapState = std::make_shared<ConfidenceMapState>();
        steps.push_back({text, [=](const NodePtr &next) {
                             return std::make_shared<TarnConfidenceMapTopologyNode>(next, width, height / 2, mapState);
                         }});
        size.height /= 2;
    }
    else
    {
        steps.push_back({text, [=](const NodePtr &next) {
                             return std::make_shared<TarnIr10to8TopologyNode>(next, width, height);
                         }});
        size.bits = 8;
    }
}

// From the back: each node is given its successor.
void NodeChain::Build()
{
    first = end;
    for (auto step = steps.rbegin(); step != steps.rend(); ++step)
    {
        try
        {
            first = step->make(first);
        }
        catch (const std::invalid_argument &error)
        {
            Refuse(step->text, error.what());
        }
    }
}

} // namespace tarn_host
