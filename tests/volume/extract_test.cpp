// Files of a LIF volume as files of the host: bytes, headers, names, flags, dates, folders, progress.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

#include "base/error.h"
#include "base/log_pointer.h"
#include "tests/support/capture.h"
#include "tests/volume/content/outward_support.h"
#include "tests/volume/extract_support.h"
#include "volume/names.h"

using namespace tests;

namespace
{

const Bytes one_line = lif_ascii({"a line"});
const char *const one_line_text = "a line\r\n";

LifEntry dated_file(uint16_t type, const Bytes &content)
{
    return {.name = "DATED",
            .type = type,
            .date = {0x87, 0x03, 0x11, 0x21, 0x43, 0x58},
            .implementation = {0x80, 0x01, 0xAA, 0xBB, 0xCC, 0xDD},
            .content = content};
}

TimeRecord time_of_file(const std::string &path)
{
    FileHandle file = 0;
    TimeRecord time{};
    if (file_open(&file, path.c_str(), "rb", 0) != 1) return time;
    file_get_time(file, &time);
    file_close(file);
    return time;
}

std::string moment(const TimeRecord &time)
{
    char text[128];
    snprintf(text, sizeof text, "%d-%02d-%02d %02d:%02d:%02d", time.tm_year + 1900, time.tm_mon + 1, time.tm_mday,
             time.tm_hour, time.tm_min, time.tm_sec);
    return text;
}

}

// ---- bytes

TEST(Extract, AllBytesOfAllItsRecords)
{
    OneFile file(counting(700));
    const Extraction extraction = extract_to(file, file.path("out"));
    EXPECT_EQ(extraction.result, 256);
    EXPECT_TRUE(extraction.whole);
    EXPECT_FALSE(extraction.stopped);
    EXPECT_EQ(read_file(file.path("out")), records_of(counting(700)));
}

TEST(Extract, AFileThatDoesNotFillItsRecordsEndsWithItsSize)
{
    OneFile file(counting(1024));
    for (const uint32_t size : {1u, 2u, 255u, 256u, 257u, 511u, 512u, 513u, 1023u, 1024u}) {
        file.info.size = size;
        const std::string path = file.path("out" + std::to_string(size));
        EXPECT_EQ(extract_to(file, path).result, 256) << size;
        EXPECT_EQ(read_file(path), front_of(counting(1024), size));
    }
}

TEST(Extract, AnEmptyFileIsMadeEmpty)
{
    OneFile file(counting(256));
    file.info.size = 0;
    ProgressLog progress;
    const Extraction extraction = extract_to(file, file.path("out"), 0, ProgressLog::callback);
    EXPECT_EQ(extraction.result, 0);
    EXPECT_TRUE(extraction.whole);
    EXPECT_EQ(read_file(file.path("out")), Bytes());
    EXPECT_EQ(progress.calls, ProgressCalls());
    EXPECT_EQ(moment(time_of_file(file.path("out"))), "1984-03-15 09:07:30");
}

TEST(Extract, EveryFileOfAVolumeIsWhereItsEntrySays)
{
    const OpenVolume volume(three_files());
    const Scratch host;
    for (const auto &[name, content] :
         {std::pair{"ONE", Bytes(256, 'a')}, std::pair{"TWO", Bytes(700, 'b')}, std::pair{"THREE", Bytes(100, 'c')}}) {
        const std::string path = host.path(name);
        EXPECT_EQ(
            image_extract_file(volume.md, entry_named(volume.md, name), nullptr, path.c_str(), nullptr, 0, nullptr),
            256);
        EXPECT_EQ(read_file(path), records_of(content)) << name;
    }
}

// ---- headers

