#include "sim/GeneratedScene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numbers>

namespace tarn_sim
{

namespace
{
// The scene is laid out in a field of 1024 x 768 units: what the whole 4:3 sensor sees, whatever the picture's size.
constexpr std::int32_t kFieldWidth = 1024;
constexpr std::int32_t kFieldHeight = 768;
constexpr std::int32_t kBallRadius = 150;
constexpr std::int32_t kBallDepth = 4400;
constexpr std::int32_t kBlindBand = 24;
constexpr std::int32_t kBoxDepth = 9600;

struct Point
{
    std::int32_t u = 0;
    std::int32_t v = 0;
};

struct Values
{
    std::uint16_t depth = 0;
    std::uint16_t infrared = 0;
    std::uint8_t confidence = 0;
};

const std::array<Point, GeneratedScene::kPictureCount> &BallPath()
{
    static const auto path = [] {
        std::array<Point, GeneratedScene::kPictureCount> points{};
        for (std::size_t i = 0; i < points.size(); ++i)
        {
            const double angle = 2.0 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(points.size());
            points.at(i) = {static_cast<std::int32_t>(std::lround(512.0 + 300.0 * std::cos(angle))),
                            static_cast<std::int32_t>(std::lround(384.0 + 180.0 * std::sin(angle)))};
        }
        return points;
    }();
    return path;
}

Point BallAt(std::uint64_t frame)
{
    return BallPath().at(static_cast<std::size_t>(frame % GeneratedScene::kPictureCount));
}

// The largest centred part of the field that has the picture's ratio.
struct View
{
    View(std::uint32_t width, std::uint32_t height)
        : isWide(std::uint64_t{width} * kFieldHeight >= std::uint64_t{height} * kFieldWidth),
          fieldUnits(isWide ? kFieldWidth : kFieldHeight), pixels(isWide ? width : height),
          left((kFieldWidth - fieldUnits * width / pixels) / 2), top((kFieldHeight - fieldUnits * height / pixels) / 2)
    {
    }

