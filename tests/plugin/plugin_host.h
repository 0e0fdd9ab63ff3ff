// A host in this process: it initialises the plug-in, answers its callbacks and writes down what they say. The plug-in
// is as after loading again when the object goes.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "plugin/plugin.h"
#include "tests/support/volume_builder.h"

namespace tests
{

class PluginHost
{
  public:
    PluginHost(); // no target is chosen
    explicit PluginHost(const std::string &target);
    ~PluginHost();
    PluginHost(const PluginHost &) = delete;
    PluginHost &operator=(const PluginHost &) = delete;

    std::vector<std::string> messages;
    std::vector<int32_t> percentages;
    uint32_t questions = 0;         // for a target, all answered with no
    int32_t stop_answer = 0;        // to progress
    uint32_t calls_before_stop = 0; // so many are answered with 0
    std::function<void()> at_progress;
};

// What a host calls before and after an operation that is no listing.
void begin_operation();
void end_operation();

std::string host_path(const std::string &name); // in the root
std::vector<std::string> listed_names();        // of the root, in the medium that is open or gets open
std::vector<std::string> names_after_reopening();

HostTime host_time(uint64_t seconds_since_1970);

}
