// What is measured: one kernel at one size, and who takes part.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tarn_bench
{
enum class Kind
{
    TenToEight,
    Confidence,
    Threshold,
    Resize,
    Crop,
    PlaneCopy,
    DepthMove,
    Median,
    Sharpen,
    FaceLogin
};

struct Task
{
    Kind kind;
    std::string name;
    std::size_t inputWidth, inputHeight;
    std::size_t outputWidth, outputHeight;

    std::size_t InputSize() const;
    std::size_t OutputSize() const;
    bool InPlace() const;                // works on the output buffer alone
    std::size_t OutputPixelSize() const; // 1 or 2 bytes
    std::size_t OutputPitch() const;     // bytes
    std::size_t Border() const;          // output pixels at each edge that results need not agree in
};

// The buffers of one call.
struct Slot
{
    const std::uint8_t *input;
    std::uint8_t *output;
};

struct Contender
{
    std::string name;
    std::function<void(const Slot &)> run;
};

const char *KindName(Kind kind);

std::vector<Task> AllTasks();

// Each adds the contenders it has for the task.
void AddOurs(const Task &task, std::vector<Contender> &contenders);
void AddBound(const Task &task, std::vector<Contender> &contenders);
void AddStandardLibrary(const Task &task, std::vector<Contender> &contenders);
void AddOpenCv(const Task &task, std::vector<Contender> &contenders);
void AddLibyuv(const Task &task, std::vector<Contender> &contenders);
void AddHalide(const Task &task, std::vector<Contender> &contenders);
void AddZimg(const Task &task, std::vector<Contender> &contenders);

// Sizes of the face-login chain.
constexpr std::size_t kFaceCrop = 434;
constexpr std::size_t kFaceInner = 415;
constexpr std::size_t kFaceOutput = 360;
constexpr std::uint16_t kFaceThreshold = 1023;
} // namespace tarn_bench
