// Conversions between the layouts of a tape image and plain images. What a file is, is found by the test of tape
// images, and by its name where that says no.
#include "console/tape_convert.h"

#include <algorithm>
#include <string_view>

#include "base/error.h"
#include "base/file_inner.h"
#include "console/report.h"
#include "console/tape_file.h"
#include "tape/simh_convert.h"
#include "tape/simh_test_inner.h"
#include "volume/tape_access.h"

namespace
{
constexpr uint32_t not_supported = 109;
constexpr uint32_t same_file = 208;
constexpr uint32_t target_exists = 210;
constexpr uint32_t cannot_create = 307;

constexpr int32_t slot_multiple = 4; // bytes

enum class Content : uint8_t { plain, variable, fixed };

struct Conversion {
    const Arguments &arguments;
    TapeFile from;
    TapeFile to;
    uint32_t block; // bytes
};

// ---- what is converted into what ------------------------------------------------------------------------

bool variable_to_fixed(Conversion *run)
{
    run->to.tape.blocksize = run->block;
    return simh_simh2fixed(&run->from.tape, &run->to.tape, run->arguments.pack ? 1 : 0) == 0;
}

bool variable_to_plain(Conversion *run)
{
    return simh_simh2hpi(&run->from.tape, run->to.file.handle, run->block) == 0;
}

bool fixed_to_plain(Conversion *run)
{
    return simh_fixed2hpi(&run->from.tape, run->to.file.handle) == 0;
}

bool plain_to_variable(Conversion *run)
{
    run->to.tape.format = SIMH_VARIABLE;
    run->to.tape.blocksize = run->block;
    return simh_hpi2simh(run->from.file.handle, &run->to.tape) == 0;
}

bool plain_to_fixed(Conversion *run)
{
    run->to.tape.format = SIMH_FIXED;
    run->to.tape.blocksize = run->block;
    return simh_hpi2simh(run->from.file.handle, &run->to.tape) == 0;
}

struct ConversionRow {
    Content from;
    std::string_view to; // one of the layouts of the command line
    uint32_t block;      // bytes, where nothing is said; 0: the source's own
    bool (*run)(Conversion *run);
};

constexpr ConversionRow rows[] = {
    {.from = Content::variable, .to = "fixed", .block = 1024, .run = variable_to_fixed},
    {.from = Content::variable, .to = "hpi", .block = 256, .run = variable_to_plain},
    {.from = Content::fixed, .to = "hpi", .block = 0, .run = fixed_to_plain},
    {.from = Content::plain, .to = "simh", .block = 256, .run = plain_to_variable},
    {.from = Content::plain, .to = "fixed", .block = 1024, .run = plain_to_fixed},
};

constexpr const char *content_names[] = {"plain image", "tape image of the variable layout",
                                         "tape image of the fixed layout"};

const ConversionRow *find_row(Content from, std::string_view to)
{
    auto fits = [from, to](const ConversionRow &row) { return row.from == from && row.to == to; };
    const auto *row = std::find_if(std::begin(rows), std::end(rows), fits);
    if (row != std::end(rows)) return row;
    set_error(not_supported, "%s to %s", content_names[static_cast<size_t>(from)], std::string(to).c_str());
    return nullptr;
}

// ---- both ends -----------------------------------------------------------------------------------------

// What a file is: what the test says of it. Tape marks without a record are what a plain image of zeros looks like,
// unless the name says tape.
bool find_tape(TapeFile *from, uint32_t block, bool is_named_tape, Content *ret_content)
{
    const TapeBar bar(from->path, from->facts.bytes);
    const bool is_plain = test_plain_slots(from->file.handle, &from->tape, block);
    const bool has_slots = from->tape.format == SIMH_FIXED && from->tape.num_records > 0;
    *ret_content = has_slots ? Content::fixed : Content::variable;
    if (!has_slots) from->tape.format = SIMH_VARIABLE;
    if (has_slots && is_plain) return true;
    TapeSums sums;
    if (!test_both_ways(from->file.handle, &sums)) return false;
    return has_slots || sums.records > 0 || (is_named_tape && from->facts.bytes > 0);
}

// False, with the result reported, for what is called a tape image and is none.
bool find_content(Conversion *run, Content *ret_content, int *ret_code)
{
    const bool has_slots = run->arguments.layout == "hpi"; // otherwise the block size is the target's
    const uint32_t block = has_slots ? static_cast<uint32_t>(run->arguments.block) : 0;
    const bool is_named_tape = is_tape_name(run->from.path.c_str());
    global_error = 0;
    if (find_tape(&run->from, block, is_named_tape, ret_content)) return true;
    *ret_content = Content::plain;
    if (!is_named_tape && global_error == 0) return true;
    *ret_code = report_faults(run->from);
    return false;
}

bool refuse_target(uint32_t error, const std::string &path)
{
    set_error(error, "file \"%s\"", path.c_str());
    report_failure();
    return false;
}

// Nothing is lost here: what is there already is looked at first.
bool target_is_free(const Conversion &run)
{
    HostFile there;
    if (file_open(&there.handle, run.to.path.c_str(), "rb", 0) != 1) {
        there.handle = 0;
        return true;
    }
    FileFacts facts;
    const bool known = file_calls->facts(there.handle, &facts);
    if (known && facts.identity == run.from.facts.identity) return refuse_target(same_file, run.to.path);
    return run.arguments.force || refuse_target(target_exists, run.to.path);
}

bool make_target(Conversion *run)
{
    TapeFile *to = &run->to;
    platform_set_last_error(0);
    if (file_open(&to->file.handle, to->path.c_str(), "wb+", 0) == 1) {
        to->tape.fd = to->file.handle;
        simh_reset(&to->tape);
        file_calls->facts(to->file.handle, &to->facts);
        return true;
    }
    to->file.handle = 0;
    char words[256];
    get_win_error(words, sizeof words);
    set_error(cannot_create, "file \"%s\": %s", to->path.c_str(), words);
    report_failure();
    return false;
}

// Half a tape is no tape.
void remove_target(Conversion *run)
{
    const bool is_plain = run->to.facts.plain;
    file_close(run->to.file.handle);
    run->to.file.handle = 0;
    if (is_plain) file_delete(run->to.path.c_str());
}

int convert(Conversion *run, const ConversionRow &row)
{
    global_error = 0;
    bool done = false;
    {
        const TapeBar bar(run->from.path, run->from.facts.bytes);
        done = row.run(run);
    }
    if (done) return exit_done;
    ErrorWords words;
    take_error(&words);
    remove_target(run);
    report_error_of(run->from.path.c_str(), words);
    return exit_failed;
}

std::string usage_fault(const Arguments &arguments)
{
    const bool to_fixed = arguments.layout == "fixed";
    if (arguments.pack && !to_fixed) return "--pack goes with --to fixed";
    if (to_fixed && arguments.block % slot_multiple != 0) return "--block must be a multiple of 4 with --to fixed";
    return "";
}
}

int run_tape_convert(const Arguments &arguments)
{
    const std::string fault = usage_fault(arguments);
    if (!fault.empty()) return report_usage(fault.c_str());
    Conversion run = {arguments, {.path = arguments.medium}, {.path = arguments.word}, 0};
    if (!open_tape_file(&run.from) || !target_is_free(run)) return exit_failed;
    Content content = Content::plain;
    int code = exit_done;
    if (!find_content(&run, &content, &code)) return code;
    const ConversionRow *row = find_row(content, arguments.layout);
    if (row == nullptr) return report_failure();
    run.block = arguments.block != 0 ? static_cast<uint32_t>(arguments.block) : row->block;
    return make_target(&run) ? convert(&run, *row) : int{exit_failed};
}
