// Standard input from a text, and what is written to the standard files and to a log as texts, byte by byte; other
// files stay with the system. One object at a time.
#pragma once

#include <algorithm>
#include <cstring>
#include <map>
#include <string>

#include "base/file.h"
#include "base/file_inner.h"
#include "base/log.h"

namespace tests
{

class ScriptedConsole
{
  public:
    static constexpr FileHandle input_handle = 9001, output_handle = 9002, error_handle = 9003, log_handle = 9004;

    explicit ScriptedConsole(std::string input_text = "") : input(std::move(input_text))
    {
        present = this;
        calls_.read = read;
        calls_.write = write;
        file_calls = &calls_;
        Stdin = input_handle;
        Stdout = output_handle;
        Stderr = error_handle;
    }

    ~ScriptedConsole()
    {
        file_calls = old_calls_;
        Stdin = old_input_;
        Stdout = old_output_;
        Stderr = old_error_;
        logfile = old_log_;
        loglevel = old_level_;
        present = nullptr;
    }

    ScriptedConsole(const ScriptedConsole &) = delete;
    ScriptedConsole &operator=(const ScriptedConsole &) = delete;

    void log_here(int32_t level)
    {
        logfile = log_handle;
        loglevel = level;
    }

    std::string printed() const
    {
        return text_of(output_handle);
    }

    std::string complaints() const
    {
        return text_of(error_handle);
    }

    std::string logged() const
    {
        return text_of(log_handle);
    }

    std::string input;
    uint32_t most_bytes = ~0u; // that one write takes
    bool failing = false;      // writes fail
    uint32_t writes = 0;

  private:
    // The standard files of the system stand for the scripted ones: the library may fill in its own values again.
    static FileHandle scripted(PlatformFile file)
    {
        if (file == platform_standard_file(StandardFile::error)) return error_handle;
        if (file == platform_standard_file(StandardFile::output)) return output_handle;
        return file >= input_handle && file <= log_handle ? file : 0;
    }

    static int64_t read(PlatformFile file, void *buffer, uint32_t bytes)
    {
        if (file != input_handle) return platform_read(file, buffer, bytes);
        const size_t count = std::min<size_t>(bytes, present->input.size());
        memcpy(buffer, present->input.data(), count);
        present->input.erase(0, count);
        return static_cast<int64_t>(count);
    }

    static int64_t write(PlatformFile file, const void *buffer, uint32_t bytes)
    {
        const FileHandle target = scripted(file);
        if (target == 0) return platform_write(file, buffer, bytes);
        ++present->writes;
        if (present->failing) return -1;
        const uint32_t count = std::min(bytes, present->most_bytes);
        present->written_[target].append(static_cast<const char *>(buffer), count);
        return count;
    }

    std::string text_of(FileHandle file) const
    {
        const auto found = written_.find(file);
        return found == written_.end() ? "" : found->second;
    }

    inline static ScriptedConsole *present = nullptr;
    std::map<FileHandle, std::string> written_;
    FileCalls calls_;
    const FileCalls *old_calls_ = file_calls;
    FileHandle old_input_ = Stdin, old_output_ = Stdout, old_error_ = Stderr, old_log_ = logfile;
    int32_t old_level_ = loglevel;
};

} // namespace tests
