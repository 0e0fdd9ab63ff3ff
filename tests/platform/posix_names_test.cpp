// Moving where the system helps less, and what temporary files are on POSIX.
#ifndef _WIN32
#include <gtest/gtest.h>

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

#include "platform/platform.h"
#include "tests/platform/scratch.h"

namespace
{

using tests::content;
using tests::exists;
using tests::Scratch;

constexpr int cannot_refuse = 100; // exit codes of the child
constexpr int moved = 101;

// From here on this process gets `code` from renameat2, and EPERM from link where `without_links`.
bool refuse_calls(uint32_t code, bool without_links)
{
    const auto is_call = [](long number, uint32_t answer) -> std::array<sock_filter, 2> {
        return {sock_filter BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<uint32_t>(number), 0, 1),
                sock_filter BPF_STMT(BPF_RET | BPF_K, answer)};
    };
    const uint32_t refused = SECCOMP_RET_ERRNO | code;
    const uint32_t links = without_links ? SECCOMP_RET_ERRNO | uint32_t{EPERM} : uint32_t{SECCOMP_RET_ALLOW};
    const auto rename = is_call(SYS_renameat2, refused);
    const auto link = is_call(SYS_linkat, links);
#ifdef SYS_link
    const auto old_link = is_call(SYS_link, links);
#else
    const auto old_link = link;
#endif
    sock_filter steps[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, 0), // the call's number
                           rename[0],
                           rename[1],
                           link[0],
                           link[1],
                           old_link[0],
                           old_link[1],
                           BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
    sock_fprog program = {std::size(steps), steps};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

// Moves in a child whose system doesn't know the call that spares existing files. The last error, 0 for success;
// nothing where such a child can't be made.
std::optional<int> move_without_the_call(const std::string &from, const std::string &to, uint32_t code,
                                         bool without_links)
{
    const pid_t child = fork();
    if (child == 0) {
        if (!refuse_calls(code, without_links)) _exit(cannot_refuse);
        _exit(platform_move(from.c_str(), to.c_str()) ? moved : static_cast<int>(platform_last_error()));
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status)) return {};
    if (WEXITSTATUS(status) == cannot_refuse) return {};
    return WEXITSTATUS(status) == moved ? 0 : WEXITSTATUS(status);
}

const struct {
    const char *name;
    uint32_t code;
    bool without_links;
} old_systems[] = {
    {"old kernel", ENOSYS, false},
    {"old file system", EINVAL, false},
    {"file system without links", EINVAL, true},
};

TEST(PosixMove, WithoutTheNewCallAFileMoves)
{
    for (const auto &row : old_systems) {
        const Scratch scratch;
        const std::string from = scratch.file("a", "abc");
        const std::string to = scratch.path("b");
        const std::optional<int> result = move_without_the_call(from, to, row.code, row.without_links);
        if (!result) GTEST_SKIP() << "calls can't be refused here";
        EXPECT_EQ(*result, 0) << row.name;
        EXPECT_FALSE(exists(from)) << row.name;
        EXPECT_EQ(content(to), "abc") << row.name;
    }
}

TEST(PosixMove, WithoutTheNewCallAnExistingFileIsSpared)
{
    for (const auto &row : old_systems) {
        const Scratch scratch;
        const std::string from = scratch.file("a", "abc");
        const std::string to = scratch.file("b", "old");
        const std::optional<int> result = move_without_the_call(from, to, row.code, row.without_links);
        if (!result) GTEST_SKIP() << "calls can't be refused here";
        EXPECT_EQ(*result, EEXIST) << row.name;
        EXPECT_EQ(content(from), "abc") << row.name;
        EXPECT_EQ(content(to), "old") << row.name;
    }
}

TEST(PosixMove, WithoutTheNewCallAFolderMovesOverNothing)
{
    for (const auto &row : old_systems) {
        const Scratch scratch;
        std::filesystem::create_directory(scratch.path("a"));
        scratch.file("a/f", "abc");
        std::filesystem::create_directory(scratch.path("empty"));
        const auto into_empty =
            move_without_the_call(scratch.path("a"), scratch.path("empty"), row.code, row.without_links);
        if (!into_empty) GTEST_SKIP() << "calls can't be refused here";
        EXPECT_EQ(*into_empty, EEXIST) << row.name;
        EXPECT_TRUE(exists(scratch.path("a/f"))) << row.name;
        EXPECT_EQ(move_without_the_call(scratch.path("a"), scratch.path("a/b"), row.code, row.without_links), EINVAL);
        EXPECT_FALSE(exists(scratch.path("a/b"))) << row.name;
        EXPECT_EQ(move_without_the_call(scratch.path("a"), scratch.path("b"), row.code, row.without_links), 0);
        EXPECT_EQ(content(scratch.path("b/f")), "abc") << row.name;
    }
}

// Two folders on two file systems, or one that can't be had.
class PosixMoveAcross : public testing::Test
{
  protected:
    void SetUp() override
    {
        struct stat here;
        struct stat there;
        if (stat(near.folder().c_str(), &here) != 0 || stat("/dev/shm", &there) != 0 || here.st_dev == there.st_dev ||
            access("/dev/shm", W_OK) != 0)
            GTEST_SKIP() << "no second file system";
        far.emplace("/dev/shm");
    }

    const Scratch near;
    std::optional<Scratch> far;
};

