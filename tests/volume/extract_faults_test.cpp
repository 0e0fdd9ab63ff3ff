// Each step of copying out fails once, and from then on: the result says so, no file stays open, the medium is as it
// was, and the next copy succeeds.
#include <gtest/gtest.h>

#include <string>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/volume/content/outward_support.h"
#include "tests/volume/extract_support.h"
#include "volume/image_access.h"
#include "volume/state.h"

using namespace tests;

namespace
{

struct Kind {
    const char *name;
    FileFault fault;
};

constexpr Kind kinds[] = {{"open", FileFault::open},       {"seek", FileFault::seek},
                          {"read", FileFault::read},       {"short read", FileFault::short_read},
                          {"write", FileFault::write},     {"short write", FileFault::short_write},
                          {"set end", FileFault::set_end}, {"size", FileFault::size}};

struct Case {
    const char *name;
    uint16_t type;
    Bytes content;
    uint16_t flags;
    uint32_t header;
    Bytes wanted;
};

std::vector<Case> cases()
{
    const Bytes records = counting(2560);
    const std::string a(700, 'a');
    const std::string b(900, 'b');
    return {{"bytes", 0xE0D0, records, 0, 0, records},
            {"over a target", 0xE0D0, records, EXTRACT_OVERWRITE, 0, records},
            {"behind a header", 0xE0D0, records, 0, 2,
             joined({{'F', 'I', 'L', 'E', 0,    0,    0,    0,    0,    0,    0xE0, 0xD0, 0, 0, 0, 0,
                      0,   0,   0,   10,  0x84, 0x03, 0x15, 0x09, 0x07, 0x30, 0x80, 0x01, 0, 0, 0, 0},
                     records})},
            {"as text", 1, lif_ascii({a, b}), EXTRACT_CONVERT, 0, bytes_of(a + "\r\n" + b + "\r\n")}};
}

// A medium with one file, and everything that must be as before when a copy has failed.
struct Trial {
    explicit Trial(const Case &the_case)
        : what(the_case), file(the_case.content, the_case.type), image(file.volume.file.bytes()),
          listed(names(file.md)), path(file.path("out"))
    {
        file.md->use_file_headers = what.header;
        if ((what.flags & EXTRACT_OVERWRITE) != 0) write_file(path, bytes_of("old"));
    }

    bool is_text() const
    {
        return (what.flags & EXTRACT_CONVERT) != 0;
    }

    void expect_described(const Extraction &extraction, const std::string &where) const
    {
        EXPECT_EQ(extraction.result, extraction.result < 0 ? -1 : 256) << where;
        if (extraction.result < 0) {
            EXPECT_FALSE(extraction.whole) << where;
            EXPECT_NE(global_error, 0u) << where;
        }
        EXPECT_FALSE(extraction.stopped) << where;
        EXPECT_EQ(file.volume.file.bytes(), image) << where;
    }

    void expect_usable(const std::string &where)
    {
        const Medium again(file.volume.file.path());
        ASSERT_TRUE(again) << where;
        EXPECT_EQ(names(again.md), listed) << where;
        EXPECT_EQ(names(file.md), listed) << where;
        const Extraction second = extract_to(file, file.path("second"), what.flags);
        EXPECT_EQ(second.result, 256) << where << ": " << error_text();
        EXPECT_TRUE(second.whole) << where;
        EXPECT_EQ(read_file(file.path("second")), what.wanted) << where;
    }