TEST(Extract, HpbasicHeaderAheadOfTheBytes)
{
    OneFile file(dated_file(0xE0D0, counting(600)));
    file.md->use_file_headers = 1;
    EXPECT_EQ(extract_to(file, file.path("out")).result, 256);
    const Bytes wanted = joined({
        {0x80, 0x00, 'H', 'F', 'S', 'L', 'I', 'F', 0, 0, 0, 1, 0x10, 0x00, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0},
        {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 5, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11},
        Bytes(206),
        {0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0, 0},
        bytes_of("WS_FILE   "),
        {0xE0, 0xD0, 0, 0, 0, 2, 0, 0, 0, 3, 0x87, 0x03, 0x11, 0x21, 0x43, 0x58, 0x80, 0x01, 0xAA, 0xBB, 0xCC, 0xDD},
        Bytes(10),
        {0xFF, 0xFF},
        Bytes(212),
    });
    EXPECT_EQ(read_file(file.path("out")), joined({wanted, records_of(counting(600))}));
}

TEST(Extract, HpcalcHeaderAheadOfTheBytes)
{
    OneFile file(dated_file(0xE0D0, counting(600)));
    file.md->use_file_headers = 2;
    EXPECT_EQ(extract_to(file, file.path("out")).result, 256);
    const Bytes wanted = {'D', 'A', 'T', 'E', 'D',  0,    0,    0,    0,    0,    0xE0, 0xD0, 0,    0,    0,    0,
                          0,   0,   0,   3,   0x87, 0x03, 0x11, 0x21, 0x43, 0x58, 0x80, 0x01, 0xAA, 0xBB, 0xCC, 0xDD};
    EXPECT_EQ(read_file(file.path("out")), joined({wanted, records_of(counting(600))}));
}

TEST(Extract, AHeaderStandsAlsoAheadOfAnEmptyFile)
{
    for (const uint32_t form : {1u, 2u}) {
        OneFile file(counting(256));
        file.md->use_file_headers = form;
        file.info.size = 0;
        EXPECT_EQ(extract_to(file, file.path("out")).result, 0);
        const Bytes bytes = read_file(file.path("out"));
        ASSERT_EQ(bytes.size(), form == 1 ? 512u : 32u);
        EXPECT_EQ(bytes[bytes.size() == 512 ? 35 : 19], form == 1 ? 2 : 0);
    }
}

TEST(Extract, OtherNumbersOfHeadersAreNone)
{
    for (const uint32_t form : {0u, 3u, 0xFFFFFFFFu}) {
        OneFile file(counting(256));
        file.md->use_file_headers = form;
        extract_to(file, file.path("out"));
        EXPECT_EQ(read_file(file.path("out")), counting(256)) << form;
    }
}

TEST(Extract, AConvertedFileHasNoHeader)
{
    for (const uint32_t form : {1u, 2u}) {
        OneFile file(one_line, 1);
        file.md->use_file_headers = form;
        extract_to(file, file.path("out"), EXTRACT_CONVERT);
        EXPECT_EQ(text_in(file.path("out")), one_line_text);
        file.info.type = 0xE0D0;
        extract_to(file, file.path("unknown"), EXTRACT_CONVERT);
        EXPECT_EQ(read_file(file.path("unknown")).size(), form == 1 ? 768u : 288u) << "no conversion, so a header";
        extract_to(file, file.path("forced"), EXTRACT_CONVERT | EXTRACT_FORCE);
        EXPECT_EQ(read_file(file.path("forced")), Bytes());
    }
}

// ---- flags

TEST(Extract, AllFlagsOnKnownAndUnknownContentWithAndWithoutATarget)
{
    const Bytes raw = records_of(one_line);
    for (uint16_t flags = 0; flags < 16; ++flags)
        for (const bool known : {false, true})
            for (const bool exists_already : {false, true}) {
                OneFile file(one_line, known ? 1 : 0xE0D0);
                const bool converts = (flags & 2) != 0 && (known || (flags & 4) != 0);
                const std::string plain = file.path("out");
                const std::string path = converts && (flags & 8) != 0 ? plain + ".txt" : plain;
                if (exists_already) write_file(path, bytes_of("old and longer than the new text"));
                const LogCapture log(1);
                const Extraction extraction = extract_to(file, plain, flags);
                const std::string what =
                    std::to_string(flags) + (known ? " known" : " unknown") + (exists_already ? " over a target" : "");
                const bool refused = exists_already && (flags & 1) == 0;
                EXPECT_EQ(extraction.result, refused ? -1 : 256) << what;
                EXPECT_EQ(error_text() == error_with_file(210, path), refused) << what << error_text();
                const Bytes wanted = refused     ? bytes_of("old and longer than the new text")
                                     : !converts ? raw
                                     : known     ? bytes_of(one_line_text)
                                                 : Bytes();
                EXPECT_EQ(read_file(path), wanted) << what;
                EXPECT_EQ(exists(path == plain ? plain + ".txt" : plain), false) << what;
                EXPECT_EQ(contains(log.text(), "Conversion forced for file with unknown content\n"), converts && !known)
                    << what;
            }
}

