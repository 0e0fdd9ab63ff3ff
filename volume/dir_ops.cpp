// Commands over all files that match: the walk over the entries, with its target ahead of it and the tables behind it.
#include <cstring>
#include <new>

#include "base/error.h"
#include "base/file_inner.h"
#include "base/log.h"
#include "base/log_pointer.h"
#include "base/output.h"
#include "volume/catalogue.h"
#include "volume/dir_walk.h"
#include "volume/extract_inner.h"
#include "volume/names.h"
#include "volume/navigate.h"
#include "volume/open.h"
#include "volume/state.h"
#include "volume/target.h"
#include "volume/type_text.h"

namespace
{
constexpr uint16_t target_flags = OPEN_READ_VOLUME;
constexpr int32_t yes_no = 2;
constexpr int32_t yes = 1;

// ---- the walk ----------------------------------------------------------------------------------------------

FileInfo *head_of_list(const Walk *walk)
{
    if (!walk->entered.empty()) return walk->entered.back()->child;
    return walk->start_directory != nullptr ? walk->start_directory->child : walk->md->root;
}

bool is_selected(const Walk *walk, const FileInfo *entry)
{
    if (entry->deleted != 0 && walk->md->show_purged == 0) return false;
    char type[type_text_size];
    type_text(entry, type);
    return match_filespec(walk->filespec, walk->name.c_str(), type) != 0;
}

void visit(Walk *walk)
{
    char name[VISIBLE_NAME_SIZE];
    decode_filename(walk->current, walk->md->format, name);
    walk->name = name;
    walk->deleted = false;
    if (is_selected(walk, walk->current)) carry_out(walk, walk->current);
}

void enter(Walk *walk)
{
    char name[VISIBLE_NAME_SIZE];
    compose_filename(walk->md, walk->current, name);
    walk->host_path += "/" + safe_host_name(name);
    walk->entered.push_back(walk->current);
    walk->current = walk->current->child;
}

void step(Walk *walk)
{
    FileInfo *entry = walk->current;
    if (!walk->deleted && walk->recursive && entry->is_directory != 0 && entry->child != nullptr) {
        enter(walk);
        return;
    }
    const FileInfo *behind = walk->deleted ? walk->behind : entry;
    walk->current = behind != nullptr ? behind->next : head_of_list(walk);
    while (walk->current == nullptr && !walk->entered.empty()) {
        walk->current = walk->entered.back()->next;
        walk->entered.pop_back();
        walk->host_path.resize(walk->host_path.rfind('/'));
    }
}

void walk_list(Walk *walk)
{
    walk->host_path = walk->dest_path != nullptr ? walk->dest_path : ".";
    walk->current = head_of_list(walk);
    while (walk->go_on && walk->current != nullptr) {
        visit(walk);
        if (walk->go_on) step(walk);
    }
    if (!walk->go_on || walk->matched || walk->md->root == nullptr) return;
    set_error(207, "");
    walk->go_on = false;
}

// ---- before and after -----------------------------------------------------------------------------------------

enum class Start : uint8_t { go, done, refused };

bool has_target(const Walk *walk)
{
    return walk->command == COMMAND_COPY || walk->command == COMMAND_MOVE;
}

Start refuse(uint32_t error)
{
    set_error(error, "");
    return Start::refused;
}

bool is_one_image(const MediaDescriptor *left, const MediaDescriptor *right)
{
    FileFacts left_facts;
    FileFacts right_facts;
    return left->access == ACCESS_IMAGE && right->access == ACCESS_IMAGE &&
           file_calls->facts(left->file, &left_facts) && file_calls->facts(right->file, &right_facts) &&
           left_facts.plain && left_facts.identity == right_facts.identity;
}

// A volume with all of its files in the list: what isn't there would be lost with the tables written anew. A path into
// the target leaves the list empty, a record of the directory that can't be read leaves it short.
MediaDescriptor *open_whole(const char *target)
{
    char rest[FILE_PATH_SIZE] = "";
    if (parse_target(target, nullptr, rest, nullptr, nullptr, nullptr, nullptr, nullptr) < 0) return nullptr;
    if (rest[0] != '\0') {
        set_error(218, "%s", rest);
        return nullptr;
    }
    MediaDescriptor *md = image_open(target, nullptr, target_flags);
    if (md == nullptr || md->state == nullptr || md->state->table_result == 0) return md;
    image_close(md);
    return nullptr;
}

// An image under another name is still this volume: two lists of its files would be written one over the other.
bool find_target(Walk *walk)
{
    if (walk->dest_path == nullptr || std::strcmp(walk->dest_path, walk->md->msus) == 0) return true;
    MediaDescriptor *target = open_whole(walk->dest_path);
    if (target == nullptr) return false;
    if (is_one_image(walk->md, target)) {
        image_close(target);
    } else {
        walk->target = target;
    }
    return true;
}

bool goes_to_itself(const Walk *walk)
{
    const char *first = walk->filespec != nullptr ? walk->filespec[0] : nullptr;
    return on_one_volume(walk) && walk->dest_file != nullptr && first != nullptr &&
           std::strcmp(walk->dest_file, first) == 0;
}

// The volume that files go to, and whether the user wants a file there to be overwritten.
Start open_target(Walk *walk)
{
    if (walk->dest_path == nullptr && walk->dest_file == nullptr) return refuse(205);
    if (walk->dest_file != nullptr && match_count(walk->md, walk->filespec) > 1) return refuse(206);
    if (!find_target(walk)) return Start::refused;
    if (goes_to_itself(walk)) return walk->command == COMMAND_MOVE ? Start::done : refuse(208);
    if (walk->dest_file == nullptr || walk->confirm == nullptr) return Start::go;
    // Kept: it is the source's list in which the target's file is looked for.  [KeepsQuestionByListOfSource]
    if (image_find_file(walk->target, walk->md->root, walk->dest_file, 0) == nullptr) return Start::go;
    const int32_t answer = walk->confirm(yes_no, "File \"%s\" already exists. Overwrite ", walk->dest_file);
    return answer == yes ? Start::go : Start::done;
}

void run_command(Walk *walk)
{
    if (walk->command == COMMAND_LIST) print_list_header(walk->md);
    if (walk->command == COMMAND_CREATE) {
        create_file(walk);
    } else if (walk->command == COMMAND_ADD) {
        add_files(walk);
    } else {
        walk_list(walk);
    }
    if (walk->command == COMMAND_LIST) output_flush();
}

// The target's tables first: what they couldn't take stays where it came from.
void write_changes(Walk *walk)
{
    if (walk->at_once) return;
    if (walk->target_changed && update_tables(walk->target) < 0) {
        walk->go_on = false;
        return;
    }
    if (walk->source_changed && update_tables(walk->md) < 0) walk->go_on = false;
}

struct TargetCloser {
    const Walk *walk;
    ~TargetCloser()
    {
        if (!on_one_volume(walk)) image_close(walk->target);
    }
};

int32_t run(Walk *walk)
{
    walk->target = walk->md;
    const TargetCloser closer = {walk};
    const Start start = has_target(walk) ? open_target(walk) : Start::go;
    if (start == Start::go) {
        run_command(walk);
        write_changes(walk);
    }
    return start == Start::refused || !walk->go_on ? -1 : 0;
}
}

