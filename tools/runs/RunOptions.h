// What the user asked of a command that streams, apart from the scenario.
#pragma once

#include <filesystem>
#include <string>

#include "tools/frameserver/DeviceTransformSession.h"
#include "tools/frameserver/LoadedModule.h"

namespace CLI
{
class App;
}

namespace tarn_host
{

enum class Pace
{
    RealTime,
    Fast
};

// Value.
struct RunOptions
{
    std::filesystem::path module;
    ModuleAccess moduleAccess = ModuleAccess::File;
    std::filesystem::path frames; // Empty: the built-in scene.
    Pace pace = Pace::RealTime;
    std::filesystem::path outFolder; // Empty: no files.
    std::filesystem::path record;    // Where recordings go; empty: the module is not asked to record.
    bool recordPictures = false;
    bool allocator = false; // the transform is offered one for each output
    bool saveFrames = false;
    std::size_t framesToShow = 0; // of each output, for the contact sheet
    bool json = false;
    bool quiet = false;
};

// The options of the command line behind RunOptions. Confined.
class RunOptionsLine
{
  public:
    void AddTo(CLI::App &app);
    // Once the whole line has been read. Creates the folder for output. Throws UsageError.
    RunOptions Read() const;

  private:
    RunOptions options;
    // As typed.
    std::string module;
    std::string frames;
    std::string outFolder;
    std::string record;
    bool registerFirst = false;
};

} // namespace tarn_host
