#include "tools/recording/Damage.h"

namespace tarn_recording
{

std::string Damage::ToText() const
{
    const std::string place = "at byte " + std::to_string(offset) + ": ";
    const std::string count = std::to_string(bytes) + " bytes";
    switch (kind)
    {
    case DamageKind::NoRecording:
        return "this is no recording of events";
    case DamageKind::Header:
        return "the file header is damaged; its records were read nevertheless";
    case DamageKind::Version:
        return "written in a later layout of the file; what this program knows of it was read";
    case DamageKind::TornRecord:
        return place + "a record of " + count + " that was not finished when the process ended, or was changed later";
    case DamageKind::CutRecord:
        return place + "the file ends inside a record, " + count + " of it are there";
    case DamageKind::LostBytes:
        return place + count + " that are no record";
    case DamageKind::Values:
        return place + "a record whose values do not fit its " + count;
    case DamageKind::MissingEnd:
        return place + "the records end here and lack " + count;
    case DamageKind::MissingRecords:
        return std::to_string(bytes) + " records are missing behind record " + std::to_string(offset);
    case DamageKind::MissingPart:
        return "part " + std::to_string(offset) + " of the session is missing";
    case DamageKind::SearchGivenUp:
        return place + "so much damage that the remaining " + count + " were not searched";
    case DamageKind::Doubled:
        return place + "a record with the number of another";
    }
    return "";
}

} // namespace tarn_recording
