// Headers that keep a directory entry in front of a host file, and what becomes of them on the way in.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/volume/insert_support.h"
#include "volume/insert_inner.h"
#include "volume/table.h"

using namespace tests;
using namespace tests::insertion;

namespace
{

constexpr uint32_t basic_form = 1;
constexpr uint32_t calc_form = 2;
const Bytes header_date = {0x86, 0x11, 0x03, 0x08, 0x30, 0x59}; // 3 November 1986, 8:30:59
const Bytes implementation = {0x80, 0x01, 0x02, 0x03, 0x04, 0x05};

Bytes entry_bytes(const std::string &name, uint16_t type, uint32_t start, uint32_t records)
{
    Bytes entry(20);
    std::copy(name.begin(), name.end(), entry.begin());
    set_word_at(entry, 10, type);
    set_dword_at(entry, 12, start);
    set_dword_at(entry, 16, records);
    return joined({entry, header_date, implementation});
}

// Two records: the head of a small volume, its directory.
Bytes basic_header(uint16_t type, uint32_t records, const std::string &name = "WS_FILE   ")
{
    const Bytes first = {0x80, 0x00, 'H', 'F', 'S', 'L', 'I', 'F', 0, 0, 0, 1, 0x10, 0x00, 0, 0,
                         0,    0,    0,   1,   0,   0,   0,   0,   0, 0, 0, 1, 0,    0,    0, 1};
    Bytes header = joined({first, {0, 0, 0, 0}, repeated(0x11, 6), repeated(0, 206), repeated(0x11, 6), {0, 0}});
    set_dword_at(header, 32, records + 2);
    header = joined({header, entry_bytes(name, type, 2, records), repeated(0, 10), {0xFF, 0xFF}});
    header.resize(512);
    return header;
}

Bytes calc_header(uint16_t type, uint32_t records, const std::string &name = "NAME")
{
    return entry_bytes(name, type, 0, records);
}

struct HeaderVolume {
    explicit HeaderVolume(uint32_t form) : open(three_files()), image(open.file.bytes())
    {
        std::fill(image.begin() + 10 * 256, image.end(), uint8_t{0xEE});
        open.file.replace(image);
        open.md->use_file_headers = form;
    }
    Added add(const Bytes &source, uint16_t flags = 0, const std::string &name = "NEW", const FileInfo &info = {})
    {
        return tests::insertion::add(open.md, folder.file(name, text_of(source)), flags, info);
    }
    bool holds(const Bytes &content) const // at record 10, and nothing else has changed
    {
        return open.file.bytes() == with_records(image, 10, content);
    }

    OpenVolume open;
    Bytes image;
    Scratch folder;
};

void expect_header_taken(const FileInfo &info, uint16_t type)
{
    EXPECT_EQ(info.type, type);
    EXPECT_EQ(info.date.tm_year, 86);
    EXPECT_EQ(info.date.tm_mon, 10);
    EXPECT_EQ(info.date.tm_mday, 3);
    EXPECT_EQ(info.date.tm_hour, 8);
    EXPECT_EQ(info.date.tm_min, 30);
    EXPECT_EQ(info.date.tm_sec, 59);
    EXPECT_EQ(Bytes(info.lif_impl, info.lif_impl + 6), implementation);
}

}

// ---- HPBASIC -------------------------------------------------------------------------------------------------------

TEST(InsertHeaders, KeepsShorterFileBehindHeader)
{
    HeaderVolume volume(basic_form);
    const Bytes content = numbered(5 * 256);
    const Added added = volume.add(joined({basic_header(0xE961, 5), content}));
    EXPECT_EQ(added.result, 10);
    expect_header_taken(added.info, 0xE961);
    EXPECT_EQ(added.info.size, 3u * 256u);
    EXPECT_EQ(added.info.records, 3u);
    EXPECT_STREQ(added.info.name, "NEW");
    EXPECT_TRUE(volume.holds(part_of(content, 0, 768)));
    EXPECT_EQ(update_file_table(volume.open.md, 0), 0);
    EXPECT_EQ(part_of(records_at(volume.open.file, 2, 1), 3 * 32, 32),
              joined({bytes_of("NEW       "), {0xE9, 0x61, 0, 0, 0, 10, 0, 0, 0, 3}, header_date, implementation}));
}

