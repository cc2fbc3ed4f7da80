// What does not hold in a recording.
#pragma once

#include <cstdint>
#include <string>

namespace tarn_recording
{

enum class DamageKind
{
    NoRecording,    // no such file header, and no whole record behind it
    Header,         // the file header does not hold; the records behind it do
    Version,        // a layout that this reader does not know
    TornRecord,     // its checksum does not hold: most often the process ended while it was written
    CutRecord,      // the file ends inside a record
    LostBytes,      // bytes between records that are no record
    Values,         // a whole record whose values do not fit their lengths
    MissingEnd,     // the records of a closed file end before it says
    MissingPart,    // a file of the session is not there
    MissingRecords, // numbers that no record has, and no other damage tells why
    SearchGivenUp,  // too much damage to look for further records
    Doubled         // two records of one number; the first is kept
};

// Value.
struct Damage
{
    DamageKind kind = DamageKind::NoRecording;
    std::uint64_t offset = 0; // in its file
    std::uint64_t bytes = 0;  // concerned
    std::string file;         // UTF-8; empty where the recording came from memory

    // One line, without the file's name.
    std::string ToText() const;
};

} // namespace tarn_recording
