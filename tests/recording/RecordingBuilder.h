// Recordings made in memory, record by record.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

#include "base/Crc32.h"
#include "tools/names/Guid.h"
#include "tarn/event_recording.h"

namespace tarn_tests
{

// Values one behind the other.
class ValueBytes
{
  public:
    ValueBytes &Put(std::uint16_t name, std::uint16_t kind, const void *payload, std::size_t size)
    {
        const tarn_value_header head{name, kind, static_cast<std::uint32_t>(size)};
        Append(&head, sizeof head);
        Append(payload, size);
        bytes.resize((bytes.size() + 7) / 8 * 8);
        return *this;
    }
    ValueBytes &U32(std::uint16_t name, std::uint32_t value) { return Put(name, TARN_KIND_U32, &value, sizeof value); }
    ValueBytes &U64(std::uint16_t name, std::uint64_t value) { return Put(name, TARN_KIND_U64, &value, sizeof value); }
    ValueBytes &I64(std::uint16_t name, std::int64_t value) { return Put(name, TARN_KIND_I64, &value, sizeof value); }
    ValueBytes &Text(std::uint16_t name, std::string_view text)
    {
        return Put(name, TARN_KIND_TEXT, text.data(), text.size());
    }
    ValueBytes &Bytes(std::uint16_t name, const std::vector<std::uint8_t> &data)
    {
        return Put(name, TARN_KIND_BYTES, data.data(), data.size());
    }
    ValueBytes &Guid(std::uint16_t name, const tarn_host::Guid &guid)
    {
        return Put(name, TARN_KIND_GUID, guid.bytes.data(), guid.bytes.size());
    }
    ValueBytes &List(std::uint16_t name, const ValueBytes &items)
    {
        return Put(name, TARN_KIND_LIST, items.bytes.data(), items.bytes.size());
    }
    ValueBytes &Attribute(const tarn_host::Guid &key, std::uint16_t kind, const void *value, std::size_t size)
    {
        std::vector<std::uint8_t> payload(24 + size);
        std::memcpy(payload.data(), key.bytes.data(), 16);
        std::memcpy(payload.data() + 16, &kind, sizeof kind);
        if (size != 0)
        {
            std::memcpy(payload.data() + 24, value, size);
        }
        return Put(0, TARN_KIND_ATTRIBUTE, payload.data(), payload.size());
    }
    ValueBytes &Attribute(const tarn_host::Guid &key, std::uint64_t value)
    {
        return Attribute(key, TARN_KIND_U64, &value, sizeof value);
    }
    ValueBytes &Attribute(const tarn_host::Guid &key, const tarn_host::Guid &value)
    {
        return Attribute(key, TARN_KIND_GUID, value.bytes.data(), value.bytes.size());
    }

    std::vector<std::uint8_t> bytes;

  private:
    void Append(const void *from, std::size_t size)
    {
        if (size != 0)
        {
            const auto *const first = static_cast<const std::uint8_t *>(from);
            bytes.insert(bytes.end(), first, first + size);
        }
    }
};

// One file. Each record takes the next sequence number and, unless told, 1 ms.
class RecordingBuilder
{
  public:
    explicit RecordingBuilder(std::uint32_t part = 0, std::uint64_t firstSequence = 1) : sequence(firstSequence - 1)
    {
        header.magic = TARN_RECORDING_MAGIC;
        header.version = TARN_RECORDING_VERSION;
        header.headerBytes = sizeof header;
        header.sessionId = 0x5E55;
        header.part = part;
        header.processId = 77;
        header.startTime = 133'000'000'000'000'000;
        header.startClock = clock;
        std::strcpy(header.moduleVersion, "1.2.3.4");
        std::strcpy(header.machine, "BENCH");
    }

    // Returns its sequence number.
    std::uint64_t Add(std::uint16_t type, std::uint16_t subject, const ValueBytes &values = {}, std::uint64_t entry = 0,
                      std::uint32_t result = 0)
    {
        clock += stepClock;
        tarn_record_header record{};
        record.length = static_cast<std::uint32_t>(sizeof record + values.bytes.size());
        record.type = type;
        record.subject = subject;
        record.transform = 1;
        record.sequence = ++sequence;
        record.clock = clock;
        record.thread = thread;
        record.result = static_cast<std::int32_t>(result);
        record.entry = entry;
        std::vector<std::uint8_t> bytes(record.length);
        std::memcpy(bytes.data(), &record, sizeof record);
        std::copy(values.bytes.begin(), values.bytes.end(), bytes.begin() + sizeof record);
        record.checksum = user_space_frameworks::Crc32(std::span(bytes).subspan(8));
        std::memcpy(bytes.data() + 4, &record.checksum, 4);
        offsets.push_back(sizeof header + records.size());
        records.insert(records.end(), bytes.begin(), bytes.end());
        records.resize((records.size() + 7) / 8 * 8);
        return sequence;
    }
    // A call and its return, one behind the other; returns the call's number.
    std::uint64_t Call(std::uint16_t subject, const ValueBytes &arguments = {}, const ValueBytes &given = {},
                       std::uint32_t result = 0)
    {
        const std::uint64_t entry = Add(TARN_RECORD_CALL, subject, arguments);
        Add(TARN_RECORD_RETURN, subject, given, entry, result);
        return entry;
    }

    std::vector<std::uint8_t> File() const
    {
        tarn_recording_header head = header;
        head.usedBytes = sizeof head + records.size();
        std::vector<std::uint8_t> file(sizeof head);
        std::memcpy(file.data(), &head, sizeof head);
        file.insert(file.end(), records.begin(), records.end());
        return file;
    }

    tarn_recording_header header{};
    std::uint64_t clock = 5'000'000;
    std::uint64_t stepClock = 10'000;
    std::uint32_t thread = 100;
    std::vector<std::size_t> offsets; // of the records in the file

  private:
    std::uint64_t sequence;
    std::vector<std::uint8_t> records;
};

} // namespace tarn_tests
