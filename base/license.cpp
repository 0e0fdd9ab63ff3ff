// The licence for console programs: in a few lines, or the file COPYING page by page.
#include <cstdio>
#include <cstring>
#include <string_view>

#include "base/convert_inner.h"
#include "base/file.h"
#include "base/log.h"
#include "base/output.h"

namespace
{

constexpr uint32_t page_lines = 24;
constexpr char license_name[] = "COPYING";

constexpr std::string_view short_license = "Tarvo, access to the media of old HP computers\n"
                                           "Copyright (c) 2026 the Tarvo developers\n"
                                           "This is free software under the MIT licence, without any warranty;\n"
                                           "see the file COPYING.\n";

// Beside the program, or in the present folder.
bool open_license(FileHandle *ret_file)
{
    char path[FILE_PATH_SIZE + sizeof(license_name)];
    if (file_get_execution_path(nullptr, path) == 0) {
        const size_t length = strnlen(path, FILE_PATH_SIZE);
        memcpy(path + length, license_name, sizeof(license_name));
        if (file_open(ret_file, path, "r", 0) == 1) return true;
    }
    return file_open(ret_file, license_name, "r", 0) == 1;
}

// False when nobody is there to turn the page.
bool turn_page()
{
    output_text("(press <RETURN> to continue)");
    output_flush();
    char ignored[256];
    const bool turned = read_input_line(ignored, sizeof(ignored));
    if (!turned) output_text("\n");
    return turned;
}

void print_pages(FileHandle file)
{
    char line[1024];
    for (uint32_t lines = 0; file_readline(file, line, sizeof(line)) > 0; ++lines) {
        if (lines == page_lines) {
            if (!turn_page()) return;
            lines = 0;
        }
        output_text(line);
    }
}

} // namespace

void show_short_license(void)
{
    output_text(short_license);
    output_flush();
}

void show_full_license(void)
{
    FileHandle file = 0;
    if (open_license(&file)) {
        print_pages(file);
        file_close(file);
    } else {
        output_text(short_license);
        output_text("The file COPYING was not found.\n");
    }
    output_flush();
}
