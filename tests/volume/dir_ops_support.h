// What tests of commands over many files share: an order with defaults, a tree of directories made by hand.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/medium.h"
#include "volume/operations.h"

namespace tests
{

struct DirOrder {
    int32_t command = 0;
    std::optional<std::vector<std::string>> filespec{}; // none: a null pointer
    std::optional<std::string> dest_path{};
    std::optional<std::string> dest_file{};
    FileInfo *info = nullptr;
    uint8_t attributes = 0;
    ConfirmCallback confirm = nullptr;
    FileInfo *start_directory = nullptr;
    int32_t level = 1;
    bool recursive = false;
};

// image_dir_ops, with no error set before; what it prints is thrown away, or goes where all else goes.
int32_t dir_ops(MediaDescriptor *md, const DirOrder &order);
int32_t dir_ops_printing(MediaDescriptor *md, const DirOrder &order);

// The same; what it has printed.
std::string printed_by(MediaDescriptor *md, const DirOrder &order, int32_t wanted_result = 0);

// A new file for COMMAND_CREATE, or the template of one.
FileInfo new_file(const std::string &name, const std::string &type, uint32_t bytes);

struct Node {
    std::string name;
    bool directory = false;
    uint8_t fill = 0; // of a file: one record of these bytes
    std::vector<Node> children{};
};

// A LIF volume of 100 records, directory at records 2 and 3, whose list in memory is a tree: files from record 10 on,
// as many records as there are files.
class TreeMedium
{
  public:
    explicit TreeMedium(const std::vector<Node> &nodes);

    FileInfo *find(const std::string &name) const; // anywhere in the tree; null for none

    HandMedium hand;
    MediaDescriptor *md;

  private:
    FileInfo *build(const std::vector<Node> &nodes, FileInfo *parent, uint32_t level);

    Bytes image_;
    uint32_t next_record_ = 10;
};

// /A, /D1 with B and D2 (which holds C), /E, in this order, filled with 'a', 'b', 'c' and 'e'.
std::vector<Node> two_levels();

// The names of a list in memory.
std::vector<std::string> list_of(const FileInfo *head);

}
