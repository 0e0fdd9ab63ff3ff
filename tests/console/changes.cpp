#include "tests/console/changes.h"

#include <gtest/gtest.h>

#include "tests/support/system45_builder.h"

namespace tests
{

std::ostream &operator<<(std::ostream &stream, const VolumeCase &volume)
{
    return stream << volume.name;
}

const std::vector<VolumeCase> three_volumes = {
    {"Lif", Layout::lif, lif_of_three}, {"Disk", Layout::disk, disk_of_three}, {"Tape", Layout::tape, tape_of_three}};

Bytes lif_of_three()
{
    LifVolume volume;
    volume.directory_length = 3;
    volume.entries = {{.name = "ALPHA", .type = 0xE950, .content = Bytes(3 * 256, 'a')},
                      {.name = "BETA", .type = 0xE971, .content = Bytes(5 * 256, 'b')},
                      {.name = "GAMMA",
                       .type = 0xE961,
                       .implementation = {0x80, 0x01, ' ', ' ', 0x01, 0x00},
                       .content = Bytes(8 * 256, 'c')}};
    return lif_image(volume);
}

Bytes disk_of_three()
{
    DiskVolume volume = three_disk_files();
    volume.entries[2].is_protected = false;
    return disk45_image(volume);
}

Bytes disk_with_protected_gamma()
{
    return disk45_image(three_disk_files());
}

Bytes tape_of_three()
{
    return tape45_image(three_tape_files());
}

namespace
{

Names command_line(const std::string &verb, const TemporaryFile &volume, const Names &words)
{
    Names line = {verb, volume.path()};
    line.insert(line.end(), words.begin(), words.end());
    return line;
}

}

Outcome change(const std::string &verb, const TemporaryFile &volume, const Names &words)
{
    return run(command_line(verb, volume, words));
}

Outcome change_asked(const std::string &verb, const TemporaryFile &volume, const Names &words, const std::string &input)
{
    return run_in_shell(command_line(verb, volume, words), "printf '" + input + "' | %");
}

Names names_on(Layout layout, const TemporaryFile &volume)
{
    const StoredVolume contents = stored(layout, volume.bytes());
    EXPECT_TRUE(contents.spares_agree);
    return names_of(contents);
}

StoredFile file_on(Layout layout, const TemporaryFile &volume, const std::string &name)
{
    const StoredVolume contents = stored(layout, volume.bytes());
    const StoredFile *file = file_named(contents, name);
    EXPECT_NE(file, nullptr) << name;
    return file == nullptr ? StoredFile() : *file;
}

Bytes content_on(Layout layout, const TemporaryFile &volume, const std::string &name)
{
    return content_of(volume.bytes(), file_on(layout, volume, name));
}

void expect_silent(const Outcome &outcome)
{
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "");
}

void expect_refused(const Outcome &outcome, const std::string &errors)
{
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, errors);
}

}
