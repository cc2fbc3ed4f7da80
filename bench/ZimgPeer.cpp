// The same work in zimg: depth conversion and bilinear resize.
#include "bench/Task.h"

#include <zimg.h>

#include <cstdlib>
#include <memory>
#include <stdexcept>

namespace tarn_bench
{
namespace
{
struct Graph
{
    zimg_filter_graph *graph;
    void *temporary;

    Graph(const zimg_image_format &from, const zimg_image_format &to)
    {
        zimg_graph_builder_params parameters;
        zimg_graph_builder_params_default(&parameters, ZIMG_API_VERSION);
        parameters.resample_filter = ZIMG_RESIZE_BILINEAR;
        parameters.dither_type = ZIMG_DITHER_NONE;
        parameters.cpu_type = ZIMG_CPU_AUTO_64B;
        graph = zimg_filter_graph_build(&from, &to, &parameters);
        std::size_t size = 0;
        if (graph == nullptr || zimg_filter_graph_get_tmp_size(graph, &size) != ZIMG_ERROR_SUCCESS)
        {
            throw std::runtime_error("zimg cannot build the graph");
        }
        temporary = std::aligned_alloc(64, (size + 64) / 64 * 64);
    }
    ~Graph()
    {
        zimg_filter_graph_free(graph);
        std::free(temporary);
    }
    Graph(const Graph &) = delete;
    Graph &operator=(const Graph &) = delete;

    void Run(const std::uint8_t *in, std::size_t inPitch, std::uint8_t *out, std::size_t outPitch) const
    {
        zimg_image_buffer_const source{};
        source.version = ZIMG_API_VERSION;
        source.plane[0].data = in;
        source.plane[0].stride = static_cast<ptrdiff_t>(inPitch);
        source.plane[0].mask = ZIMG_BUFFER_MAX;
        zimg_image_buffer target{};
        target.version = ZIMG_API_VERSION;
        target.plane[0].data = out;
        target.plane[0].stride = static_cast<ptrdiff_t>(outPitch);
        target.plane[0].mask = ZIMG_BUFFER_MAX;
        zimg_filter_graph_process(graph, &source, &target, temporary, nullptr, nullptr, nullptr, nullptr);
    }
};

zimg_image_format Grey(std::size_t width, std::size_t height, zimg_pixel_type_e type, unsigned depth)
{
    zimg_image_format format;
    zimg_image_format_default(&format, ZIMG_API_VERSION);
    format.width = static_cast<unsigned>(width);
    format.height = static_cast<unsigned>(height);
    format.pixel_type = type;
    format.depth = depth;
    format.color_family = ZIMG_COLOR_GREY;
    format.pixel_range = ZIMG_RANGE_FULL;
    return format;
}
} // namespace

void AddZimg(const Task &task, std::vector<Contender> &contenders)
{
    const bool convert = task.kind == Kind::TenToEight;
    const bool aligned = 2 * task.inputWidth % 64 == 0 && task.OutputPitch() % 64 == 0; // what it asks of rows
    if (!aligned || (!convert && task.kind != Kind::Resize))
    {
        return;
    }
    const zimg_image_format from = Grey(task.inputWidth, task.inputHeight, ZIMG_PIXEL_WORD, convert ? 10 : 16);
    const zimg_image_format to =
        Grey(task.outputWidth, task.outputHeight, convert ? ZIMG_PIXEL_BYTE : ZIMG_PIXEL_WORD, convert ? 8 : 16);
    auto graph = std::make_shared<Graph>(from, to);
    contenders.push_back({"zimg", [task, graph](const Slot &s) {
                              graph->Run(s.input, 2 * task.inputWidth, s.output, task.OutputPitch());
                          }});
}
} // namespace tarn_bench