TEST(Extract, OtherBitsOfTheFlagsMeanNothing)
{
    OneFile file(one_line, 1);
    EXPECT_EQ(extract_to(file, file.path("out"), 0xFFF0).result, 256);
    EXPECT_EQ(read_file(file.path("out")), records_of(one_line));
}

TEST(Extract, AForcedConversionOfUnknownContentReadsOnAndWritesNothing)
{
    OneFile file(counting(600));
    ProgressLog progress;
    const Extraction extraction =
        extract_to(file, file.path("out"), EXTRACT_CONVERT | EXTRACT_FORCE, ProgressLog::callback);
    EXPECT_EQ(extraction.result, 256);
    EXPECT_EQ(read_file(file.path("out")), Bytes());
    EXPECT_EQ(progress.calls, (ProgressCalls{{256, 0, 33}, {512, 1, 66}, {768, 2, 100}}));
    EXPECT_FALSE(extraction.whole) << "none of its bytes is on the host";
}

// ---- existing targets

TEST(Extract, AnExistingTargetIsCutToTheNewBytes)
{
    OneFile file(one_line, 1);
    write_file(file.path("out"), Bytes(5000, 'o'));
    EXPECT_EQ(extract_to(file, file.path("out"), EXTRACT_OVERWRITE).result, 256);
    EXPECT_EQ(read_file(file.path("out")), records_of(one_line));
}

TEST(Extract, AnExistingTargetStaysWithoutLeave)
{
    OneFile file(one_line, 1);
    write_file(file.path("out"), bytes_of("old"));
    ProgressLog progress;
    EXPECT_EQ(extract_to(file, file.path("out"), 0, ProgressLog::callback).result, -1);
    EXPECT_EQ(error_text(), error_with_file(210, file.path("out")));
    EXPECT_EQ(text_in(file.path("out")), "old");
    EXPECT_EQ(progress.calls, ProgressCalls());
}

TEST(Extract, AFolderInTheWayIsAnError)
{
    OneFile file(one_line, 1);
    std::filesystem::create_directory(file.path("out"));
    for (const uint16_t flags : {uint16_t{0}, uint16_t{1}}) {
        EXPECT_EQ(extract_to(file, file.path("out"), flags).result, -1);
        EXPECT_NE(global_error, 0u);
        EXPECT_TRUE(std::filesystem::is_directory(file.path("out")));
    }
}

// ---- dates

TEST(ExtractDates, TheHostFileHasTheDateOfItsEntry)
{
    OneFile file(dated_file(1, one_line));
    extract_to(file, file.path("raw"));
    extract_to(file, file.path("text"), EXTRACT_CONVERT);
    for (const char *name : {"raw", "text"})
        EXPECT_EQ(moment(time_of_file(file.path(name))), "1987-03-11 21:43:58") << name;
    file.info.date.tm_year = 126;
    file.info.date.tm_mon = 11;
    extract_to(file, file.path("raw"), EXTRACT_OVERWRITE);
    EXPECT_EQ(moment(time_of_file(file.path("raw"))), "2026-12-11 21:43:58");
}

TEST(ExtractDates, FormatsWithoutDatesLeaveTheHostsOwn)
{
    for (const uint32_t format : {FORMAT_DISK45, FORMAT_TAPE45}) {
        OneFile file(dated_file(0, counting(256)));
        file.md->format = format;
        EXPECT_EQ(extract_to(file, file.path("out")).result, 256);
        EXPECT_GT(time_of_file(file.path("out")).tm_year, 120) << format;
        file.md->format = FORMAT_LIF;
    }
}