    const Case &what;
    OneFile file;
    Bytes image;
    std::vector<std::string> listed;
    std::string path;
};

// One run with the n-th call failing. False when that call wasn't made.
bool try_with(const Case &what, const Kind &kind, uint32_t nth, bool onward)
{
    const std::string where =
        std::string(what.name) + ", " + kind.name + ' ' + std::to_string(nth) + (onward ? " and on" : "");
    Trial trial(what);
    Extraction extraction;
    bool reached = false;
    {
        const FileFaults faults(kind.fault, nth, onward);
        const HostDisk watch;
        extraction = extract_to(trial.file, trial.path, what.flags);
        reached = faults.reached;
        EXPECT_TRUE(watch.open_files.empty()) << where;
    }
    trial.expect_described(extraction, where);
    // A read that ends early is the end of the image, so what lacks is zeros.
    if (extraction.whole && kind.fault != FileFault::short_read) {
        EXPECT_EQ(read_file(trial.path), what.wanted) << where;
    }
    const bool writing = kind.fault == FileFault::write || kind.fault == FileFault::short_write;
    if (reached && writing) {
        EXPECT_FALSE(extraction.whole) << where;
        EXPECT_EQ(extraction.result, trial.is_text() ? 256 : -1) << where;
    }
    if (reached && writing && !trial.is_text()) {
        EXPECT_TRUE(contains(error_text(), "File write error")) << where << ": " << error_text();
        EXPECT_TRUE(contains(error_text(), trial.path)) << where << ": " << error_text();
    }
    if (extraction.result < 0 && exists(trial.path) && !trial.is_text()) {
        const Bytes partial = read_file(trial.path);
        EXPECT_TRUE(partial == front_of(what.wanted, partial.size()) || partial == bytes_of("old")) << where;
    }
    trial.expect_usable(where);
    return reached;
}

// ---- a medium with a record that can't be read

uint32_t bad_record = 0;
uint32_t streams_open = 0;

int32_t open_counted(MediumStream *)
{
    ++streams_open;
    return 0;
}

int32_t close_counted(MediumStream *)
{
    --streams_open;
    return 0;
}

int32_t read_up_to_the_bad_record(MediumStream *stream, uint8_t *buffer, uint32_t records)
{
    const uint32_t first = stream->first + stream->next;
    EXPECT_LE(records, stream->records - stream->next);
    if (first == bad_record) {
        set_error(302, "record %u", bad_record);
        return -1;
    }
    if (first < bad_record && first + records > bad_record) records = bad_record - first;
    return image_access.read_stream(stream, buffer, records);
}

MediumAccess access_with_a_bad_record()
{
    MediumAccess access = image_access;
    access.open_stream = open_counted;
    access.close_stream = close_counted;
    access.read_stream = read_up_to_the_bad_record;
    return access;
}

}

TEST(ExtractFaults, EachCallOfTheFileLayerFailsOnceOrFromThenOn)
{
    uint32_t met = 0;
    for (const Case &what : cases())
        for (const Kind &kind : kinds)
            for (const bool onward : {false, true})
                for (uint32_t nth = 1; try_with(what, kind, nth, onward); ++nth) {
                    ++met;
                    ASSERT_LT(nth, 1000u) << what.name << ' ' << kind.name;
                }
    EXPECT_GT(met, 4u * 2u * 3u) << "opens, reads and writes, at least";
}

TEST(ExtractFaults, ATargetThatIsThereStaysWhateverFails)
{
    for (const Kind &kind : kinds)
        for (const bool onward : {false, true}) {
            bool reached = true;
            for (uint32_t nth = 1; reached; ++nth) {
                OneFile file(counting(1024));
                write_file(file.path("out"), bytes_of("old"));
                {
                    const FileFaults faults(kind.fault, nth, onward);
                    const HostDisk watch;
                    EXPECT_EQ(extract_to(file, file.path("out")).result, -1) << kind.name << nth;
                    EXPECT_NE(global_error, 0u) << kind.name << nth;
                    EXPECT_TRUE(watch.open_files.empty()) << kind.name << nth;
                    reached = faults.reached;
                }
                EXPECT_EQ(text_in(file.path("out")), "old") << kind.name << nth;
            }
        }
}

TEST(ExtractFaults, EachAllocationFails)
{
    for (const Case &what : cases()) {
        bool reached = true;
        for (uint32_t nth = 1; reached; ++nth) {
            const std::string where = std::string(what.name) + ", allocation " + std::to_string(nth);
            Trial trial(what);
            Extraction extraction;
            {
                const HeapFaults faults(nth);
                const HostDisk watch;
                extraction = extract_to(trial.file, trial.path, what.flags);
                reached = faults.reached;
                EXPECT_EQ(faults.releases, faults.allocations - (reached ? 1 : 0)) << where;
                EXPECT_TRUE(watch.open_files.empty()) << where;
            }
            trial.expect_described(extraction, where);
            if (reached) {
                EXPECT_EQ(extraction.result, -1) << where;
                EXPECT_EQ(global_error, 105u) << where;
            }
            trial.expect_usable(where);
        }
    }
}

TEST(ExtractFaults, ARecordThatCannotBeReadEndsTheCopyBehindTheOnesBeforeIt)
{
    const MediumAccess access = access_with_a_bad_record();
    for (const uint32_t records : {10u, 300u, 1100u})
        for (const uint32_t bad : {0u, 1u, 9u, 255u, 256u, 257u, 1024u, 1099u}) {
            if (bad >= records) continue;
            for (const bool told : {false, true}) {
                const Bytes bytes = counting(size_t{records} * 256);
                LifVolume volume;
                volume.tracks = volume.surfaces = volume.records_per_track = 0;
                volume.entries = {{.name = "FILE", .type = 0xE0D0, .content = bytes}};
                const OpenVolume open(volume);
                const Scratch host;
                bad_record = open.md->root->location + bad;
                open.md->state->access = &access;
                ProgressLog progress;
                const ExtractOrder order = {.to_file = "", .progress = told ? ProgressLog::callback : nullptr};
                ExtractOrder to_host = order;
                const std::string path = host.path("out");
                to_host.to_file = path.c_str();
                const Extraction extraction = extract_file(open.md, open.md->root, to_host);
                open.md->state->access = nullptr;
                EXPECT_EQ(extraction.result, -1) << bad;
                EXPECT_FALSE(extraction.whole) << bad;
                EXPECT_EQ(error_text(), "File read error (record " + std::to_string(bad_record) + ")");
                EXPECT_EQ(read_file(path), front_of(bytes, size_t{bad} * 256)) << bad;
                EXPECT_EQ(progress.calls.size(), told ? bad : 0) << bad;
                EXPECT_EQ(streams_open, 0u);
            }
        }
}

