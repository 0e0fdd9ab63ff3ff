// Takes away what the tables of a volume say wrongly: entries that can't be read, spare tables that differ, free space
// that doesn't add up. What is wrong with files themselves stays.
#include "volume/repair.h"
#include "base/output.h"
#include "console/backup.h"
#include "console/check.h"
#include "console/inspection.h"
#include "console/medium.h"
#include "console/repair_volume.h"
#include "console/report.h"
#include "volume/open.h"
#include "volume/operations_inner.h"

namespace
{
constexpr uint16_t repair_flags = OPEN_CHECK | OPEN_SORT | OPEN_REPAIR;

bool is_mended(const Finding &finding)
{
    const FindingKind kind = finding.kind;
    return kind == FindingKind::entry || kind == FindingKind::spare || kind == FindingKind::space;
}

bool has_mended(const Findings &findings)
{
    return has_faults_of(findings, FindingKind::entry) || has_faults_of(findings, FindingKind::spare) ||
           has_faults_of(findings, FindingKind::space);
}

void print_kinds(const Findings &findings, const char *word, bool mended)
{
    for (const Finding &finding : findings.faults) {
        if (is_mended(finding) == mended) output_format("%s: %s\n", word, finding.text.c_str());
    }
}

bool back_up(const Arguments &arguments, const MediaDescriptor *md)
{
    std::string path;
    if (!arguments.backup || make_backup(md, &path)) return true;
    report_failure_of("backup");
    return false;
}

// Writes all tables from the lists in memory, which hold what could be read.
bool write_repaired(MediaDescriptor *md, const Findings &findings)
{
    if (has_faults_of(findings, FindingKind::space) && !rebuild_free_list(md)) return false;
    return update_tables(md) == 0;
}

// What is still wrong when the volume is read anew. False when it can't be, which has been reported.
bool inspect_again(const Arguments &arguments, Findings *ret_findings)
{
    *ret_findings = {};
    if (image_check(arguments.medium.c_str(), 0) == 0) {
        const Reading reading = open_for_inspection(arguments, OPEN_READ_ONLY);
        if (reading.medium == nullptr) return false;
        if (inspect_volume(reading.medium.get(), ret_findings)) return true;
    }
    report_failure();
    return false;
}

int finish_repair(const Findings &left, bool changed)
{
    print_kinds(left, "left", false);
    if (left.more_faults != 0)
        output_format("left: more faults: %llu\n", static_cast<unsigned long long>(left.more_faults));
    const int faults = changed ? int{exit_partly} : int{exit_faults};
    return finish_data(has_faults(left) ? faults : int{exit_done});
}

int plan_repair(const Findings &findings)
{
    Findings left = findings;
    std::erase_if(left.faults, is_mended);
    begin_data();
    print_kinds(findings, "to be repaired", true);
    return finish_repair(left, has_mended(findings));
}

int repair_medium(const Arguments &arguments, Medium medium, const Findings &findings)
{
    if (!back_up(arguments, medium.get())) return exit_failed;
    if (!write_repaired(medium.get(), findings)) return report_failure();
    medium.reset();
    Findings left;
    if (!inspect_again(arguments, &left)) return exit_failed;
    begin_data();
    print_kinds(findings, "repaired", true);
    print_kinds(left, "left", true);
    return finish_repair(left, true);
}
}

int run_repair(const Arguments &arguments)
{
    if (names_a_directory(arguments)) return exit_failed;
    const QuietLog quiet;
    Reading reading = open_for_inspection(arguments, repair_flags);
    if (reading.medium == nullptr) return exit_failed;
    if (reading.has_words) {
        report_error(reading.words);
        return exit_failed;
    }
    if (!is_changeable(reading.medium.get())) return report_failure();
    Findings findings;
    if (!inspect_volume(reading.medium.get(), &findings)) return report_failure();
    if (arguments.dry_run || !has_mended(findings)) return plan_repair(findings);
    return repair_medium(arguments, std::move(reading.medium), findings);
}
