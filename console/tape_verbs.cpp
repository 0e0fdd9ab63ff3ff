// The verbs that look at tape images and change nothing: the test, and the list of what stands on a tape.
#include "console/tape_verbs.h"

#include "base/error.h"
#include "base/output.h"
#include "console/json.h"
#include "console/report.h"
#include "console/tape_file.h"
#include "tape/simh_test_inner.h"
#include "tape/walk.h"

namespace
{
// ---- test ----------------------------------------------------------------------------------------------

unsigned long shown(uint64_t number)
{
    return static_cast<unsigned long>(number);
}

void print_variable(const TapeFile &tape, const TapeSums &sums)
{
    output_format("%s: SIMH magtape image, variable layout\n", tape.path.c_str());
    output_format("Records:        %lu\n", shown(sums.records));
    output_format("Longest record: %lu bytes\n", shown(sums.longest));
    output_format("Tape marks:     %lu\n", shown(sums.marks));
    output_format("Data:           %lu bytes\n", shown(sums.bytes));
}

void print_fixed(const TapeFile &tape)
{
    output_format("%s: SIMH magtape image, fixed layout\n", tape.path.c_str());
    output_format("Slots:          %lu\n", shown(tape.tape.num_records));
    output_format("Block size:     %lu bytes\n", shown(tape.tape.blocksize));
}

// Some reports end without a line end, which a shell or a message would go on.
void end_report(bool xml)
{
    if (xml && !output_at_line_start()) output_text("\n");
}

bool passes_test(TapeFile *tape, const Arguments &arguments, TapeSums *ret_sums)
{
    const bool disturbs = arguments.xml && platform_is_terminal(file_stdout());
    const TapeBar bar(tape->path, tape->facts.bytes, !disturbs);
    global_error = 0;
    const TestOrder order = {
        .blocksize = static_cast<uint32_t>(arguments.block), .both_ways = true, .xml = arguments.xml};
    return test_image(tape->file.handle, &tape->tape, order, ret_sums) != SIMH_UNKNOWN;
}

// ---- ls ------------------------------------------------------------------------------------------------

struct TapeList {
    TapeItem item = {};
    uint64_t record = 0; // number of the next one
    uint64_t file = 1;
    uint64_t items = 0; // ahead of the last one
};

struct KindRow {
    const char *name;
    const char *json;
};

constexpr KindRow kinds[] = {
    {"record", "record"},           {"tape mark", "tape_mark"}, {"end of medium", "end_of_medium"},
    {"end of file", "end_of_file"}, {"fault", "fault"},
};

const KindRow &kind_of(const TapeItem &item)
{
    return kinds[static_cast<size_t>(item.kind)];
}

using ItemPrinter = void (*)(Json *json, const TapeList &list);

void print_item(Json *, const TapeList &list)
{
    const TapeItem &item = list.item;
    output_format("%10lu  ", shown(item.position));
    if (item.kind == TapeItemKind::record) {
        output_format("%-14s%8lu  %10lu  %8lu\n", kind_of(item).name, shown(item.length), shown(list.record),
                      shown(list.file));
    } else if (item.kind == TapeItemKind::tape_mark) {
        output_format("%-14s%8s  %10s  %8lu\n", kind_of(item).name, "", "", shown(list.file));
    } else {
        output_format("%s\n", kind_of(item).name);
    }
}

void write_item(Json *json, const TapeList &list)
{
    const TapeItem &item = list.item;
    JsonObject object(json);
    object.host_text("kind", kind_of(item).json);
    object.number("position", item.position);
    if (item.kind == TapeItemKind::record) {
        object.number("length", item.length);
        object.number("record", list.record);
    }
    if (item.kind == TapeItemKind::record || item.kind == TapeItemKind::tape_mark) object.number("file", list.file);
    if (item.kind == TapeItemKind::fault) object.host_text("reason", item.reason);
    object.close();
}

TapeList list_items(const TapeFile &tape, Json *json, ItemPrinter print)
{
    TapeList list;
    TapeWalk walk;
    begin_walk(&walk, tape.file.handle);
    for (;;) {
        list.item = next_item(&walk);
        print(json, list);
        switch (list.item.kind) {
        case TapeItemKind::record: list.record++; break;
        case TapeItemKind::tape_mark: list.file++; break;
        case TapeItemKind::end_of_medium:
        case TapeItemKind::end_of_file:
        case TapeItemKind::fault: return list;
        }
        list.items++;
    }
}

TapeList print_items(const TapeFile &tape)
{
    output_text("  Position  What            Length      Record      File\n");
    return list_items(tape, nullptr, print_item);
}

TapeList write_items(const TapeFile &tape)
{
    Json json;
    JsonObject object(&json);
    object.host_text("tape", tape.path);
    object.last("items");
    json.writer.StartArray();
    const TapeList list = list_items(tape, &json, write_item);
    json.writer.EndArray();
    object.close();
    output_text("\n");
    return list;
}
}

int run_tape_test(const Arguments &arguments)
{
    TapeFile tape = {.path = arguments.medium};
    if (!open_tape_file(&tape)) return exit_failed;
    begin_data();
    TapeSums sums;
    const bool passed = passes_test(&tape, arguments, &sums);
    end_report(arguments.xml);
    if (passed && !arguments.xml) {
        if (tape.tape.format == SIMH_FIXED) {
            print_fixed(tape);
        } else {
            print_variable(tape, sums);
        }
    }
    const int code = finish_data(exit_done);
    return passed || code != exit_done ? code : report_faults(tape);
}

int run_tape_ls(const Arguments &arguments)
{
    TapeFile tape = {.path = arguments.medium};
    if (!open_tape_file(&tape)) return exit_failed;
    global_error = 0;
    begin_data();
    const TapeList list = arguments.json ? write_items(tape) : print_items(tape);
    const int code = finish_data(exit_done);
    if (list.item.kind != TapeItemKind::fault || code != exit_done) return code;
    report_faults(tape);
    return list.items > 0 ? exit_partly : exit_failed;
}
