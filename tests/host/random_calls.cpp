// The numbers come from a generator that is the same everywhere. Only what no order of calls may bring about is
// printed.
#include "tests/host/random_calls.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <random>

#include "tests/host/session.h"
#include "tests/support/volume_builder.h"

namespace host
{

namespace
{

using tests::Bytes;

std::mt19937_64 numbers;
bool stopped = false; // an answer to progress was a stop

const char *const targets[] = {
    "sound.lif", "sound.lif", "sound.lif", "files.lif", "hostile0.lif", "hostile1.lif", "hostile2.lif", "hostile3.lif",
    "cut.lif",   "empty.lif", "none.lif",  "zeros.hpi", "0:",           "700:",         "7X0:",         "7:",
    "plugin",    "",          "%s%n%n",    ".",         "tape.tap",     "\xFF\x01",
};

const char *const names[] = {
    "README.ASCII",
    "RESULTS.&512.BDAT",
    "OLD.PURGE",
    "NOTES.TEXT",
    "SORT.CODE",
    "SECRET.BDAT",
    "NODATE.BAS8x",
    "F000003.ASCII",
    "MISSING.ASCII",
    "",
    ".",
    "..",
    ".ASCII",
    "%s%n%x.BDAT",
    "\xFF\x80.TEXT",
    "X.&99999999999.A",
    "X.&0.DATA",
    "__________.CODE",
    "A.#E123",
    "A.#",
    "LONGNAME12345.CODE",
};

// Files of the host: some that come and go, some that are texts, some that can't be.
const char *const local_names[] = {
    "out0",
    "out1",
    "NOTE.ASCII",
    "NOTE.ASCII.txt",
    "ITEMS.DATA.txt",
    "PAGE.TEXT.txt",
    "LINES.TXT75.TXT",
    "temporary~_tc1~ITEMS.DATA",
    "temporary~_tc1~README.ASCII",
    "missing_folder~out",
    "temporary",
    "sound.lif",
    "",
};

const char *const folders[] = {"~", "~", "~", "~", "", "~SUB~", "~.~..~", "~~"};

uint32_t below(uint32_t limit)
{
    return static_cast<uint32_t>(numbers() % limit);
}

template <size_t count> const char *any_of(const char *const (&texts)[count])
{
    return texts[below(count)];
}

std::string any_path()
{
    const std::string folder = any_of(folders);
    const Words words = words_of(folder, "");
    std::string path = words.empty() ? "" : words[0];
    if (below(40) == 0) return path + std::string(300 + below(2000), 'L');
    return path + any_of(names);
}

std::string any_local_name()
{
    const Words words = words_of(any_of(local_names), "");
    return words.empty() ? "" : words[0];
}

// Some bytes of header and directory are any bytes, and so are some whole fields.
Bytes hostile_image()
{
    Bytes image = tests::lif_image(tests::demo_volume());
    constexpr uint32_t tables = 4 * tests::record_bytes;
    for (uint32_t i = below(30) + 1; i > 0; i--) image[below(tables)] = static_cast<uint8_t>(below(256));
    for (uint32_t i = below(3); i > 0; i--)
        tests::set_dword_at(image, 8 + 4 * below(8), static_cast<uint32_t>(numbers()));
    tests::set_word_at(image, 0, 0x8000);
    return image;
}

// Lines of any length and any characters.
Bytes any_text()
{
    Bytes text;
    for (uint32_t line = below(20); line > 0; line--) {
        for (uint32_t i = below(below(4) == 0 ? 1200 : 60); i > 0; i--)
            text.push_back(static_cast<uint8_t>(below(256)));
        text.push_back('\n');
    }
    return text;
}

void make_sources()
{
    std::filesystem::create_directories(words_of("temporary~_tc1", "")[0]);
    for (const char *name : local_names) {
        const std::string path = name;
        if (path.find('.') == std::string::npos || path.ends_with(".lif")) continue;
        tests::write_file(words_of(path, "")[0], any_text());
    }
}

// With a dialog beside the plug-in that is what is answered.
void choose_in_dialog()
{
    if (std::filesystem::exists(std::filesystem::path("plugin") / session.companion.filename())) {
        std::ofstream("dialog_answer.txt") << any_of(targets) << '\n' << below(64) << "\nquiet\n";
    }
}

void make_images()
{
    const Bytes demo = tests::lif_image(tests::demo_volume());
    tests::write_file("sound.lif", demo);
    tests::write_file("files.lif", tests::lif_image(tests::lif_volume_with_files(20)));
    for (int i = 0; i < 4; i++) tests::write_file("hostile" + std::to_string(i) + ".lif", hostile_image());
    tests::write_file("cut.lif", Bytes(demo.begin(), demo.begin() + 600));
    tests::write_file("empty.lif", {});
    tests::write_file("zeros.hpi", Bytes(5000));
}

void expect(bool fine, const char *call, int64_t result)
{
    if (fine) return;
    print(std::string(call) + " gave " + std::to_string(result));
    session.failures++;
}

void expect_one_of(std::initializer_list<int32_t> allowed, const char *call, int32_t result)
{
    expect(std::find(allowed.begin(), allowed.end(), result) != allowed.end(), call, result);
}

void call_find_first()
{
    choose_in_dialog();
    const std::string path = below(3) == 0 ? any_path() : words_of("~", "")[0];
    FindDataA record;
    session.handle = session.library.FsFindFirst(path.c_str(), &record);
    expect(session.handle != nullptr, "FsFindFirst", 0);
}

void call_find_next()
{
    FindDataA record;
    std::memset(&record, 0xAA, sizeof record);
    const int32_t result = session.library.FsFindNext(below(20) == 0 ? nullptr : session.handle, &record);
    expect_one_of({0, 1}, "FsFindNext", result);
    if (result == 0) return;
    expect(std::memchr(record.name, 0, sizeof record.name) != nullptr, "FsFindNext: a name without end,", result);
    expect(std::memchr(record.alternate_name, 0, sizeof record.alternate_name) != nullptr,
           "FsFindNext: an alternate name without end,", result);
}

void call_find_close()
{
    expect_one_of({0}, "FsFindClose", session.library.FsFindClose(below(20) == 0 ? nullptr : session.handle));
}

void call_get()
{
    std::string local = any_local_name();
    const int32_t result =
        session.library.FsGetFile(any_path().c_str(), local.data(), static_cast<int32_t>(below(8)), nullptr);
    expect_one_of({0, 1, 2, 3, 6}, "FsGetFile", result);
}

// The file goes when it was moved whole, and at no other time.
void call_put()
{
    std::string local = any_local_name();
    const auto flags = static_cast<int32_t>(below(8));
    const bool was_there = std::filesystem::exists(local);
    stopped = false;
    const int32_t result = session.library.FsPutFile(local.data(), any_path().c_str(), flags);
    expect_one_of({0, 1, 3, 6}, "FsPutFile", result);
    const bool may_go = result == 0 && (flags & COPY_MOVE) != 0 && !stopped;
    expect(!was_there || may_go || std::filesystem::exists(local), "FsPutFile: the file is gone and the result",
           result);
}

void call_rename()
{
    const std::string from = any_path();
    const std::string to = any_path();
    const auto move = static_cast<int32_t>(below(2));
    const auto overwrite = static_cast<int32_t>(below(2));
    expect_one_of({0, 1, 2, 4}, "FsRenMovFile",
                  session.library.FsRenMovFile(from.c_str(), to.c_str(), move, overwrite, nullptr));
}

void call_delete()
{
    expect_one_of({0, 1}, "FsDeleteFile", session.library.FsDeleteFile(any_path().c_str()));
}

void call_attr()
{
    const auto attributes = static_cast<int32_t>(numbers());
    expect_one_of({0, 1}, "FsSetAttr", session.library.FsSetAttr(any_path().c_str(), attributes));
}

void call_time()
{
    const HostTime time = {static_cast<uint32_t>(numbers()), static_cast<uint32_t>(numbers())};
    expect_one_of({0, 1}, "FsSetTime", session.library.FsSetTime(any_path().c_str(), &time, &time, &time));
}

void call_status()
{
    session.library.FsStatusInfo(any_path().c_str(), static_cast<int32_t>(below(3)), static_cast<int32_t>(below(14)));
}

void call_execute()
{
    const std::string name = below(2) == 0 ? words_of("~", "")[0] : any_path();
    const char *const verbs[] = {"properties", "open", ""};
    const char *verb = any_of(verbs);
    choose_in_dialog();
    const int32_t result = session.library.FsExecuteFile(nullptr, name.c_str(), verb);
    expect(result == (std::strcmp(verb, "properties") == 0 ? 0 : -1), "FsExecuteFile", result);
}

void call_init()
{
    expect_one_of({0}, "FsInit", session.library.FsInit(plugin_number, answer_progress, answer_log, answer_request));
}

void call_root()
{
    std::array<char, 16> buffer{};
    session.library.FsGetDefRootName(below(4) == 0 ? nullptr : buffer.data(), static_cast<int32_t>(below(18)) - 2);
}

using Call = void (*)();

// How often a call comes, beside the others.
struct Share {
    Call call;
    uint32_t weight;
};

constexpr Share shares[] = {
    {call_find_first, 20}, {call_find_next, 40}, {call_find_close, 8}, {call_get, 8},  {call_put, 8},
    {call_rename, 12},     {call_delete, 6},     {call_attr, 8},       {call_time, 8}, {call_status, 30},
    {call_execute, 6},     {call_init, 1},       {call_root, 1},
};

Call any_call()
{
    uint32_t sum = 0;
    for (const Share &share : shares) sum += share.weight;
    uint32_t number = below(sum);
    for (const Share &share : shares) {
        if (number < share.weight) return share.call;
        number -= share.weight;
    }
    return call_root;
}

}

int32_t random_progress()
{
    if (below(4) != 0) return 0;
    stopped = true;
    return 1;
}

int32_t random_request(int32_t kind, char *answer, int32_t size)
{
    if (kind != 0 || below(8) == 0) return 0;
    if (below(16) == 0) {
        std::memset(answer, 'A', static_cast<size_t>(size));
        return 1;
    }
    const std::string target = any_of(targets);
    std::memcpy(answer, target.c_str(), std::min(target.size() + 1, static_cast<size_t>(size)));
    return 1;
}

void run_random_calls(uint64_t seed, uint32_t count)
{
    constexpr uint32_t calls_between_images = 200;
    const Answers answers = session.answers;
    numbers.seed(seed);
    session.answers.random = true;
    for (uint32_t i = 0; i < count; i++) {
        if (i % calls_between_images == 0) {
            make_images();
            make_sources();
        }
        any_call()();
    }
    session.library.FsStatusInfo("", 1, 2);
    session.answers = answers;
    print("= " + std::to_string(count) + " calls");
}

}
