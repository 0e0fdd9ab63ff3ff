// The console: where standard output is none, nothing is sent; where it is a terminal, the sequences are counted out.
#include <gtest/gtest.h>

#include <string>

#include "platform/platform.h"

#ifndef _WIN32
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>

namespace
{

// What another descriptor receives in place of a standard one, for the life of an object.
class Instead
{
  public:
    Instead(int standard, int other) : standard_(standard), kept_(dup(standard))
    {
        fflush(nullptr);
        dup2(other, standard);
    }
    ~Instead()
    {
        fflush(nullptr);
        dup2(kept_, standard_);
        close(kept_);
    }
    Instead(const Instead &) = delete;
    Instead &operator=(const Instead &) = delete;

  private:
    int standard_;
    int kept_;
};

std::string received(int descriptor)
{
    std::string text;
    char bytes[256];
    pollfd waiting = {descriptor, POLLIN, 0};
    while (poll(&waiting, 1, 0) > 0 && (waiting.revents & POLLIN) != 0) {
        const ssize_t count = read(descriptor, bytes, sizeof(bytes));
        if (count <= 0) break;
        text.append(bytes, static_cast<size_t>(count));
    }
    return text;
}

class PosixConsole : public testing::Test
{
  protected:
    void SetUp() override
    {
        if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) GTEST_SKIP() << "no pseudo terminal to be had";
        slave = open(ptsname(master), O_RDWR | O_NOCTTY | O_CLOEXEC);
        ASSERT_GE(slave, 0);
    }
    ~PosixConsole() override
    {
        close(slave);
        close(master);
    }

    // What the terminal receives while `steps` run.
    template <typename Steps> std::string shown(Steps steps)
    {
        const Instead instead(STDOUT_FILENO, slave);
        steps();
        return received(master);
    }

    int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    int slave = -1;
};

TEST_F(PosixConsole, AttributesBecomeColours)
{
    const struct {
        const char *name;
        uint16_t attributes;
        const char *text;
    } rows[] = {
        {"black on black", 0x00, "\033[0;30;40m"},
        {"blue", 0x01, "\033[0;34;40m"},
        {"green", 0x02, "\033[0;32;40m"},
        {"red", 0x04, "\033[0;31;40m"},
        {"bright green", 0x0a, "\033[0;92;40m"},
        {"white on blue", 0x17, "\033[0;37;44m"},
        {"bright on bright", 0xff, "\033[0;97;107m"},
        {"as at first", 0x07, "\033[0m"},
    };
    for (const auto &row : rows) {
        uint16_t kept = 0xffff;
        const std::string text = shown([&] {
            platform_console_set_attributes(row.attributes);
            EXPECT_TRUE(platform_console_attributes(&kept));
        });
        EXPECT_EQ(text, row.text) << row.name;
        EXPECT_EQ(kept, row.attributes) << row.name;
    }
}

TEST_F(PosixConsole, ColumnsCountFromZero)
{
    EXPECT_EQ(shown([] { platform_console_column(0); }), "\033[1G");
    EXPECT_EQ(shown([] { platform_console_column(41); }), "\033[42G");
}

TEST(PosixConsoleElsewhere, NothingGoesIntoAFile)
{
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    bool is_console = true;
    {
        const Instead instead(STDOUT_FILENO, ends[1]);
        uint16_t attributes = 0;
        is_console = platform_console_attributes(&attributes);
        platform_console_set_attributes(4);
        platform_console_column(10);
    }
    EXPECT_FALSE(is_console);
    EXPECT_EQ(received(ends[0]), "");
    close(ends[0]);
    close(ends[1]);
}

TEST(PosixConsoleElsewhere, DebugTextGoesToStandardError)
{
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    {
        const Instead instead(STDERR_FILENO, ends[1]);
        platform_debug_text("100% %s\r\n");
    }
    EXPECT_EQ(received(ends[0]), "100% %s\r\n");
    close(ends[0]);
    close(ends[1]);
}

} // namespace
#else

TEST(WindowsConsole, ColumnAndAttributesWithoutAConsoleAreHarmless)
{
    uint16_t attributes = 0;
    if (platform_console_attributes(&attributes)) {
        platform_console_set_attributes(0x0a);
        uint16_t changed = 0;
        EXPECT_TRUE(platform_console_attributes(&changed));
        EXPECT_EQ(changed, 0x0a);
        platform_console_set_attributes(attributes);
    } else {
        platform_set_last_error(0);
        platform_console_set_attributes(0x0a);
        EXPECT_NE(platform_last_error(), 0u);
        platform_console_column(3);
        EXPECT_FALSE(platform_console_attributes(&attributes));
    }
}

#endif
