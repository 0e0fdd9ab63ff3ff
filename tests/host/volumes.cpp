// Commands that make, change and show files: images for the plug-in, and what it left of them.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <stdexcept>

#include "tests/host/session.h"
#include "tests/support/sdf_builder.h"
#include "tests/support/volume_builder.h"

namespace host
{

namespace
{

using tests::Bytes;

constexpr size_t dump_width = 16;

void take_entry_word(const Words &words, size_t index, tests::LifEntry *entry)
{
    const std::string &key = word(words, index);
    const std::string &value = word(words, index + 1);
    if (key == "at") {
        entry->start = number_of(value);
    } else if (key == "records") {
        entry->length = number_of(value);
    } else if (key == "date") {
        const Bytes date = bytes_of(value);
        std::copy_n(date.begin(), std::min(date.size(), entry->date.size()), entry->date.begin());
    } else if (key == "implementation") {
        const Bytes bytes = bytes_of(value);
        std::copy_n(bytes.begin(), std::min(bytes.size(), entry->implementation.size()), entry->implementation.begin());
    } else if (key == "content") {
        entry->content = bytes_of(value);
    } else {
        throw std::runtime_error("unknown: " + key);
    }
}

// entry NAME TYPE [at RECORD] [records N] [date HEX] [implementation HEX] [content HEX]
tests::LifEntry entry_of(const Words &words)
{
    tests::LifEntry entry;
    entry.name = word(words, 1);
    entry.type = static_cast<uint16_t>(number_of(word(words, 2)));
    for (size_t i = 3; i < words.size(); i += 2) take_entry_word(words, i, &entry);
    return entry;
}

// The lines up to `end` say what is in the volume.
tests::LifVolume read_volume()
{
    tests::LifVolume volume;
    while (true) {
        if (session.next_line >= session.lines.size()) throw std::runtime_error("volume without end");
        const Words words = words_of(session.lines[session.next_line++], session.folder);
        if (words.empty()) continue;
        if (words[0] == "end") return volume;
        if (words[0] == "entry") {
            volume.entries.push_back(entry_of(words));
        } else if (words[0] == "directory") {
            volume.directory_length = number_of(word(words, 1));
        } else {
            throw std::runtime_error("unknown: " + words[0]);
        }
    }
}

// volume FILE demo | files N | sdf | lif ... end
void make_volume(const Words &words)
{
    const std::string &kind = word(words, 2);
    tests::LifVolume volume;
    if (kind == "sdf") {
        tests::write_file(word(words, 1), tests::sdf_image(tests::five_levels()).bytes);
        return;
    }
    if (kind == "demo") {
        volume = tests::demo_volume();
    } else if (kind == "files") {
        volume = tests::lif_volume_with_files(number_of(word(words, 3)));
    } else if (kind == "lif") {
        volume = read_volume();
    } else {
        throw std::runtime_error("unknown volume: " + kind);
    }
    tests::write_file(word(words, 1), tests::lif_image(volume));
}

void make_file(const Words &words) // zeros FILE SIZE
{
    tests::write_file(word(words, 1), Bytes(number_of(word(words, 2))));
}

void make_text(const Words &words) // text FILE TEXT
{
    const std::string &text = word(words, 2);
    tests::write_file(word(words, 1), Bytes(text.begin(), text.end()));
}

void patch(const Words &words) // bytes FILE OFFSET HEX
{
    Bytes content = tests::read_file(word(words, 1));
    const Bytes bytes = bytes_of(word(words, 3));
    const size_t offset = number_of(word(words, 2));
    if (offset + bytes.size() > content.size()) throw std::runtime_error("outside of the file");
    std::copy(bytes.begin(), bytes.end(), content.begin() + static_cast<std::ptrdiff_t>(offset));
    tests::write_file(words[1], content);
}

void copy(const Words &words) // copy FROM TO
{
    tests::write_file(word(words, 2), tests::read_file(word(words, 1)));
}

void cut(const Words &words) // truncate FILE SIZE
{
    std::filesystem::resize_file(word(words, 1), number_of(word(words, 2)));
}

void remove_file(const Words &words) // remove FILE
{
    if (!std::filesystem::remove(word(words, 1))) throw std::runtime_error("no such file");
}

void make_folder(const Words &words) // folder NAME
{
    std::filesystem::create_directory(word(words, 1));
}

std::string hexadecimal(const Bytes &content, size_t from, size_t to)
{
    std::string text;
    std::array<char, 8> digits{};
    for (size_t i = from; i < std::min(to, content.size()); i++) {
        snprintf(digits.data(), digits.size(), " %02X", static_cast<unsigned>(content[i]));
        text += digits.data();
    }
    return text;
}

void dump(const Words &words) // dump FILE OFFSET LENGTH
{
    const Bytes content = tests::read_file(word(words, 1));
    const size_t begin = number_of(word(words, 2));
    const size_t end = begin + number_of(word(words, 3));
    for (size_t at = begin; at < end; at += dump_width) {
        print(std::to_string(at) + ":" + hexadecimal(content, at, std::min(at + dump_width, end)));
    }
}

void show(const Words &words) // show FILE; zeros at its end are counted
{
    const Bytes content = tests::read_file(word(words, 1));
    std::string text(content.begin(), content.end());
    text.erase(text.find_last_not_of('\0') + 1);
    const size_t zeros = content.size() - text.size();
    print("= " + quoted(visible(text)) + (zeros == 0 ? "" : " and " + std::to_string(zeros) + " zeros"));
}

void set_write_time(const Words &words) // touch FILE ISO, universal time
{
    const auto seconds = std::chrono::seconds(seconds_of(word(words, 2)));
    std::filesystem::last_write_time(word(words, 1),
                                     std::chrono::file_clock::from_sys(std::chrono::sys_seconds(seconds)));
}

void show_write_time(const Words &words) // written FILE
{
    const auto time = std::chrono::file_clock::to_sys(std::filesystem::last_write_time(word(words, 1)));
    const auto seconds = std::chrono::time_point_cast<std::chrono::seconds>(time).time_since_epoch();
    print("= " + iso_of_seconds(seconds.count()));
}

void compare(const Words &words) // same FILE FILE
{
    const Bytes left = tests::read_file(word(words, 1));
    const Bytes right = tests::read_file(word(words, 2));
    if (left == right) return print("= same");
    const auto differ = std::mismatch(left.begin(), left.end(), right.begin(), right.end());
    print("= differ at " + std::to_string(differ.first - left.begin()));
}

void is_there(const Words &words) // exists FILE
{
    print(std::filesystem::exists(word(words, 1)) ? "= yes" : "= no");
}

struct FileCommand {
    const char *name;
    void (*run)(const Words &words);
};

constexpr FileCommand commands[] = {
    {"volume", make_volume},
    {"zeros", make_file},
    {"text", make_text},
    {"bytes", patch},
    {"copy", copy},
    {"truncate", cut},
    {"remove", remove_file},
    {"folder", make_folder},
    {"dump", dump},
    {"same", compare},
    {"exists", is_there},
    {"show", show},
    {"touch", set_write_time},
    {"written", show_write_time},
};

}

bool run_file_command(const Words &words)
{
    for (const FileCommand &command : commands) {
        if (words[0] != command.name) continue;
        command.run(words);
        return true;
    }
    return false;
}

}
