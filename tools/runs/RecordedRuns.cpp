#include "tools/runs/RecordedRuns.h"

#include <windows.h>

#include <fstream>
#include <vector>

#include "tools/command/ExitCode.h"
#include "tools/command/Text.h"
#include "tarn/event_recording.h"

namespace tarn_host
{

namespace fs = std::filesystem;

namespace
{
const fs::path kFolder = TARN_RECORDING_FOLDER;
const fs::path kWish = kFolder / TARN_RECORDING_WISH_FOR_PICTURES;

bool IsOfThisProcess(const fs::path &file)
{
    tarn_recording_header header{};
    std::ifstream stream(file, std::ios::binary);
    stream.read(reinterpret_cast<char *>(&header), sizeof(header));
    return stream && header.magic == TARN_RECORDING_MAGIC && header.processId == GetCurrentProcessId();
}

std::vector<fs::path> RecordingsOfThisProcess()
{
    std::vector<fs::path> found;
    for (const auto &entry : fs::directory_iterator(kFolder))
    {
        if (entry.is_regular_file() && entry.path().extension() == ".bin" && IsOfThisProcess(entry.path()))
        {
            found.push_back(entry.path());
        }
    }
    return found;
}
} // namespace

RecordedRuns::RecordedRuns(const RunOptions &options) : destination(options.record)
{
    if (destination.empty())
    {
        return;
    }
    std::error_code error;
    madeFolder = fs::create_directories(kFolder, error);
    if (options.recordPictures && !fs::exists(kWish))
    {
        madeWish = std::ofstream(kWish).good();
    }
    if (!fs::is_directory(kFolder, error) || options.recordPictures > fs::exists(kWish, error))
    {
        throw HostError("cannot make " + ToText(kFolder) + ", without which nothing is recorded");
    }
}

RecordedRuns::~RecordedRuns()
{
    try
    {
        Collect(); // of a run that failed
    }
    catch (const HostError &)
    {
        // most often there is nothing more
    }
    std::error_code error;
    if (madeWish)
    {
        fs::remove(kWish, error);
    }
    if (madeFolder)
    {
        fs::remove(kFolder, error); // not when others have recorded meanwhile
    }
}

void RecordedRuns::Collect(const std::string &subfolder) const
{
    if (destination.empty())
    {
        return;
    }
    try
    {
        const std::vector<fs::path> recordings = RecordingsOfThisProcess();
        if (recordings.empty())
        {
            throw HostError("the module recorded nothing");
        }
        const fs::path folder = destination / ToPath(subfolder);
        fs::create_directories(folder);
        for (const fs::path &recording : recordings)
        {
            // Another folder may be on another drive.
            fs::copy_file(recording, folder / recording.filename(), fs::copy_options::overwrite_existing);
            fs::remove(recording);
        }
    }
    catch (const fs::filesystem_error &error)
    {
        throw HostError(std::string("the recording cannot be moved: ") + error.what());
    }
}

} // namespace tarn_host
