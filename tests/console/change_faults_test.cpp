// Each verb that changes files of a medium with each call of the system failing in turn: the medium is then as it was,
// or as it was to become, and the program says which.
#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "console/change_verbs.h"
#include "console/exit_code.h"
#include "tests/console/changes.h"
#include "tests/support/faults.h"
#include "tests/support/medium.h"
#include "tests/support/system45_builder.h"
#include "volume/state.h"

using tests::Bytes;
using tests::FileFault;
using tests::Layout;
using tests::Names;
using tests::StoredVolume;
using tests::TemporaryFile;
using tests::VolumeCase;

namespace
{

using Contents = std::map<std::string, Bytes>; // of the files on a volume, by their names

Contents contents_of(Layout layout, const TemporaryFile &volume)
{
    const tests::Medium medium(volume.path());
    EXPECT_TRUE(medium && medium->state->table_result == 0) << "the volume doesn't open";
    Contents contents;
    const StoredVolume stored = tests::stored(layout, volume.bytes());
    EXPECT_TRUE(stored.spares_agree);
    for (const tests::StoredFile &file : stored.files) {
        if (file.purged) continue;
        EXPECT_TRUE(contents.emplace(file.name, content_of(volume.bytes(), file)).second) << file.name;
    }
    return contents;
}

// A change, and the volume that it is made to. The other one gets what is copied or moved.
struct ChangeCase {
    std::string name;
    int (*run)(const Arguments &arguments);
    Arguments arguments;
    VolumeCase volume;
    bool between = false; // the last word is the other medium
};

std::ostream &operator<<(std::ostream &stream, const ChangeCase &change)
{
    return stream << change.name;
}

std::vector<ChangeCase> cases_on(const VolumeCase &volume)
{
    std::vector<ChangeCase> cases = {{"Remove", run_rm, {}, volume},       {"Rename", run_mv, {}, volume},
                                     {"Copy", run_cp, {}, volume},         {"Replace", run_cp, {}, volume},
                                     {"Type", run_attr, {}, volume},       {"Make", run_mk, {}, volume},
                                     {"CopyTo", run_cp, {}, volume, true}, {"MoveTo", run_mv, {}, volume, true}};
    cases[0].arguments.words = {"BETA"};
    cases[1].arguments.words = {"BETA", "NEW"};
    cases[2].arguments.words = {"GAMMA", "NEW"};
    cases[3].arguments.words = {"GAMMA", "ALPHA"};
    cases[4].arguments.words = {"ALPHA"};
    cases[4].arguments.type = "DATA";
    cases[5].arguments.word = "NEW";
    cases[5].arguments.room = 1000;
    cases[6].arguments.words = cases[7].arguments.words = {"ALPHA", "GAMMA"};
    for (ChangeCase &change : cases) {
        change.name += volume.name;
        change.arguments.overwrite = true;
    }
    return cases;
}

Bytes lif_with_purged_beta()
{
    Bytes image = tests::lif_of_three();
    const std::string name = "BETA      ";
    const auto entry = std::search(image.begin(), image.end(), name.begin(), name.end());
    EXPECT_NE(entry, image.end());
    std::fill_n(entry + 10, 2, uint8_t{0}); // its type
    return image;
}

ChangeCase undelete_case()
{
    ChangeCase undelete = {"Undelete", run_undelete, {}, {"Lif", Layout::lif, lif_with_purged_beta}};
    undelete.arguments.word = "BETA";
    undelete.arguments.type = "ASCII";
    return undelete;
}

std::vector<ChangeCase> all_cases()
{
    std::vector<ChangeCase> all = {undelete_case()};
    for (const VolumeCase &volume : tests::three_volumes) {
        for (const ChangeCase &change : cases_on(volume)) all.push_back(change);
    }
    return all;
}

struct Ended {
    int code = -1;
    std::string errors;
    bool reached = false;
    Contents volume;
    Contents other;
    Bytes image;
};

// The other volume has files of the same names, with other content, which give way.
Bytes other_image(const VolumeCase &volume)
{
    Bytes image = volume.image();
    std::replace(image.begin(), image.end(), uint8_t{'a'}, uint8_t{'x'});
    std::replace(image.begin(), image.end(), uint8_t{'c'}, uint8_t{'z'});
    return image;
}

// The two volumes of a run.
class Trial
{
  public:
    explicit Trial(const ChangeCase &change)
        : change_(change), arguments_(change.arguments), volume_(change.volume.image()),
          other_(other_image(change.volume))
    {
        arguments_.medium = volume_.path();
        if (change.between) arguments_.words.emplace_back(other_.path());
    }

    template <class Faults> Ended with(const Faults &faults)
    {
        Ended ended;
        testing::internal::CaptureStderr();
        ended.code = change_.run(arguments_);
        ended.reached = faults.reached;
        ended.errors = testing::internal::GetCapturedStderr();
        return ended;
    }

    void look(Ended *ended) const
    {
        ended->volume = contents_of(change_.volume.layout, volume_);
        ended->other = contents_of(change_.volume.layout, other_);
        ended->image = volume_.bytes();
    }

