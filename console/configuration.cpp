// The configuration file: which one it is, what of it the program takes over, and how a fault in it is shown.
#include "console/configuration.h"

#include <algorithm>
#include <cstring>

#include "base/log.h"
#include "base/output.h"
#include "config/config_file.h"
#include "config/config_inner.h"
#include "config/custom_inner.h"
#include "console/host_file.h"
#include "console/report.h"
#include "gpib/controllers/settings.h"

namespace
{

struct Settings {
    int32_t log = loglevel;
    int32_t board = board_select;
    uint32_t port = port_address;
    int32_t limit_load = gpib_limit_load;
    int32_t type_names = 1;
};

struct Configuration {
    HostFile file;
    std::string path;
    bool read = false; // wholly; otherwise `words` say why not
    ErrorWords words = {};
    Settings settings;
};

constexpr uint32_t out_of_memory = 105;

int32_t type_names_in_force = 1;

bool open_configuration(const std::string &named, Configuration *configuration)
{
    configuration->path = named;
    if (!named.empty()) return file_open(&configuration->file.handle, named.c_str(), "rb", 0) == 1;
    char path[FILE_PATH_SIZE];
    bool beside = false;
    const bool opened = open_config_file(&configuration->file.handle, path, &beside);
    configuration->path = opened ? path : "tarvo.ini";
    return opened;
}

// How files are copied the command line says, so those values go nowhere. What the engine prints of a fault is shown
// with the error.
void read_configuration(Configuration *configuration)
{
    Settings *settings = &configuration->settings;
    char system[CONFIG_SYSTEM_SIZE];
    int32_t fastschedule = 0;
    int32_t filesystem = 0;
    int32_t file_headers = 0;
    int32_t typed_extensions = 0;
    int32_t file_conversion = 0;
    output_to(file_void());
    const int32_t result = read_config_file(configuration->file.handle, &settings->log, &settings->board,
                                            &settings->port, &settings->limit_load, &fastschedule, system, &filesystem,
                                            &file_headers, &settings->type_names, &typed_extensions, &file_conversion);
    configuration->read = result == 0;
    if (!configuration->read) take_error(&configuration->words);
    output_to(file_stderr());
}

// The line of a fault and, where it is known, the mark below it, behind the tabs that are ahead of it in the line.
void show_fault(const ConfigFault &fault)
{
    if (fault.line == 0) return;
    file_printf(file_stderr(), "[tarvo]        %s\n", fault.text);
    if (fault.offset < 0) return;
    std::string mark(fault.text, std::min(static_cast<size_t>(fault.offset), std::strlen(fault.text)));
    std::replace_if(
        mark.begin(), mark.end(), [](char character) { return character != '\t'; }, ' ');
    file_printf(file_stderr(), "[tarvo]        %s^\n", mark.c_str());
}

void take_over(const Settings &settings, bool level_is_given)
{
    use_custom_tables();
    if (!level_is_given) loglevel = settings.log;
    board_select = settings.board;
    port_address = settings.port;
    gpib_limit_load = settings.limit_load;
    type_names_in_force = settings.type_names;
}

}

int apply_configuration(const Arguments &arguments)
{
    const bool named = !arguments.config.empty();
    if (arguments.no_config) return named ? report_usage("--config and --no-config exclude each other") : exit_done;
    Configuration configuration;
    if (!open_configuration(arguments.config, &configuration))
        return named ? report_failure_of(configuration.path.c_str()) : exit_done;
    read_configuration(&configuration);
    if (configuration.read) {
        take_over(configuration.settings, arguments.log >= 0);
        return exit_done;
    }
    if (named) {
        report_error_of(configuration.path.c_str(), configuration.words);
    } else {
        report_warning_of(configuration.path.c_str(), configuration.words.text);
    }
    show_fault(config_fault());
    return named ? exit_failed : exit_done;
}

bool shows_type_names()
{
    return type_names_in_force != 0;
}

int run_config(const Arguments &arguments)
{
    Configuration configuration;
    if (!open_configuration(!arguments.file.empty() ? arguments.file : arguments.config, &configuration))
        return report_failure_of(configuration.path.c_str());
    read_configuration(&configuration);
    if (!configuration.read) {
        const bool is_fault = config_fault().line != 0 && global_error != out_of_memory;
        report_error_of(configuration.path.c_str(), configuration.words);
        show_fault(config_fault());
        return is_fault ? exit_faults : exit_failed;
    }
    begin_data();
    output_format("%s: no faults\n", configuration.path.c_str());
    return finish_data(exit_done);
}
