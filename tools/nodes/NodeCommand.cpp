#include "tools/nodes/NodeCommand.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <fstream>
#include <iostream>

#include "sim/PngImage.h"
#include "tools/pictures/LevelScale.h"
#include "tools/nodes/NodeChain.h"
#include "tools/pictures/Picture.h"
#include "tools/frameserver/PlatformSession.h"
#include "tools/command/Text.h"
#include "trace/DebugTraceSink.h"

namespace tarn_host
{

namespace
{

ImageFrame ReadImage(const std::filesystem::path &path)
{
    try
    {
        tarn_sim::GreyImage image = tarn_sim::ReadGreyPng(path);
        return {image.width, image.height, 16, std::move(image.pixels)};
    }
    catch (const std::runtime_error &error)
    {
        throw UsageError(error.what());
    }
}

// Binary PGM of 16 bits, high byte first.
void SavePgm(const ImageFrame &frame, const std::filesystem::path &path)
{
    std::ofstream file(path, std::ios::binary);
    file << "P5\n" << frame.width << ' ' << frame.height << '\n' << (frame.bits == 8 ? 255 : 65535) << '\n';
    for (const std::uint16_t level : frame.levels)
    {
        if (frame.bits == 16)
        {
            file.put(static_cast<char>(level >> 8));
        }
        file.put(static_cast<char>(level & 0xFF));
    }
    file.close();
    if (!file)
    {
        throw HostError("cannot write " + ToText(path));
    }
}

template <class ColourOf>
void SavePicture(const ImageFrame &frame, const std::filesystem::path &path, const ColourOf &colourOf)
{
    Picture picture(frame.width, frame.height, Rgb{});
    for (std::size_t i = 0; i < frame.levels.size(); ++i)
    {
        picture.Set(i % frame.width, i / frame.width, colourOf(frame.levels[i]));
    }
    picture.SavePng(path);
}

Rgb Grey(std::uint32_t brightness)
{
    const auto part = static_cast<std::uint8_t>(std::min(brightness, 255u));
    return {part, part, part};
}

} // namespace

void NodeCommand::AddOptions(CLI::App &app)
{
    app.add_option("--in", input, "single-channel PNG of 8 or 16 bits, taken as a 16-bit frame")
        ->required()
        ->type_name("FILE");
    app.add_option("--chain", chain, NodeChain::Help())->required()->type_name("STEPS");
    app.add_option("--out", output, "*.pgm: the values as they are; *.png: 8 bits in grey, 16 bits in false colour")
        ->required()
        ->type_name("FILE");
    app.add_flag("--grey", grey, "16 bits in grey too, scaled to the brightest pixels");
}

ExitCode NodeCommand::Run()
{
    const std::filesystem::path outputPath = ToPath(output);
    if (outputPath.extension() != ".png" && outputPath.extension() != ".pgm")
    {
        throw UsageError("--out: '" + output + "' ends neither in .png nor in .pgm");
    }
    const ImageFrame frame = ReadImage(ToPath(input));
    const PlatformSession platform;
    mft_utils::DebugTraceSink::Instance().Configure("error,file=stderr");
    const NodeChain nodes(chain, frame.width, frame.height);
    const ImageFrame result = nodes.Run(frame);
    Save(result, outputPath);
    std::cout << output << ": " << result.width << "x" << result.height << ", " << result.bits << " bits\n";
    return ExitCode::Success;
}

void NodeCommand::Save(const ImageFrame &frame, const std::filesystem::path &path) const
{
    if (path.extension() == ".pgm")
    {
        SavePgm(frame, path);
        return;
    }
    if (frame.bits == 8)
    {
        SavePicture(frame, path, [](std::uint16_t level) { return Grey(level); });
        return;
    }
    Thumbnail whole;
    whole.width = frame.width;
    whole.height = frame.height;
    whole.pixels = grey ? PixelKind::Grey16 : PixelKind::Depth16;
    whole.levels = frame.levels;
    if (grey)
    {
        const std::uint32_t white = LevelRange::Of(PixelKind::Grey16, {whole}).high;
        SavePicture(frame, path, [white](std::uint16_t level) { return Grey(level * 255u / white); });
        return;
    }
    const LevelScale scale(PixelKind::Depth16, {whole});
    SavePicture(frame, path, [&](std::uint16_t level) { return scale.ColourOf(level); });
}

} // namespace tarn_host