TEST(InsertHeaders, Hazard_I2_ABasicHeaderOfFewRecordsIsAnEmptyFile)
{
    struct Row {
        uint32_t records;
        uint32_t size;
    };
    for (const Row &row : {Row{0, 0}, {1, 0}, {2, 0}, {3, 256}}) {
        HeaderVolume volume(basic_form);
        const Bytes content = numbered(row.records * 256);
        const Added added = volume.add(joined({basic_header(0xE020, row.records), content}));
        EXPECT_EQ(added.result, 10) << row.records;
        EXPECT_EQ(added.info.size, row.size) << row.records;
        EXPECT_EQ(added.info.records, row.size / 256) << row.records;
        EXPECT_EQ(added.info.type, 0xE020u);
        EXPECT_TRUE(volume.holds(part_of(content, 0, row.size))) << row.records;
    }
}

TEST(InsertHeaders, ABasicHeaderAloneGivesZeros)
{
    HeaderVolume volume(basic_form);
    const Added added = volume.add(basic_header(0xE020, 6));
    EXPECT_EQ(added.info.size, 4u * 256u);
    EXPECT_TRUE(volume.holds(repeated(0, 1024)));
}

TEST(InsertHeaders, WhatIsNoBasicHeaderGoesInWhole)
{
    Bytes foreign = joined({basic_header(0xE020, 3), numbered(300)});
    foreign[7] = 'X';
    const Bytes sources[] = {foreign,
                             numbered(511),
                             numbered(512),
                             part_of(basic_header(0xE020, 3), 0, 511),
                             calc_header(0xE020, 3),
                             numbered(10),
                             {}};
    for (const Bytes &source : sources) {
        HeaderVolume volume(basic_form);
        const Added added = volume.add(source);
        EXPECT_EQ(added.result, 10) << source.size();
        EXPECT_EQ(added.info.size, source.size());
        EXPECT_EQ(added.info.type, 1u) << source.size();
        EXPECT_TRUE(volume.holds(source)) << source.size();
    }
}

TEST(InsertHeaders, AnotherNameInABasicHeaderIsAnErrorInTheLog)
{
    HeaderVolume volume(basic_form);
    const Bytes source = joined({basic_header(0xE020, 3, "WS_FILE1  "), numbered(768)});
    std::string text;
    Added added;
    {
        const LogCapture log(2);
        added = volume.add(source);
        text = log.text();
    }
    EXPECT_EQ(text, "Info:  Error in LIF file header\n");
    EXPECT_EQ(added.info.size, source.size());
    EXPECT_EQ(added.info.type, 1u);
    EXPECT_TRUE(volume.holds(source));
}

// ---- HPCALC --------------------------------------------------------------------------------------------------------

TEST(InsertHeaders, ACalcHeaderGivesTheEntry)
{
    HeaderVolume volume(calc_form);
    const Bytes content = numbered(5 * 256);
    const Added added = volume.add(joined({calc_header(0xE080, 5, "OTHER"), content}));
    EXPECT_EQ(added.result, 10);
    expect_header_taken(added.info, 0xE080);
    EXPECT_EQ(added.info.size, 5u * 256u);
    EXPECT_EQ(added.info.records, 5u);
    EXPECT_STREQ(added.info.name, "NEW"); // the name is that of the source
    EXPECT_TRUE(volume.holds(content));
}