  private:
    const ChangeCase &change_;
    Arguments arguments_;
    TemporaryFile volume_;
    TemporaryFile other_;
};

Ended run_with(const ChangeCase &change, FileFault fault, uint32_t nth, bool onward = false)
{
    Trial trial(change);
    Ended ended;
    {
        const tests::FileFaults faults(fault, nth, onward);
        ended = trial.with(faults);
    }
    trial.look(&ended);
    return ended;
}

}

class ChangeFaults : public testing::TestWithParam<ChangeCase>
{
  protected:
    ChangeFaults() : before_(untouched()), after_(run_with(GetParam(), FileFault::none, 0))
    {
        EXPECT_EQ(after_.code, exit_done) << after_.errors;
    }

    // Either all is done, or nothing is; of a move that couldn't take its originals away, the copies.
    void check(const Ended &ended) const
    {
        const bool copied = ended.other == after_.other;
        EXPECT_TRUE(copied || ended.other == before_.other) << ended.errors;
        if (ended.code == exit_done) {
            EXPECT_EQ(ended.errors, "");
            EXPECT_TRUE(copied && ended.volume == after_.volume);
            return;
        }
        EXPECT_GT(tests::error_lines(ended.errors), 0U) << ended.errors;
        EXPECT_TRUE(ended.volume == before_.volume) << ended.errors;
        const bool on_both = ended.errors.find("are on both media.") != std::string::npos;
        EXPECT_EQ(ended.code, on_both ? exit_partly : exit_failed) << ended.errors;
        EXPECT_EQ(copied && GetParam().between, on_both) << ended.errors;
    }

    // Runs with each call failing in turn, and returns how many times that was told.
    uint32_t run_all(FileFault fault) const
    {
        uint32_t told = 0;
        for (uint32_t nth = 1; nth < 2000; nth++) {
            SCOPED_TRACE(nth);
            const Ended ended = run_with(GetParam(), fault, nth);
            check_partly(ended);
            if (!ended.reached) {
                EXPECT_EQ(ended.code, exit_done) << ended.errors;
                return told;
            }
            if (ended.code != exit_done) told++;
        }
        ADD_FAILURE() << "no end of calls";
        return told;
    }

  private:
    static Ended untouched()
    {
        Ended ended;
        Trial(GetParam()).look(&ended);
        return ended;
    }

    // Where one of two files could not be copied, the other one is where it was to go.
    void check_partly(const Ended &ended) const
    {
        const bool one_failed = ended.errors.find(" of 2 files were not ") != std::string::npos;
        if (!one_failed) {
            check(ended);
            return;
        }
        EXPECT_EQ(ended.code, ended.errors.find("[tarvo] 2 of 2") == std::string::npos ? exit_partly : exit_failed);
        for (const auto &[name, content] : before_.volume) {
            const auto here = ended.volume.find(name);
            const auto there = ended.other.find(name);
            EXPECT_TRUE((here != ended.volume.end() && here->second == content) ||
                        (there != ended.other.end() && there->second == content))
                << name << ended.errors;
        }
    }

    Ended before_;
    Ended after_;
};

TEST_P(ChangeFaults, EachFailingWriteLeavesTheOldFilesOrTheNew)
{
    EXPECT_GT(run_all(FileFault::write), 0U);
}

TEST_P(ChangeFaults, EachShortWriteLeavesTheOldFilesOrTheNew)
{
    EXPECT_GT(run_all(FileFault::short_write), 0U);
}

TEST_P(ChangeFaults, EachFailingReadLeavesTheOldFilesOrTheNew)
{
    run_all(FileFault::read);
}

TEST_P(ChangeFaults, EachFailingSeekLeavesTheOldFilesOrTheNew)
{
    run_all(FileFault::seek);
}

TEST_P(ChangeFaults, EachFailingOpenLeavesTheOldFilesOrTheNew)
{
    EXPECT_GT(run_all(FileFault::open), 0U);
}

// Nothing can be told either then, but by the exit code.
TEST_P(ChangeFaults, SystemThatTakesNoMoreWritesIsAFailure)
{
    for (uint32_t nth = 1; nth < 2000; nth++) {
        SCOPED_TRACE(nth);
        Trial trial(GetParam());
        const tests::FileFaults faults(FileFault::write, nth, true);
        const Ended ended = trial.with(faults);
        if (!ended.reached) return;
        EXPECT_NE(ended.code, exit_done);
    }
    ADD_FAILURE() << "no end of writes";
}

TEST_P(ChangeFaults, EachFailingAllocationLeavesNothingAllocated)
{
    for (uint32_t nth = 1; nth < 2000; nth++) {
        SCOPED_TRACE(nth);
        Trial trial(GetParam());
        Ended ended;
        {
            const tests::HeapFaults faults(nth);
            ended = trial.with(faults);
            EXPECT_EQ(faults.releases, faults.allocations - (faults.reached ? 1 : 0));
        }
        trial.look(&ended);
        if (!ended.reached) {
            EXPECT_EQ(ended.code, exit_done);
            return;
        }
        if (ended.code != exit_partly) check(ended); // else one file has failed, or the source wasn't read whole
    }
    ADD_FAILURE() << "no end of allocations";
}

INSTANTIATE_TEST_SUITE_P(, ChangeFaults, testing::ValuesIn(all_cases()), testing::PrintToStringParamName());
