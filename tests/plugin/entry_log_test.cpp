// The lines that the exports write to the log when they are called.
#include <gtest/gtest.h>

#include "plugin/plugin.h"
#include "tests/plugin/plugin_host.h"
#include "tests/support/capture.h"

using namespace tests;

namespace
{

const std::string rule = "---------------------------------------------------\n";

// Without a medium, the line of the call is the last that it writes.
template <typename Call> std::string logged(int32_t level, Call call)
{
    const LogCapture log(level);
    call();
    return log.text();
}

std::string after(const std::string &text, const std::string &part)
{
    const size_t found = text.find(part);
    return found == std::string::npos ? "not found in " + text : text.substr(found);
}

}

TEST(PluginLog, MostExportsWriteARuleAndTheirArguments)
{
    const PluginHost host;
    char local[] = "local";
    const auto get = [&local] { FsGetFile("r", local, 5, nullptr); };
    EXPECT_EQ(after(logged(3, get), rule),
              rule + "Trace: FsGetFile(RemoteName=\"r\", LocalName=\"local\", CopyFlags=5, ri=0)\n");
    const auto put = [&local] { FsPutFile(local, "r", 1); };
    EXPECT_EQ(after(logged(3, put), rule),
              rule + "Trace: FsPutFile(LocalName=\"local\", RemoteName=\"r\", CopyFlags=1)\n");
    const auto rename = [] { FsRenMovFile("a", "b", 1, 0, nullptr); };
    EXPECT_EQ(after(logged(3, rename), rule),
              rule + "Trace: FsRenMovFile(OldName=\"a\", NewName=\"b\", Move=1, OverWrite=0, ri=0)\n");
    EXPECT_EQ(after(logged(3, [] { FsDeleteFile("%s%n"); }), rule),
              rule + "Trace: FsDeleteFile(RemoteName=\"%s%n\")\n");
    EXPECT_EQ(after(logged(3, [] { FsSetAttr("r", 7); }), rule),
              rule + "Trace: FsSetAttr(RemoteName=\"r\", NewAttr=7)\n");
    const auto set_time = [] { FsSetTime("r", nullptr, nullptr, nullptr); };
    EXPECT_EQ(after(logged(3, set_time), rule),
              rule + "Trace: FsSetTime(RemoteName=\"r\", CreationTime=0, LastAccessTime=0, LastWriteTime=0)\n");
    EXPECT_EQ(after(logged(3, [] { FsExecuteFile(nullptr, "r", "open"); }), rule),
              rule + "Trace: FsExecuteFile(MainWin=0, RemoteName=\"r\", Verb=\"open\")\n");
    const auto find = [] { FsFindFirst("p", nullptr); };
    EXPECT_EQ(after(logged(3, find), rule), rule + "Trace: FsFindFirst(Path=\"p\", FindData=0)\n");
}

TEST(PluginLog, FiveExportsWriteTheirLineAlone)
{
    const PluginHost host;
    FindDataA record = {};
    const std::string status = logged(3, [] { FsStatusInfo("d", 1, 11); });
    EXPECT_EQ(status, "Trace: FsStatusInfo(RemoteDir=\"d\", InfoStartEnd=1, InfoOperation=11)\n");
    const std::string next = logged(3, [&record] { FsFindNext(nullptr, &record); });
    EXPECT_TRUE(next.starts_with("Trace: FsFindNext(Hdl=0, FindData=")) << next;
    EXPECT_EQ(logged(3, [] { FsFindClose(nullptr); }), "Trace: FsFindClose(Hdl=0)\n");
    EXPECT_EQ(logged(3, [] { FsGetDefRootName(nullptr, 9); }), "Trace: FsGetDefRootName(name=0, maxlen=9)\n");
    const std::string init = logged(3, [] { FsInit(4, nullptr, nullptr, nullptr); });
    EXPECT_TRUE(init.starts_with("Trace: FsInit(PluginNr=4")) << init;
}

TEST(PluginLog, NothingIsWrittenBelowLevelThree)
{
    const PluginHost host;
    EXPECT_EQ(logged(2, [] { FsDeleteFile("r"); }), "");
    EXPECT_EQ(logged(2, [] { FsFindClose(nullptr); }), "");
}
