// Every whole record of a damaged file is found, and what is none is named.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>

#include "tests/recording/RecordingBuilder.h"
#include "tools/recording/RecordedSession.h"

using namespace tarn_recording;
using tarn_tests::RecordingBuilder;
using tarn_tests::ValueBytes;
using File = std::vector<std::uint8_t>;

namespace
{

constexpr std::size_t kRecords = 6;

RecordingBuilder SixRecords()
{
    RecordingBuilder builder;
    for (std::uint32_t i = 0; i < kRecords; ++i)
    {
        builder.Add(TARN_RECORD_CALL, TARN_CALL_PROCESS_EVENT, ValueBytes().Bytes(TARN_VALUE_DATA, File(40 + i, 0xAB)));
    }
    return builder;
}

struct DamageCase
{
    const char *name;
    std::function<void(File &, const std::vector<std::size_t> &)> harm; // offsets of the records
    std::vector<std::uint64_t> found;
    std::vector<DamageKind> damages;
};

void Fill(File &file, std::size_t from, std::size_t to, std::uint8_t byte)
{
    std::fill(file.begin() + static_cast<std::ptrdiff_t>(from), file.begin() + static_cast<std::ptrdiff_t>(to), byte);
}

const std::vector<DamageCase> kDamageCases{
    {"Nothing", [](File &, const auto &) {}, {1, 2, 3, 4, 5, 6}, {}},
    {"RoomBehind", [](File &file, const auto &) { file.resize(file.size() + 4096); }, {1, 2, 3, 4, 5, 6}, {}},
    {"TornAmongWhole",
     [](File &file, const auto &at) { Fill(file, at[2] + 4, at[3], 0); },
     {1, 2, 4, 5, 6},
     {DamageKind::TornRecord}},
    {"TwoTornBeforeRoom",
     [](File &file, const auto &at) {
         Fill(file, at[4] + 4, at[5], 0);
         Fill(file, at[5] + 4, file.size(), 0);
         file.resize(file.size() + 64);
     },
     {1, 2, 3, 4},
     {DamageKind::TornRecord, DamageKind::TornRecord}},
    {"LengthTooLong",
     [](File &file, const auto &at) { file[at[1] + 3] = 0x7F; },
     {1, 3, 4, 5, 6},
     {DamageKind::LostBytes}},
    {"LengthLeadsToALaterRecord",
     [](File &file, const auto &at) { file[at[1]] = static_cast<std::uint8_t>(at[3] - at[1]); },
     {1, 3, 4, 5, 6},
     {DamageKind::LostBytes}},
    {"ByteOfAValue",
     [](File &file, const auto &at) { file[at[3] + 60] ^= 1; },
     {1, 2, 3, 5, 6},
     {DamageKind::TornRecord}},
    {"BlankStretch",
     [](File &file, const auto &at) { Fill(file, at[1], at[4], 0); },
     {1, 5, 6},
     {DamageKind::LostBytes}},
    {"Cut", [](File &file, const auto &at) { file.resize(at[5] + 50); }, {1, 2, 3, 4, 5}, {DamageKind::CutRecord}},
    {"ClosedAndCut",
     [](File &file, const auto &at) {
         file[16] |= TARN_RECORDING_CLOSED;
         file.resize(at[5]);
     },
     {1, 2, 3, 4, 5},
     {DamageKind::MissingEnd}},
    {"ClosedAndBlankAtTheEnd",
     [](File &file, const auto &at) {
         file[16] |= TARN_RECORDING_CLOSED;
         Fill(file, at[5], file.size(), 0);
     },
     {1, 2, 3, 4, 5},
     {DamageKind::MissingEnd}},
    {"TwoRecordsTakenOut",
     [](File &file, const auto &at) {
         file.erase(file.begin() + static_cast<std::ptrdiff_t>(at[2]),
                    file.begin() + static_cast<std::ptrdiff_t>(at[4]));
     },
     {1, 2, 5, 6},
     {DamageKind::MissingRecords}},
    {"Magic", [](File &file, const auto &) { file[0] = 0; }, {1, 2, 3, 4, 5, 6}, {DamageKind::Header}},
    {"FirstRecordsPlace", [](File &file, const auto &) { file[12] = 3; }, {1, 2, 3, 4, 5, 6}, {DamageKind::Header}},
    {"Version", [](File &file, const auto &) { file[8] = 9; }, {1, 2, 3, 4, 5, 6}, {DamageKind::Version}},
    {"SomethingElse", [](File &file, const auto &) { Fill(file, 0, file.size(), 'x'); }, {}, {DamageKind::NoRecording}},
    {"Empty", [](File &file, const auto &) { file.clear(); }, {}, {DamageKind::NoRecording}}};

class DamagedRecording : public testing::TestWithParam<DamageCase>
{
};

TEST_P(DamagedRecording, GivesItsWholeRecordsAndNamesTheRest)
{
    const RecordingBuilder builder = SixRecords();
    File file = builder.File();
    GetParam().harm(file, builder.offsets);

    const auto session = RecordedSession::FromBytes({file});

    std::vector<std::uint64_t> found;
    for (const Record &record : session.Records())
    {
        found.push_back(record.header.sequence);
    }
    std::vector<DamageKind> damages;
    for (const Damage &damage : session.Damages())
    {
        damages.push_back(damage.kind);
    }
    EXPECT_EQ(GetParam().found, found);
    EXPECT_EQ(GetParam().damages, damages);
}

INSTANTIATE_TEST_SUITE_P(All, DamagedRecording, testing::ValuesIn(kDamageCases),
                         [](const auto &one) { return std::string(one.param.name); });

TEST(RecordedSessionTest, PartsAreOneSessionWhoseCallsAreJoined)
{
    RecordingBuilder first(0);
    const auto call = first.Add(TARN_RECORD_CALL, TARN_CALL_SHUTDOWN);
    const auto never = first.Add(TARN_RECORD_CALL, TARN_CALL_GET_EVENT);
    RecordingBuilder third(2, 3);
    const auto end = third.Add(TARN_RECORD_RETURN, TARN_CALL_SHUTDOWN, {}, call, 0x80004005);
    third.Add(TARN_RECORD_KS_RETURN, TARN_KS_PROPERTY, {}, never); // an end of something else

    const auto session = RecordedSession::FromBytes({third.File(), first.File()});

    ASSERT_NE(nullptr, session.Find(call));
    EXPECT_EQ(session.Find(end), session.EndOf(*session.Find(call)));
    EXPECT_EQ(nullptr, session.EndOf(*session.Find(never)));
    EXPECT_TRUE(session.Find(end)->Failed());
    ASSERT_EQ(1U, session.Damages().size());
    EXPECT_EQ("part 1 of the session is missing", session.Damages()[0].ToText());
}

TEST(RecordedSessionTest, OtherPartsAreFoundBesideTheFileAndCopiesLeftAlone)
{
    namespace fs = std::filesystem;
    const fs::path folder = fs::temp_directory_path() / ("tarn-parts-" + std::to_string(getpid()));
    fs::create_directories(folder);
    RecordingBuilder parts[]{RecordingBuilder(0, 1), RecordingBuilder(1, 2), RecordingBuilder(0, 1)};
    parts[2].header.sessionId = 7; // of something else
    const char *const names[]{"events.1.bin", "events.bin", "events.2.bin"};
    for (std::size_t i = 0; i < std::size(parts); ++i)
    {
        parts[i].Add(TARN_RECORD_CALL, TARN_CALL_SHUTDOWN);
        const File file = parts[i].File();
        std::ofstream(folder / names[i])
            .write(reinterpret_cast<const char *>(file.data()), static_cast<std::streamsize>(file.size()));
    }
    fs::copy_file(folder / names[1], folder / "copy of events.bin");

    const auto sessions = RecordedSession::Open({folder / "events.bin"});

    ASSERT_EQ(1U, sessions.size());
    EXPECT_EQ(2U, sessions[0].Files().size());
    EXPECT_EQ(2U, sessions[0].Records().size());
    EXPECT_TRUE(sessions[0].Damages().empty());
    fs::remove_all(folder);
}

TEST(ValueTest, ListsEndBeforeWhatDoesNotFitAndNestOnlySoDeep)
{
    const Guid key{{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}};
    EXPECT_EQ("{04030201-0605-0807-090A-0B0C0D0E0F10}", key.ToText());
    ValueBytes values;
    values.U32(TARN_VALUE_STREAM, 7).List(TARN_VALUE_ATTRIBUTES, ValueBytes().Attribute(key, std::uint64_t{9}));
    values.I64(TARN_VALUE_TIME, -5).Text(TARN_VALUE_NAME, "abc");
    const ValueList whole(values.bytes);
    EXPECT_EQ(7U, whole.Unsigned(TARN_VALUE_STREAM));
    EXPECT_EQ(9U, whole.Items(TARN_VALUE_ATTRIBUTES).Attribute(key)->Unsigned());
    EXPECT_EQ(-5, whole.Signed(TARN_VALUE_TIME));
    EXPECT_EQ("abc", whole.Find(TARN_VALUE_NAME)->Text());
    EXPECT_FALSE(whole.Unsigned(TARN_VALUE_TIME)); // of another kind
    EXPECT_TRUE(whole.IsWhole());

    const ValueList cut(Bytes(values.bytes).first(values.bytes.size() - 6));
    EXPECT_FALSE(cut.Find(TARN_VALUE_NAME));
    EXPECT_EQ(-5, cut.Signed(TARN_VALUE_TIME));
    EXPECT_FALSE(cut.IsWhole());

    ValueBytes nested;
    for (int depth = 0; depth < 1000; ++depth)
    {
        nested = ValueBytes().List(TARN_VALUE_SAMPLE, nested);
    }
    EXPECT_FALSE(ValueList(nested.bytes).IsWhole());
}

} // namespace