TEST(InsertHeaders, AFileShorterThanACalcHeaderGoesInWhole)
{
    for (const size_t bytes : {0u, 1u, 31u}) {
        HeaderVolume volume(calc_form);
        const Bytes source = numbered(bytes);
        const Added added = volume.add(source);
        EXPECT_EQ(added.result, 10) << bytes;
        EXPECT_EQ(added.info.size, bytes);
        EXPECT_EQ(added.info.type, 1u);
        EXPECT_TRUE(volume.holds(source)) << bytes;
    }
}

TEST(InsertHeaders, ACalcHeaderAloneIsTakenToo)
{
    HeaderVolume volume(calc_form);
    EXPECT_EQ(volume.add(calc_header(0xE080, 0)).info.size, 0u);
    HeaderVolume other(calc_form);
    EXPECT_EQ(other.add(calc_header(0xE080, 2)).info.size, 512u);
    EXPECT_TRUE(other.holds(repeated(0, 512)));
}

TEST(InsertHeaders, AnyThirtyTwoBytesAreACalcHeader)
{
    HeaderVolume volume(calc_form);
    const Bytes source = joined({basic_header(0xE020, 3), numbered(768)});
    const Added added = volume.add(source);
    EXPECT_EQ(added.result, 10);
    EXPECT_EQ(added.info.type, 1u);   // the word at 10
    EXPECT_EQ(added.info.size, 256u); // the number at 16
    EXPECT_TRUE(volume.holds(part_of(source, 32, 256)));
}

TEST(InsertHeaders, TheSizeOfTheHeaderIsWhatIsCopied)
{
    HeaderVolume less(calc_form);
    const Bytes content = numbered(5 * 256);
    EXPECT_EQ(less.add(joined({calc_header(0xE080, 2), content})).info.size, 512u);
    EXPECT_TRUE(less.holds(part_of(content, 0, 512)));
}

TEST(InsertHeaders, Hazard_I1_BytesThatTheSourceLacksAreZeros)
{
    HeaderVolume volume(calc_form);
    const Bytes content = numbered(300);
    EXPECT_EQ(volume.add(joined({calc_header(0xE080, 9), content})).info.size, 9u * 256u);
    EXPECT_TRUE(volume.holds(joined({content, repeated(0, 9 * 256 - 300)})));
}

TEST(InsertHeaders, Hazard_I1_AHeaderBeyondTheVolumeIsRefused)
{
    for (const uint32_t form : {basic_form, calc_form}) {
        for (const uint32_t records : {153u, 65535u, 65536u + 2u, 65537u + 2u, 0x10064u, 0xFFFFFFu}) {
            HeaderVolume volume(form);
            const Bytes header = form == basic_form ? basic_header(1, records) : calc_header(1, records);
            const Added added = volume.add(joined({header, numbered(700)}));
            EXPECT_EQ(added.result, -1) << form << " " << records;
            EXPECT_EQ(added.error, 211u) << form << " " << records;
            EXPECT_EQ(added.detail, "file \"NEW\"");
            EXPECT_TRUE(volume.open.file.bytes() == volume.image);
            EXPECT_EQ(names(volume.open.md).size(), 3u);
        }
    }
}

// However such a number is taken, the volume may not suffer.
TEST(InsertHeaders, Hazard_I1_HeadersOfFourGigabytesHarmNothing)
{
    for (const uint32_t records : {0x1000000u, 0x1000001u, 0x1000003u, 0x80000001u, 0xFFFFFFFFu}) {
        HeaderVolume volume(calc_form);
        const Added added = volume.add(joined({calc_header(1, records), numbered(700)}));
        if (added.result < 0) {
            EXPECT_EQ(added.error, 211u) << records;
            EXPECT_TRUE(volume.open.file.bytes() == volume.image) << records;
        } else {
            EXPECT_LE(added.info.size, 150u * 256u) << records;
            EXPECT_TRUE(part_of(volume.open.file.bytes(), 0, 2560) == part_of(volume.image, 0, 2560)) << records;
        }
    }
}