TEST(ExtractDates, Hazard_H19_ADateThatIsNoneChangesNoResult)
{
    OneFile file(one_line, 1);
    const TimeRecord dates[] = {{},
                                {0, 0, 0, 1, 15, 84, 0, 0, 0},
                                {0, 0, 0, 0, 3, 84, 0, 0, 0},
                                {165, 165, 165, 165, 164, 265, 0, 0, 0},
                                {-1, -1, -1, -1, -1, -1, -1, -1, -1}};
    for (const TimeRecord &date : dates) {
        file.info.date = date;
        const Extraction extraction = extract_to(file, file.path("out"), EXTRACT_OVERWRITE);
        EXPECT_EQ(extraction.result, 256);
        EXPECT_TRUE(extraction.whole);
        EXPECT_EQ(read_file(file.path("out")), records_of(one_line));
        EXPECT_GT(time_of_file(file.path("out")).tm_year, 120);
    }
}

// ---- folders

TEST(ExtractFolder, AFolderIsMade)
{
    OneFile file(one_line, 3);
    file.info.is_directory = 1;
    ProgressLog progress;
    const Extraction extraction = extract_to(file, file.path("out"), 0, ProgressLog::callback);
    EXPECT_EQ(extraction.result, 0);
    EXPECT_TRUE(extraction.whole);
    EXPECT_TRUE(std::filesystem::is_directory(file.path("out")));
    EXPECT_TRUE(std::filesystem::is_empty(file.path("out")));
    EXPECT_EQ(progress.calls, ProgressCalls());
}

TEST(ExtractFolder, AFileInTheWayIsReplacedWithLeave)
{
    OneFile file(one_line, 3);
    file.info.is_directory = 1;
    write_file(file.path("out"), bytes_of("old"));
    EXPECT_EQ(extract_to(file, file.path("out")).result, -1);
    EXPECT_EQ(error_text(), error_with_file(210, file.path("out")));
    EXPECT_EQ(text_in(file.path("out")), "old");
    EXPECT_EQ(extract_to(file, file.path("out"), EXTRACT_OVERWRITE).result, 0);
    EXPECT_TRUE(std::filesystem::is_directory(file.path("out")));
}

TEST(ExtractFolder, AFolderThatIsThereIsLeftAsItIs)
{
    OneFile file(one_line, 3);
    file.info.is_directory = 1;
    std::filesystem::create_directory(file.path("out"));
    write_file(file.path("out/kept"), bytes_of("kept"));
    for (const uint16_t flags : {uint16_t{0}, uint16_t{1}}) {
        const Extraction extraction = extract_to(file, file.path("out"), flags);
        EXPECT_EQ(extraction.result, 1);
        EXPECT_TRUE(extraction.whole) << "the folder is there";
        EXPECT_EQ(text_in(file.path("out/kept")), "kept");
    }
}

TEST(ExtractFolder, ItsNameHasNoTypeAndItsParentIsMade)
{
    OneFile file(one_line, 3, "SUB");
    file.info.is_directory = 1;
    char name[VISIBLE_NAME_SIZE] = "";
    const std::string folder = file.path("new");
    EXPECT_EQ(image_extract_file(file.md, &file.info, folder.c_str(), nullptr, name, 0, nullptr), 0);
    EXPECT_STREQ(name, "SUB");
    EXPECT_TRUE(std::filesystem::is_directory(folder + "/SUB"));
}

// ---- progress

TEST(ExtractProgress, OneCallForEachRecord)
{
    OneFile file(counting(1024));
    file.info.size = 1000;
    ProgressLog progress;
    EXPECT_EQ(extract_to(file, file.path("out"), 0, ProgressLog::callback).result, 256);
    EXPECT_EQ(progress.calls, (ProgressCalls{{256, 0, 25}, {512, 1, 51}, {768, 2, 76}, {1024, 3, 100}}));
}

