// Builds LIF volumes byte by byte from their layout, without the engine, and puts images into temporary files.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tests
{

using Bytes = std::vector<uint8_t>;
using BcdDate = std::array<uint8_t, 6>; // year, month, day, hour, minute, second, two decimal digits each

constexpr uint32_t record_bytes = 256;
constexpr BcdDate some_date = {0x84, 0x03, 0x15, 0x09, 0x07, 0x30}; // 15 March 1984, 9:07:30

struct LifEntry {
    std::string name; // up to 10 bytes, blank-padded; longer ones are cut
    uint16_t type = 0x0001;
    std::optional<uint32_t> start{};  // record; none: behind the entry before, or at the begin of the file area
    std::optional<uint32_t> length{}; // records; none: what the content takes, at least 1
    BcdDate date = some_date;
    std::array<uint8_t, 6> implementation = {0x80, 0x01, 0, 0, 0, 0};
    Bytes content{};
};

struct LifVolume {
    uint16_t magic = 0x8000;
    std::string label = "TESTVL"; // six bytes, blank-padded
    uint32_t directory_start = 2; // record
    uint16_t id = 0x1000;
    uint32_t directory_length = 2; // records, as the header says it
    uint16_t version = 1;
    uint32_t tracks = 10; // a surface
    uint32_t surfaces = 1;
    uint32_t records_per_track = 16;
    BcdDate date = some_date;
    std::vector<LifEntry> entries;
    bool end_mark = true;            // written where a slot is left
    std::optional<uint32_t> records; // of the image; none: what the geometry says, or what the files take without one
};

void set_word_at(Bytes &image, size_t position, uint16_t value);
void set_dword_at(Bytes &image, size_t position, uint32_t value);

// The 32 bytes of one entry, with start and length as given (0 where they aren't).
std::array<uint8_t, 32> lif_entry_bytes(const LifEntry &entry);

// The image. What lies outside it (files, directory slots) is left out.
Bytes lif_image(const LifVolume &volume);

// n files of one record each, with a directory as large as they need; file i is named F000000 onward.
LifVolume lif_volume_with_files(uint32_t n);

// ONE, TWO and THREE, behind a directory of three records.
LifVolume three_files();

// Labelled DEMO, with files of several types and dates; samples/demo.lif is this.
LifVolume demo_volume();

// Lines as the records of a LIF ASCII file; nothing may be longer than 32,767 bytes.
Bytes lif_ascii(const std::vector<std::string> &lines);

// Printable lines of 1 to 100 characters, this many characters in all; the same for the same seed.
std::vector<std::string> mixed_lines(size_t bytes, uint32_t seed = 0);

// n LIF ASCII files of up to 2,000 characters; file i is named F000000 onward.
LifVolume lif_volume_with_texts(uint32_t n);

// One file, on a volume as large as it needs.
LifVolume lif_volume_with(LifEntry entry);

// An image of this many records (full tracks of them), with a directory of at least so many slots and nothing in it.
LifVolume empty_lif_volume(uint32_t records, uint32_t slots);

// A host file that goes away with the object.
class TemporaryFile
{
  public:
    explicit TemporaryFile(const Bytes &content, std::string_view extension = ".lif");
    explicit TemporaryFile(std::string_view extension = ".lif"); // only the name: nothing is made
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;

    const char *path() const
    {
        return path_.c_str();
    }
    Bytes bytes() const; // what it holds now
    void replace(const Bytes &content) const;
    void extend(uint64_t bytes) const; // zeros up to this size, without writing them
    bool exists() const;

  private:
    std::string path_;
};

void write_file(const std::string &path, const Bytes &content);
Bytes read_file(const std::string &path);

}
