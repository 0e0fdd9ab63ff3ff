// What is wrong with a volume, as text or as JSON.
#include "console/check.h"

#include "base/output.h"
#include "console/inspection.h"
#include "console/matches.h"
#include "console/medium.h"
#include "console/report.h"
#include "volume/format.h"
#include "volume/open.h"

namespace
{
void print_text(const MediaDescriptor *md, const Findings &findings)
{
    const auto files = static_cast<unsigned long>(matching_files(md, {}).size());
    output_format("%s: %s, files: %lu, faults: %llu\n", md->msus, volume_format(md->format).name, files,
                  static_cast<unsigned long long>(count_faults(findings)));
    print_findings(findings);
}

void print_json(const MediaDescriptor *md, const Findings &findings)
{
    Json json;
    JsonObject object(&json);
    object.host_text("medium", field_text(md->msus));
    object.host_text("format", volume_format(md->format).name);
    object.roman8("label", field_text(md->label));
    object.number("files", matching_files(md, {}).size());
    write_findings(findings, &object, &json);
    object.close();
    output_text("\n");
}
}

int run_check(const Arguments &arguments)
{
    if (names_a_directory(arguments)) return exit_failed;
    const QuietLog quiet;
    const Reading reading = open_for_inspection(arguments, OPEN_READ_ONLY);
    if (reading.medium == nullptr) return exit_failed;
    if (reading.has_words) {
        report_error(reading.words);
        return exit_failed;
    }
    Findings findings;
    if (!inspect_volume(reading.medium.get(), &findings)) return report_failure();
    begin_data();
    arguments.json ? print_json(reading.medium.get(), findings) : print_text(reading.medium.get(), findings);
    return finish_data(has_faults(findings) ? exit_faults : exit_done);
}
