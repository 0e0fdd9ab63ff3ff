#include "tests/config/config_support.h"

#include "base/error.h"
#include "tests/support/capture.h"

namespace tests
{

ConfigReading::ConfigReading(const std::string &text) : ConfigReading(Bytes(text.begin(), text.end())) {}

ConfigReading::ConfigReading(const Bytes &bytes)
{
    const TemporaryFile ini(bytes, ".ini");
    FileHandle file = 0;
    EXPECT_EQ(file_open(&file, ini.path(), "rb", 0), 1);
    forget_error();
    const OutputCapture output;
    result = read_config_file(file, &loglevel, &board, &port, &nosleep, &fastschedule, system, &filesystem,
                              &use_file_headers, &use_type_names, &use_typed_extensions, &use_file_conversion);
    if (global_error != 0) error = error_text();
    fault = config_fault();
    printed = output.text();
    file_close(file);
}

std::string in_section(const char *section, const std::string &line)
{
    return std::string(section) + "\n" + line + "\n";
}

void expect_config_error(const std::string &text, int32_t line, const std::string &words)
{
    const ConfigReading reading(text);
    EXPECT_EQ(reading.result, -1) << text;
    EXPECT_EQ(global_error, 107u) << text;
    EXPECT_EQ(reading.error, "Error in config file (" + words + ")") << text;
    EXPECT_EQ(reading.printed, "") << text;
    EXPECT_EQ(reading.fault.line, line) << text;
    EXPECT_EQ(reading.fault.offset, -1) << text;
}

ConfigTest::~ConfigTest()
{
    use_builtin_tables();
}

size_t media_count()
{
    size_t count = 0;
    while (custom_media_table[count].name != nullptr) count++;
    return count;
}

size_t drive_count()
{
    size_t count = 0;
    while (custom_drive_table[count].name != nullptr) count++;
    return count;
}

size_t type_count()
{
    size_t count = 0;
    while (custom_liftype_table[count].name[0] != '\0') count++;
    return count;
}

const MediaTableRow *custom_media(const std::string &name, size_t which)
{
    for (const MediaTableRow *row = custom_media_table; row->name != nullptr; row++) {
        if (row->name == name && which-- == 0) return row;
    }
    return nullptr;
}

const GpibDriveInfo *custom_drive(const std::string &name, size_t which)
{
    for (const GpibDriveInfo *row = custom_drive_table; row->name != nullptr; row++) {
        if (row->name == name && which-- == 0) return row;
    }
    return nullptr;
}

const LifType *custom_type(uint32_t type)
{
    for (const LifType *row = custom_liftype_table; row->name[0] != '\0'; row++) {
        if (row->type == type) return row;
    }
    return nullptr;
}

}
