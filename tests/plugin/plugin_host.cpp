// The callbacks are plain functions, so the host in force is kept here for them.
#include "tests/plugin/plugin_host.h"

#include <cstring>

#include "platform/platform.h"
#include "plugin/state.h"

namespace tests
{

namespace
{

constexpr int32_t number = 3;
constexpr int32_t operation = 8; // any but a listing
constexpr int32_t kind_message = 8;
constexpr uint64_t seconds_to_1970 = 11644473600; // from 1601
constexpr uint64_t units = 10000000;              // of a second

PluginHost *host = nullptr;

int32_t on_progress(int32_t, char *, char *, int32_t percent)
{
    host->percentages.push_back(percent);
    if (host->at_progress) host->at_progress();
    return host->percentages.size() > host->calls_before_stop ? host->stop_answer : 0;
}

int32_t on_request(int32_t, int32_t kind, char *, char *text, char *, int32_t)
{
    if (kind == kind_message) {
        host->messages.emplace_back(text);
        return 1;
    }
    host->questions++;
    return 0;
}

}

PluginHost::PluginHost()
{
    host = this;
    FsInit(number, on_progress, nullptr, on_request);
}

PluginHost::PluginHost(const std::string &target) : PluginHost()
{
    std::memcpy(plugin.target, target.c_str(), std::min(target.size() + 1, sizeof plugin.target));
}

PluginHost::~PluginHost()
{
    plugin_close_medium();
    plugin = PluginState{};
    host = nullptr;
}

void begin_operation()
{
    FsStatusInfo(host_path("").c_str(), 0, operation);
}

void end_operation()
{
    FsStatusInfo(host_path("").c_str(), 1, operation);
}

std::string host_path(const std::string &name)
{
    return platform_separator() + name;
}

std::vector<std::string> listed_names()
{
    std::vector<std::string> names;
    FindDataA record = {};
    void *handle = FsFindFirst(host_path("").c_str(), &record);
    if (reinterpret_cast<uintptr_t>(handle) == ~uintptr_t{0} || record.name[0] == '\0') return names;
    do names.emplace_back(record.name);
    while (FsFindNext(handle, &record) == 1);
    FsFindClose(handle);
    return names;
}

std::vector<std::string> names_after_reopening()
{
    end_operation();
    std::vector<std::string> names = listed_names();
    end_operation();
    return names;
}

HostTime host_time(uint64_t seconds_since_1970)
{
    const uint64_t time = (seconds_since_1970 + seconds_to_1970) * units;
    return {static_cast<uint32_t>(time), static_cast<uint32_t>(time >> 32)};
}

}