TEST_F(PosixMoveAcross, FileKeepsContentModeAndTimes)
{
    const std::string from = near.file("a", std::string(200000, 'a'));
    const std::string to = far->path("b");
    const timespec times[2] = {{1000000001, 111}, {1000000002, 222}};
    ASSERT_EQ(chmod(from.c_str(), 0640), 0);
    ASSERT_EQ(utimensat(AT_FDCWD, from.c_str(), times, 0), 0);
    EXPECT_TRUE(platform_move(from.c_str(), to.c_str()));
    EXPECT_FALSE(exists(from));
    struct stat status;
    ASSERT_EQ(stat(to.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777u, 0640u);
    EXPECT_EQ(status.st_atim.tv_sec, 1000000001);
    EXPECT_EQ(status.st_mtim.tv_sec, 1000000002);
    EXPECT_EQ(status.st_mtim.tv_nsec, 222);
    EXPECT_EQ(content(to), std::string(200000, 'a'));
}

TEST_F(PosixMoveAcross, ExistingFileIsSpared)
{
    const std::string from = near.file("a", "abc");
    const std::string to = far->file("b", "old");
    EXPECT_FALSE(platform_move(from.c_str(), to.c_str()));
    EXPECT_EQ(platform_last_error(), uint32_t{EEXIST});
    EXPECT_EQ(content(from), "abc");
    EXPECT_EQ(content(to), "old");
}

TEST_F(PosixMoveAcross, FoldersAndLinksStay)
{
    std::filesystem::create_directory(near.path("d"));
    EXPECT_FALSE(platform_move(near.path("d").c_str(), far->path("d").c_str()));
    EXPECT_EQ(platform_last_error(), uint32_t{EXDEV});
    std::filesystem::create_symlink(near.file("f", "abc"), near.path("l"));
    EXPECT_FALSE(platform_move(near.path("l").c_str(), far->path("l").c_str()));
    EXPECT_TRUE(exists(near.path("d")) && exists(near.path("l")));
    EXPECT_FALSE(exists(far->path("d")) || exists(far->path("l")));
}

class PosixTemporary : public testing::Test
{
  protected:
    PosixTemporary() : had_(getenv("TMPDIR") != nullptr), old_(had_ ? getenv("TMPDIR") : "") {}
    ~PosixTemporary() override
    {
        if (had_)
            setenv("TMPDIR", old_.c_str(), 1);
        else
            unsetenv("TMPDIR");
    }

    char path[260] = "";

  private:
    bool had_;
    std::string old_;
};

TEST_F(PosixTemporary, FileIsTheUsersAloneInTheFolderAskedFor)
{
    const Scratch scratch;
    setenv("TMPDIR", scratch.folder().c_str(), 1);
    ASSERT_TRUE(platform_temporary_file(path, sizeof(path)));
    EXPECT_EQ(std::string(path).substr(0, scratch.folder().size() + 6), scratch.folder() + "/TRV$$");
    struct stat status;
    ASSERT_EQ(stat(path, &status), 0);
    EXPECT_EQ(status.st_mode & 07777u, 0600u);
}

TEST_F(PosixTemporary, EmptyVariableMeansTheSystemsFolder)
{
    setenv("TMPDIR", "", 1);
    ASSERT_TRUE(platform_temporary_file(path, sizeof(path)));
    EXPECT_EQ(std::string(path).substr(0, 10), "/tmp/TRV$$");
    EXPECT_TRUE(platform_delete(path));
}

TEST_F(PosixTemporary, MissingOrEndlessFolderFails)
{
    const Scratch scratch;
    setenv("TMPDIR", scratch.path("none").c_str(), 1);
    EXPECT_FALSE(platform_temporary_file(path, sizeof(path)));
    EXPECT_EQ(platform_last_error(), uint32_t{ENOENT});
    setenv("TMPDIR", ("/" + std::string(250, 'x')).c_str(), 1);
    EXPECT_FALSE(platform_temporary_file(path, sizeof(path)));
    EXPECT_EQ(platform_last_error(), uint32_t{ENAMETOOLONG});
}

TEST(PosixReplace, NewFileGetsTheRightsOfTheOldOne)
{
    const Scratch scratch;
    const std::string from = scratch.file("a", "new");
    const std::string to = scratch.file("b", "old");
    ASSERT_EQ(chmod(to.c_str(), 0640), 0);
    ASSERT_TRUE(platform_replace(from.c_str(), to.c_str()));
    struct stat status;
    ASSERT_EQ(stat(to.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
}

TEST(PosixReplace, NewFileGetsTheOwnerOfTheOldOne)
{
    if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
    const Scratch scratch;
    const std::string from = scratch.file("a", "new");
    const std::string to = scratch.file("b", "old");
    ASSERT_EQ(chown(to.c_str(), 65534, 65533), 0);
    ASSERT_TRUE(platform_replace(from.c_str(), to.c_str()));
    struct stat status;
    ASSERT_EQ(stat(to.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 65534U);
    EXPECT_EQ(status.st_gid, 65533U);
    EXPECT_EQ(content(to), "new");
}

TEST(PosixRealPath, GoesThroughLinks)
{
    const Scratch scratch;
    const std::string path = scratch.file("a", "abc");
    std::filesystem::create_symlink("a", scratch.path("link"));
    std::array<char, 260> real = {};
    ASSERT_TRUE(platform_real_path(scratch.path("link").c_str(), real.data(), real.size()));
    EXPECT_EQ(std::string(real.data()), std::filesystem::canonical(path).string());
    std::filesystem::create_symlink("none", scratch.path("dangling"));
    EXPECT_FALSE(platform_real_path(scratch.path("dangling").c_str(), real.data(), real.size()));
    EXPECT_EQ(platform_last_error(), static_cast<uint32_t>(ENOENT));
}

} // namespace
#endif