TEST(InsertHeaders, ACalcHeaderMayFillTheVolume)
{
    HeaderVolume volume(calc_form);
    const Bytes content = numbered(1000);
    EXPECT_EQ(volume.add(joined({calc_header(0xE080, 150), content})).result, 10);
    EXPECT_TRUE(volume.holds(joined({content, repeated(0, 150 * 256 - 1000)})));
}

// ---- with the flags ------------------------------------------------------------------------------------------------

TEST(InsertHeaders, WithoutTheOptionHeadersAreContent)
{
    HeaderVolume volume(0);
    const Bytes source = joined({basic_header(0xE020, 3), numbered(768)});
    EXPECT_EQ(volume.add(source).info.size, source.size());
    EXPECT_TRUE(volume.holds(source));
}

TEST(InsertHeaders, AreTakenWhenTheConversionBitStandsAlone)
{
    for (const uint16_t flags : Words{1, 2, 4, 8, 10, 12}) { // and 10 without its ending
        HeaderVolume volume(calc_form);
        const Added added = volume.add(joined({calc_header(0xE080, 1), numbered(256)}), flags);
        EXPECT_EQ(added.info.size, 256u) << flags;
        EXPECT_EQ(added.info.type, 0xE080u) << flags;
    }
}

// Conversion is given up only when the type turns out to have no kind, and by then no header was looked for.
TEST(InsertHeaders, AreContentWhereConversionWasAskedFor)
{
    for (const uint32_t form : {basic_form, calc_form}) {
        const Bytes header = form == basic_form ? basic_header(0xE020, 5) : calc_header(0xE020, 5);
        const Bytes source = joined({header, numbered(600)});
        HeaderVolume volume(form);
        const Added added = volume.add(source, INSERT_CONVERT | INSERT_FORCE, "NEW", typed(0xE961, "BDAT"));
        EXPECT_EQ(added.info.size, source.size());
        EXPECT_EQ(added.info.type, 0xE961u);
        EXPECT_TRUE(volume.holds(source));
        HeaderVolume other(form);
        EXPECT_EQ(other.add(source, INSERT_CONVERT | INSERT_TXT, "NEW.BDAT.txt").info.size, source.size());
        EXPECT_TRUE(other.holds(source));
    }
}

TEST(InsertHeaders, ATextIsConvertedWithoutALookForHeaders)
{
    HeaderVolume volume(calc_form);
    const Added added = volume.add(bytes_of("This line has thirty-two letters, and more\n"), 6);
    EXPECT_EQ(added.info.type, 1u);
    EXPECT_TRUE(volume.holds(joined({{0, 42}, bytes_of("This line has thirty-two letters, and more"), {255, 255}})));
}

TEST(InsertHeaders, ASourceAtHandMayHaveOne)
{
    HeaderVolume volume(calc_form);
    const Bytes content = numbered(512);
    const Bytes bytes = joined({calc_header(0xE080, 2), content});
    InsertSource source{.bytes = bytes.data(), .size = bytes.size()};
    FileInfo info{};
    EXPECT_EQ(insert_from(volume.open.md, &info, &source, {.name = "NEW"}).result, 10);
    EXPECT_EQ(info.size, 512u);
    EXPECT_TRUE(volume.holds(content));
}

TEST(InsertHeaders, AFailingReadIsError300)
{
    for (const uint32_t form : {basic_form, calc_form}) {
        HeaderVolume volume(form);
        const Bytes source = joined({basic_header(0xE020, 5), numbered(600)});
        Added added;
        {
            const FileFaults faults(FileFault::read, 1);
            added = volume.add(source);
            EXPECT_TRUE(faults.reached);
        }
        EXPECT_EQ(added.result, -1) << form;
        EXPECT_EQ(added.error, 300u) << form;
        EXPECT_EQ(names(volume.open.md).size(), 3u);
        EXPECT_TRUE(volume.open.file.bytes() == volume.image);
    }
}
