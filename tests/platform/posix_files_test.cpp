// What only POSIX files can be: pipes, devices, descriptors that a parent handed over.
#ifndef _WIN32
#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>

#include "platform/platform.h"
#include "tests/platform/scratch.h"

namespace
{

using tests::Opened;
using tests::Scratch;

PlatformFile file_of(int descriptor)
{
    return static_cast<PlatformFile>(descriptor) + 1;
}

int descriptor_of(PlatformFile file)
{
    return static_cast<int>(file) - 1;
}

class Pipe
{
  public:
    explicit Pipe(int flags = 0)
    {
        if (pipe2(ends_, flags | O_CLOEXEC) != 0) std::abort();
    }
    ~Pipe()
    {
        close_writer();
        close(ends_[0]);
    }
    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;

    PlatformFile reader() const
    {
        return file_of(ends_[0]);
    }
    PlatformFile writer() const
    {
        return file_of(ends_[1]);
    }
    void close_writer()
    {
        if (ends_[1] >= 0) close(ends_[1]);
        ends_[1] = -1;
    }

  private:
    int ends_[2];
};

std::string make_fifo(const Scratch &scratch)
{
    std::string path = scratch.path("fifo");
    if (mkfifo(path.c_str(), 0600) != 0) std::abort();
    return path;
}

TEST(PosixFiles, FifoWithoutAWriterIsAnEmptyFile)
{
    const Scratch scratch;
    const Opened opened(make_fifo(scratch), false);
    ASSERT_TRUE(opened.good);
    char byte = 0;
    EXPECT_EQ(platform_read(opened.file, &byte, 1), 0);
    EXPECT_EQ(fcntl(descriptor_of(opened.file), F_GETFL) & O_NONBLOCK, 0); // waits for a writer that there is
    EXPECT_EQ(platform_seek(opened.file, 0, SeekFrom::start), -1);
    EXPECT_EQ(platform_last_error(), uint32_t{ESPIPE});
}

TEST(PosixFiles, FifoIsNotOpenedBothWays)
{
    const Scratch scratch;
    const Opened opened(make_fifo(scratch), true);
    const uint32_t reason = platform_last_error();
    EXPECT_FALSE(opened.good);
    EXPECT_EQ(reason, uint32_t{ESPIPE});
}

TEST(PosixFiles, FifoWithoutAReaderCannotBeWritten)
{
    const Scratch scratch;
    const std::string path = make_fifo(scratch);
    PlatformFile file = 0;
    EXPECT_FALSE(platform_open(&file, path.c_str(), false, true, OpenMode::create_always, false));
    EXPECT_EQ(platform_last_error(), uint32_t{ENXIO});
}

TEST(PosixFiles, FullDeviceTakesNothing)
{
    if (!tests::exists("/dev/full")) GTEST_SKIP() << "there is no /dev/full";
    const Opened opened("/dev/full");
    ASSERT_TRUE(opened.good);
    EXPECT_EQ(platform_write(opened.file, "abc", 3), -1);
    EXPECT_EQ(platform_last_error(), uint32_t{ENOSPC});
}

// No file grows beyond 1,000 bytes during the life of an object.
class SmallFiles
{
  public:
    SmallFiles() : old_action_(std::signal(SIGXFSZ, SIG_IGN))
    {
        if (getrlimit(RLIMIT_FSIZE, &old_) != 0) std::abort();
        const rlimit small = {1000, old_.rlim_max};
        if (setrlimit(RLIMIT_FSIZE, &small) != 0) std::abort();
    }
    ~SmallFiles()
    {
        setrlimit(RLIMIT_FSIZE, &old_);
        std::signal(SIGXFSZ, old_action_);
    }
    SmallFiles(const SmallFiles &) = delete;
    SmallFiles &operator=(const SmallFiles &) = delete;