TEST(ExtractFaults, ATextKeepsWhatCameBeforeABadRecord)
{
    const MediumAccess access = access_with_a_bad_record();
    const Bytes content = lif_ascii({std::string(254, 'a'), std::string(254, 'b'), std::string(254, 'c')});
    for (uint32_t bad = 0; bad < 3; ++bad)
        for (const bool told : {false, true}) {
            OneFile file(content, 1);
            bad_record = file.info.location + bad;
            file.md->state->access = &access;
            ProgressLog progress;
            const Extraction extraction =
                extract_to(file, file.path("out"), EXTRACT_CONVERT, told ? ProgressLog::callback : nullptr);
            file.md->state->access = nullptr;
            EXPECT_EQ(extraction.result, -1) << bad;
            EXPECT_EQ(global_error, 302u) << bad;
            const std::string lines = std::string(254, 'a') + "\r\n" + std::string(254, 'b') + "\r\n";
            EXPECT_EQ(text_in(file.path("out")), lines.substr(0, bad * 256)) << bad;
            EXPECT_EQ(streams_open, 0u);
        }
}

TEST(ExtractFaults, EveryStreamIsClosedHoweverTheCopyEnds)
{
    const MediumAccess access = access_with_a_bad_record();
    bad_record = never;
    for (const uint16_t type : {uint16_t{0xE0D0}, uint16_t{1}, uint16_t{0xE848}, uint16_t{0xE052}, uint16_t{0xEA3E}})
        for (const uint64_t room : {uint64_t{0}, uint64_t{100}, endless})
            for (const uint32_t stop_at : {0u, 4u, never}) {
                OneFile file(joined({Bytes(1280, 13), Bytes(256, 0xA0)}), type);
                file.md->state->access = &access;
                ProgressLog progress(stop_at);
                {
                    const HostDisk disk(room);
                    extract_to(file, file.path("out"), EXTRACT_CONVERT, ProgressLog::callback);
                    EXPECT_TRUE(disk.open_files.empty());
                }
                file.md->state->access = nullptr;
                EXPECT_EQ(streams_open, 0u) << type << ' ' << room << ' ' << stop_at;
            }
}

TEST(ExtractFaults, AStreamThatCannotBeClosedIsAFailure)
{
    MediumAccess access = image_access;
    access.close_stream = [](MediumStream *) { return static_cast<int32_t>(set_error(503, "closing") - 504); };
    OneFile file(counting(600));
    file.md->state->access = &access;
    const Extraction extraction = extract_to(file, file.path("out"));
    file.md->state->access = nullptr;
    EXPECT_EQ(extraction.result, -1);
    EXPECT_FALSE(extraction.whole);
    EXPECT_EQ(global_error, 503u);
    EXPECT_EQ(read_file(file.path("out")), records_of(counting(600))) << "the file stays";
}

TEST(ExtractFaults, AStreamThatCannotBeOpenedIsAFailure)
{
    MediumAccess access = image_access;
    access.open_stream = [](MediumStream *) { return static_cast<int32_t>(set_error(505, "opening") - 506); };
    OneFile file(counting(600));
    file.md->state->access = &access;
    const Extraction extraction = extract_to(file, file.path("out"));
    file.md->state->access = nullptr;
    EXPECT_EQ(extraction.result, -1);
    EXPECT_EQ(global_error, 505u);
    EXPECT_EQ(read_file(file.path("out")), Bytes());
}

TEST(ExtractFaults, ATimeThatCannotBeSetChangesNothing)
{
    OneFile file(counting(600));
    Extraction extraction;
    {
        HostDisk disk;
        disk.refuses_times = true;
        extraction = extract_to(file, file.path("out"));
        EXPECT_TRUE(disk.open_files.empty());
    }
    EXPECT_EQ(extraction.result, 256);
    EXPECT_TRUE(extraction.whole);
    EXPECT_EQ(read_file(file.path("out")), records_of(counting(600)));
}
