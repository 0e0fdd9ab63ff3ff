// Faults and notes, kept and printed.
#include "console/findings.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

#include "base/output.h"

namespace
{
constexpr size_t most_kept = 1000; // of each
constexpr size_t text_size = 512;
constexpr const char *kind_names[] = {"entry", "end", "overlap", "name", "spare", "space", "date", "october"};
static_assert(static_cast<size_t>(FindingKind::october) + 1 == std::size(kind_names));

__attribute__((format(printf, 1, 0))) std::string formatted(const char *format, va_list values)
{
    char text[text_size];
    vsnprintf(text, sizeof text, format, values);
    return text;
}

void keep(std::vector<Finding> *kept, uint64_t *more, Finding finding)
{
    if (kept->size() < most_kept) {
        kept->push_back(std::move(finding));
    } else {
        (*more)++;
    }
}

void print_kept(const char *word, const std::vector<Finding> &kept, uint64_t more)
{
    for (const Finding &finding : kept) output_format("%s: %s\n", word, finding.text.c_str());
    if (more != 0) output_format("%s: and %llu more\n", word, static_cast<unsigned long long>(more));
}

void write_kept(Json *json, const std::vector<Finding> &kept, bool is_fault)
{
    for (const Finding &finding : kept) {
        JsonObject object(json);
        object.flag("fault", is_fault);
        object.host_text("kind", kind_names[static_cast<size_t>(finding.kind)]);
        object.host_text("text", finding.text);
        object.close();
    }
}
}

void add_fault(Findings *findings, FindingKind kind, const char *format, ...)
{
    va_list values;
    va_start(values, format);
    keep(&findings->faults, &findings->more_faults, {kind, formatted(format, values)});
    va_end(values);
}

void add_note(Findings *findings, FindingKind kind, const char *format, ...)
{
    va_list values;
    va_start(values, format);
    keep(&findings->notes, &findings->more_notes, {kind, formatted(format, values)});
    va_end(values);
}

bool has_faults(const Findings &findings)
{
    return !findings.faults.empty();
}

bool has_faults_of(const Findings &findings, FindingKind kind)
{
    auto is_such = [kind](const Finding &finding) { return finding.kind == kind; };
    return std::any_of(findings.faults.begin(), findings.faults.end(), is_such);
}

uint64_t count_faults(const Findings &findings)
{
    return findings.faults.size() + findings.more_faults;
}

void print_findings(const Findings &findings)
{
    print_kept("fault", findings.faults, findings.more_faults);
    print_kept("note", findings.notes, findings.more_notes);
}

void write_findings(const Findings &findings, JsonObject *object, Json *json)
{
    object->number("fault_count", count_faults(findings));
    object->number("note_count", findings.notes.size() + findings.more_notes);
    object->last("findings");
    json->writer.StartArray();
    write_kept(json, findings.faults, true);
    write_kept(json, findings.notes, false);
    json->writer.EndArray();
}