  private:
    void (*old_action_)(int);
    rlimit old_;
};

TEST(PosixFiles, CopyThatDoesNotFitIsTakenAway)
{
    const Scratch scratch;
    const std::string from = scratch.file("a", std::string(1500, 'a'));
    const std::string to = scratch.path("b");
    int32_t result = 0;
    uint32_t reason = 0;
    {
        const SmallFiles limit;
        result = platform_copy_file_a(from.c_str(), to.c_str(), 0);
        reason = platform_last_error();
    }
    EXPECT_EQ(result, 0);
    EXPECT_EQ(reason, uint32_t{EFBIG});
    EXPECT_FALSE(tests::exists(to));
}

TEST(PosixFiles, WriteThatReachesALimitSaysHowFar)
{
    const Scratch scratch;
    const Opened opened(scratch.path("f"), true, OpenMode::create_always);
    const std::string bytes(1500, 'a');
    int64_t first = 0;
    int64_t second = 0;
    uint32_t reason = 0;
    {
        const SmallFiles limit;
        first = platform_write(opened.file, bytes.data(), 1500);
        second = platform_write(opened.file, bytes.data(), 1);
        reason = platform_last_error();
    }
    EXPECT_EQ(first, 1000);
    EXPECT_EQ(second, -1);
    EXPECT_EQ(reason, uint32_t{EFBIG});
}

TEST(PosixFiles, HandleIsNotInherited)
{
    const Scratch scratch;
    const Opened opened(scratch.file("f", ""));
    EXPECT_NE(fcntl(descriptor_of(opened.file), F_GETFD) & FD_CLOEXEC, 0);
}

TEST(PosixFiles, ClosedStandardFileIsNotReplaced)
{
    const Scratch scratch;
    const std::string path = scratch.file("f", "abc");
    const int input = dup(STDIN_FILENO);
    close(STDIN_FILENO);
    {
        const Opened opened(path);
        EXPECT_TRUE(opened.good);
        EXPECT_GT(descriptor_of(opened.file), STDERR_FILENO);
        EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1);
        EXPECT_NE(fcntl(descriptor_of(opened.file), F_GETFD) & FD_CLOEXEC, 0);
    }
    if (input >= 0) {
        dup2(input, STDIN_FILENO);
        close(input);
    }
}

TEST(PosixFiles, DescriptorThatDoesNotWaitIsWaitedFor)
{
    Pipe pipe(O_NONBLOCK);
    const std::string sent(200000, 'q'); // more than a pipe holds
    std::thread writer([&] {
        EXPECT_EQ(platform_write(pipe.writer(), sent.data(), static_cast<uint32_t>(sent.size())), 200000);
        pipe.close_writer();
    });
    std::string received(300000, '\0');
    EXPECT_EQ(platform_read(pipe.reader(), received.data(), 300000), 200000);
    writer.join();
    EXPECT_EQ(received.substr(0, 200000), sent);
}

TEST(PosixFiles, SignalDoesNotEndARead)
{
    static std::atomic<int> signals;
    struct sigaction action = {};
    struct sigaction old;
    action.sa_handler = [](int) { ++signals; };
    ASSERT_EQ(sigaction(SIGUSR1, &action, &old), 0); // without SA_RESTART
    Pipe pipe;
    int64_t result = 0;
    char bytes[2] = "";
    std::thread reader([&] { result = platform_read(pipe.reader(), bytes, 2); });
    while (signals < 3) pthread_kill(reader.native_handle(), SIGUSR1);
    EXPECT_EQ(platform_write(pipe.writer(), "ab", 2), 2);
    reader.join();
    sigaction(SIGUSR1, &old, nullptr);
    EXPECT_EQ(result, 2);
    EXPECT_EQ(std::string(bytes, 2), "ab");
}

TEST(PosixFiles, FailingReadIsNoEndOfTheFile)
{
    const Scratch scratch;
    const int folder = open(scratch.folder().c_str(), O_RDONLY | O_CLOEXEC);
    char bytes[4];
    EXPECT_EQ(platform_read(file_of(folder), bytes, 4), -1);
    EXPECT_EQ(platform_last_error(), uint32_t{EISDIR});
    close(folder);
}

TEST(PosixFiles, TerminalIsOne)
{
    const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) GTEST_SKIP() << "no pseudo terminal to be had";
    const Opened terminal(ptsname(master));
    ASSERT_TRUE(terminal.good);
    EXPECT_TRUE(platform_is_terminal(terminal.file));
    close(master);
}

} // namespace
#endif