    bool isWide;
    std::int64_t fieldUnits; // and as many pixels
    std::int64_t pixels;
    std::int64_t left;
    std::int64_t top;
};

Point ToField(std::uint32_t x, std::uint32_t y, const View &view)
{
    return {static_cast<std::int32_t>(view.left + x * view.fieldUnits / view.pixels),
            static_cast<std::int32_t>(view.top + y * view.fieldUnits / view.pixels)};
}

// Depth from the ball's own shape, or from what stands behind it.
std::int32_t DepthAt(Point point, const Point *ball, std::int32_t &distanceSquared)
{
    distanceSquared = -1;
    if (point.u < kBlindBand)
    {
        return 0;
    }
    if (ball != nullptr)
    {
        const std::int32_t du = point.u - ball->u;
        const std::int32_t dv = point.v - ball->v;
        const std::int32_t squared = du * du + dv * dv;
        if (squared <= kBallRadius * kBallRadius)
        {
            distanceSquared = squared;
            return kBallDepth + squared * 600 / (kBallRadius * kBallRadius);
        }
    }
    if (point.u >= 620 && point.u < 860 && point.v >= 420 && point.v < 700)
    {
        return kBoxDepth;
    }
    return 7200 + point.u * 12 + point.v;
}

Values ValuesAt(Point point, const Point *ball, bool illuminated)
{
    std::int32_t onBall = -1;
    const std::int32_t depth = DepthAt(point, ball, onBall);

    std::int32_t infrared = depth == 0 ? 40 : 3960000 / depth;
    if ((((point.u >> 5) ^ (point.v >> 5)) & 1) != 0)
    {
        infrared = infrared * 3 / 4;
    }
    if (onBall >= 0 && onBall < 400)
    {
        infrared = 1023; // the highlight saturates
    }
    if (!illuminated)
    {
        infrared /= 8;
    }

    std::int32_t confidence = depth == 0 ? 0 : 255 - depth / 128;
    if (onBall > kBallRadius * kBallRadius * 9 / 10)
    {
        confidence = 18; // edges measure badly
    }
    else if (point.v < 64)
    {
        confidence = point.u / 4; // a ramp over every value
    }
    return {static_cast<std::uint16_t>(depth), static_cast<std::uint16_t>(infrared),
            static_cast<std::uint8_t>(confidence)};
}

Values ValuesOf(const FrameRequest &request, std::uint32_t x, std::uint32_t y)
{
    const Point ball = BallAt(request.number);
    return ValuesAt(ToField(x, y, View(request.width, request.height)), &ball, request.illuminated);
}

void Store16(std::uint8_t *target, std::uint16_t value)
{
    std::memcpy(target, &value, sizeof(value));
}

struct Area
{
    std::uint32_t left = 0;
    std::uint32_t top = 0;
    std::uint32_t right = 0;
    std::uint32_t bottom = 0;
};

void Draw(const FrameRequest &request, Plane plane, const Point *ball, const Area &area, std::uint8_t *pixels)
{
    const View view(request.width, request.height);
    for (std::uint32_t y = area.top; y < area.bottom; ++y)
    {
        const std::size_t row = std::size_t{y} * request.width;
        for (std::uint32_t x = area.left; x < area.right; ++x)
        {
            const Point point = ToField(x, y, view);
            const Values values = ValuesAt(point, ball, request.illuminated);
            switch (plane)
            {
            case Plane::DepthEighthMm:
                Store16(pixels + 2 * (row + x), values.depth);
                break;
            case Plane::Infrared:
                Store16(pixels + 2 * (row + x), values.infrared);
                break;
            case Plane::Confidence:
                pixels[row + x] = values.confidence;
                break;
            case Plane::Yuy2:
                pixels[2 * (row + x)] = static_cast<std::uint8_t>(values.infrared / 4);
                pixels[2 * (row + x) + 1] =
                    static_cast<std::uint8_t>(x % 2 == 0 ? point.u / 4 : point.v / 3); // blue, then red
                break;
            }
        }
    }
}

// The picture's pixels that the ball can cover.
Area AreaOfBall(Point ball, std::uint32_t width, std::uint32_t height)
{
    const View view(width, height);
    const auto toPixels = [&view](std::int64_t distance, std::uint32_t size) {
        return static_cast<std::uint32_t>(std::clamp<std::int64_t>(distance * view.pixels / view.fieldUnits, 0, size));
    };
    const std::int64_t onePixel = 1 + view.fieldUnits / view.pixels;
    return {toPixels(ball.u - view.left - kBallRadius - 1, width),
            toPixels(ball.v - view.top - kBallRadius - 1, height),
            toPixels(ball.u - view.left + kBallRadius + 1 + onePixel, width),
            toPixels(ball.v - view.top + kBallRadius + 1 + onePixel, height)};
}
} // namespace

void GeneratedScene::Render(const FrameRequest &request, Plane plane, std::uint8_t *pixels)
{
    const std::size_t bytesPerPixel = plane == Plane::Confidence ? 1 : 2;
    const std::size_t size = std::size_t{request.width} * request.height * bytesPerPixel;
    {
        const std::scoped_lock guard(lock);
        auto &background = backgrounds[{request.width, request.height, plane, request.illuminated}];
        if (background.empty())
        {
            background.resize(size);
            Draw(request, plane, nullptr, {0, 0, request.width, request.height}, background.data());
        }
        std::memcpy(pixels, background.data(), size);
    }
    const Point ball = BallAt(request.number);
    Draw(request, plane, &ball, AreaOfBall(ball, request.width, request.height), pixels);
}

std::uint16_t GeneratedScene::DepthEighthMm(const FrameRequest &request, std::uint32_t x, std::uint32_t y) noexcept
{
    return ValuesOf(request, x, y).depth;
}

std::uint16_t GeneratedScene::Infrared(const FrameRequest &request, std::uint32_t x, std::uint32_t y) noexcept
{
    return ValuesOf(request, x, y).infrared;
}

std::uint8_t GeneratedScene::Confidence(const FrameRequest &request, std::uint32_t x, std::uint32_t y) noexcept
{
    return ValuesOf(request, x, y).confidence;
}

} // namespace tarn_sim