int32_t image_dir_ops(MediaDescriptor *md, const char *const *filespec, const char *dest_path, const char *dest_file,
                      FileInfo *info, uint8_t attributes, int32_t command, ConfirmCallback confirm,
                      FileInfo *start_directory, int32_t level, int32_t recursive)
{
    log_file(3,
             "image_dir_ops(md=%lu, filespec=\"%s\", dest_path=\"%s\", dest_file=\"%s\", info=%lu, command=%d, "
             "confirm=%lu)\n",
             log_pointer(md), log_text(filespec == nullptr ? nullptr : filespec[0]), log_text(dest_path),
             log_text(dest_file), log_pointer(info), command,
             static_cast<unsigned long>(reinterpret_cast<uintptr_t>(confirm)));
    const bool needs_info = command == COMMAND_CREATE || command == COMMAND_ADD || command == COMMAND_ATTRIBUTES;
    if (md == nullptr || (info == nullptr && needs_info)) {
        set_error(103, "Null pointer");
        return -1;
    }
    try {
        Walk walk = {.md = md,
                     .filespec = filespec,
                     .dest_path = dest_path,
                     .dest_file = dest_file,
                     .info = info,
                     .attributes = attributes,
                     .command = command,
                     .confirm = confirm,
                     .start_directory = start_directory,
                     .start_level = start_directory != nullptr && level > 0 ? static_cast<uint32_t>(level) : 1,
                     .recursive = recursive != 0};
        return run(&walk);
    } catch (const std::bad_alloc &) {
        set_error(105, "");
        return -1;
    }
}
