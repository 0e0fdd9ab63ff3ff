// What the plug-in keeps between two calls of its host.
#pragma once

#include <cstdint>

#include "plugin/plugin.h"
#include "volume/media.h"

enum OptionBit : uint32_t {
    option_no_configuration = 1, // while the second place of the configuration file is tried
    option_typed_extensions = 2,
    option_file_conversion = 4,
    option_show_purged = 8,
    option_file_headers = 48, // as the dialog sets them
};

struct PluginState {
    MediaDescriptor *medium = nullptr;        // null: nothing is open
    char target[FILE_PATH_SIZE] = "";         // empty: none was chosen
    char temporary_name[FILE_PATH_SIZE] = ""; // of a file that went out for the host's own use
    int32_t number = 0;
    HostProgress progress = nullptr;
    HostLog log = nullptr;
    HostRequest request = nullptr;
    const char *progress_source = "";
    const char *progress_target = "";
    bool aborted = false;                                                 // the host has answered progress with a stop
    uint32_t options = option_no_configuration | option_typed_extensions; // OptionBit
    int32_t use_type_names = 1;
    int32_t use_typed_extensions = 1;
    int32_t use_file_headers = 0;
    int32_t use_file_conversion = 0;
    char system_string[16] = "9845";
};

extern PluginState plugin;

// ---- messages
// ------------------------------------------------------------------------------------------

void plugin_message(const char *format, ...) __attribute__((format(printf, 1, 2)));
void plugin_report_error(); // the text of the last error

// ---- the medium
// ----------------------------------------------------------------------------------------

int32_t plugin_select_target();      // 0, or -1 when none is chosen afterwards
int32_t plugin_check_config_files(); // reads tarvo.ini; 0, or -1 after messages
int32_t plugin_open_medium();        // 0, or -1 with last error 995
void plugin_close_medium();
bool write_tables();  // main and spare; false after the host was told the error
void reread_tables(); // what is in memory gives way to what the medium says

// ---- what the exports share
// ----------------------------------------------------------------------------

constexpr uint32_t error_aborted = 995;
constexpr uint32_t error_no_more_files = 18;

void begin_progress(const char *source, const char *target);
int32_t my_progress(void *ignored, uint32_t record,
                    uint32_t percent); // a ProgressCallback

const char *last_component(const char *path);
bool is_host_root(const char *path);
// The entry of a directory that a visible name means, by the medium's options;
// null for none.
FileInfo *find_by_visible_name(FileInfo *directory, const char *name);
