// A chain of processing nodes as the user writes it, run on one image.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace mft_core
{
class ITopologyNode;
}

namespace tarn_host
{

// Rows without padding; `bits` is 8 or 16.
struct ImageFrame
{
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t bits = 16;
    std::vector<std::uint16_t> levels;
};

// Nodes in the order in which the frame passes them: "crop:434x434 > sharpen > 10to8". Confined.
class NodeChain
{
  public:
    // Throws UsageError that names the step: unknown, a value that is missing or wrong, sizes that the node refuses.
    NodeChain(std::string_view text, std::uint32_t inputWidth, std::uint32_t inputHeight);
    ~NodeChain();
    NodeChain(const NodeChain &) = delete;
    NodeChain &operator=(const NodeChain &) = delete;

    // `input` is a 16-bit frame of the size given to the constructor. Needs a PlatformSession. Throws HostError when
    // the platform fails or a node drops the frame.
    ImageFrame Run(const ImageFrame &input) const;

    // One line per step, for --help.
    static std::string Help();

  private:
    class End;
    using NodePtr = std::shared_ptr<mft_core::ITopologyNode>;
    struct Step
    {
        std::string text;
        std::function<NodePtr(NodePtr successor)> make;
    };

    void Add(const std::string &text);
    void AddCopy(const std::string &text, std::string_view value);
    void AddSized(const std::string &text, std::string_view name, std::string_view value);
    void AddInPlaceSize(const std::string &text, std::string_view name, std::string_view value);
    void Build();

    ImageFrame size; // after the steps so far
    std::vector<Step> steps;
    std::shared_ptr<End> end;
    NodePtr first;
};

} // namespace tarn_host
