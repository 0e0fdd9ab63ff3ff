#include "tests/console/copies.h"

#include <gtest/gtest.h>

namespace tests
{

std::string Sources::add(const std::string &name, const Bytes &content) const
{
    const std::string path = folder.add(name, content);
    set_written_at(path, "1987-03-09 08:07:06");
    return path;
}

std::string Sources::add(const std::string &name, const std::string &text) const
{
    return add(name, bytes_of(text));
}

LifVolume volume_of(const std::vector<LifEntry> &entries)
{
    LifVolume volume;
    volume.entries = entries;
    return volume;
}

LifVolume one_file()
{
    return volume_of({{.name = "FIRST", .content = Bytes(300, '1')}});
}

Outcome put(const TemporaryFile &volume, const Names &words)
{
    Names line = {"put", volume.path()};
    line.insert(line.end(), words.begin(), words.end());
    return run(line);
}

void expect_good(const Outcome &outcome)
{
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "");
}

void expect_usage_error(const Names &words, const std::string &text)
{
    const TemporaryFile volume(lif_image(one_file()));
    const Bytes before = volume.bytes();
    const Outcome outcome = put(volume, words);
    EXPECT_EQ(outcome.code, 64) << text;
    EXPECT_EQ(outcome.errors, error_line(text) + "[tarvo]        Try \"tarvo --help\".\n");
    EXPECT_EQ(volume.bytes(), before);
}

Bytes image_with(LifVolume contents, const LifEntry &added)
{
    contents.entries.push_back(added);
    return lif_image(contents);
}

std::string listed(const TemporaryFile &volume)
{
    const rapidjson::Document document = json_of(run({"ls", "--json", volume.path()}));
    std::string names;
    for (const auto &entry : document["entries"].GetArray()) {
        names += (names.empty() ? "" : " ") + std::string(entry["visible"].GetString());
    }
    return names;
}

}