TEST(ExtractProgress, AnAnswerEndsTheTransferBehindItsRecord)
{
    for (const uint32_t stop_at : {0u, 1u, 2u, 3u}) {
        OneFile file(dated_file(0xE0D0, counting(1024)));
        file.md->use_file_headers = stop_at == 1 ? 2 : 0;
        ProgressLog progress(stop_at);
        const Extraction extraction = extract_to(file, file.path("out"), 0, ProgressLog::callback);
        EXPECT_EQ(extraction.result, 256) << stop_at;
        EXPECT_TRUE(extraction.stopped) << stop_at;
        EXPECT_FALSE(extraction.whole) << stop_at;
        EXPECT_EQ(progress.calls.size(), stop_at + 1);
        const Bytes bytes = read_file(file.path("out"));
        const size_t header = stop_at == 1 ? 32 : 0;
        EXPECT_EQ(Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(header), bytes.end()),
                  front_of(counting(1024), (stop_at + 1) * 256))
            << stop_at;
        EXPECT_EQ(moment(time_of_file(file.path("out"))), "1987-03-11 21:43:58") << stop_at;
    }
}

TEST(ExtractProgress, AnAnswerEndsAConversionToo)
{
    const Bytes content = lif_ascii({std::string(254, 'a'), std::string(254, 'b'), std::string(254, 'c')});
    OneFile file(content, 1);
    ProgressLog progress(1);
    const Extraction extraction = extract_to(file, file.path("out"), EXTRACT_CONVERT, ProgressLog::callback);
    EXPECT_EQ(extraction.result, 256);
    EXPECT_TRUE(extraction.stopped);
    EXPECT_EQ(text_in(file.path("out")), std::string(254, 'a') + "\r\n" + std::string(254, 'b') + "\r\n");
}

// ---- the log, and arguments

TEST(ExtractLog, TheCallIsWrittenWithItsArguments)
{
    OneFile file(one_line, 1);
    const std::string folder = file.host.folder();
    char name[VISIBLE_NAME_SIZE] = "";
    const LogCapture log(3);
    ProgressLog progress;
    image_extract_file(file.md, &file.info, folder.c_str(), nullptr, name, 0x0B, ProgressLog::callback);
    image_extract_file(file.md, &file.info, nullptr, file.path("out").c_str(), nullptr, 0, nullptr);
    char line[2048];
    snprintf(line, sizeof line,
             "image_extract_file(md=%lu, info=%lu, destination=\"%s\", to_file=\"(null)\", ret_filename=%lu, flags=B, "
             "progress=%lu)\n",
             log_pointer(file.md), log_pointer(&file.info), folder.c_str(), log_pointer(name),
             static_cast<unsigned long>(reinterpret_cast<uintptr_t>(&ProgressLog::callback)));
    EXPECT_TRUE(contains(log.text(), line)) << line << log.text();
    snprintf(line, sizeof line,
             "image_extract_file(md=%lu, info=%lu, destination=\"(null)\", to_file=\"%s\", ret_filename=0, flags=0, "
             "progress=0)\n",
             log_pointer(file.md), log_pointer(&file.info), file.path("out").c_str());
    EXPECT_TRUE(contains(log.text(), line)) << line << log.text();
}

TEST(ExtractLog, AtALowerLevelNothingIsWritten)
{
    OneFile file(one_line, 1);
    const LogCapture log(2);
    extract_to(file, file.path("out"));
    extract_to(file, file.path("text"), EXTRACT_CONVERT);
    EXPECT_EQ(log.text(), "");
}

TEST(Extract, MissingRecordsAreRefused)
{
    OneFile file(one_line, 1);
    for (const auto &[md, info] : {std::pair<MediaDescriptor *, FileInfo *>{nullptr, &file.info},
                                   std::pair<MediaDescriptor *, FileInfo *>{file.md, nullptr}}) {
        forget_error();
        EXPECT_EQ(image_extract_file(md, info, nullptr, file.path("out").c_str(), nullptr, 0, nullptr), -1);
        EXPECT_EQ(global_error, 103u);
        EXPECT_FALSE(exists(file.path("out")));
    }
}

TEST(Extract, AnUnknownAccessIsAnError)
{
    OneFile file(one_line, 1);
    file.md->access = 3;
    const Extraction extraction = extract_to(file, file.path("out"));
    file.md->access = ACCESS_IMAGE;
    EXPECT_EQ(extraction.result, -1);
    EXPECT_FALSE(extraction.whole);
    EXPECT_EQ(global_error, 202u);
}
