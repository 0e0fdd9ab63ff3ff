// The dialog as its user meets it. Without a display there are no windows, and these tests are skipped.
#include <gtest/gtest.h>

#include <cctype>
#include <set>
#include <string>
#include <vector>

#include "dialog/dialog_ids.h"
#include "dialog/target_store.h"
#include "tests/dialog/dialog_run.h"

using namespace tests;

namespace
{
// The user's profile and a disc, and the library itself.
struct TargetDialog : testing::Test {
    const PrivateRegistry registry;
    const ImageFolder disc;

    void SetUp() override
    {
        ASSERT_NE(dialog_library(), nullptr) << "tarvodialog64.dll isn't beside this program";
        ASSERT_NE(dialog_call(), nullptr);
        if (!windows_can_be_made()) GTEST_SKIP() << "no display";
    }
};

void expect_unchanged(const Ended &ended, const std::string &target, uint32_t options)
{
    EXPECT_EQ(ended.result, 0);
    EXPECT_EQ(ended.target, target);
    EXPECT_EQ(ended.options, options);
}

// A dialog with this in its line doesn't end with OK and says these words.
void expect_refused(DialogRun *run, const std::string &target, const char *words)
{
    run->type_target(target);
    const std::string before = run->text(ID_MESSAGE);
    run->press(IDOK);
    ASSERT_TRUE(run->open()) << target;
    EXPECT_NE(run->text(ID_MESSAGE), before) << target;
    EXPECT_NE(run->text(ID_MESSAGE).find(words), std::string::npos) << target << ": " << run->text(ID_MESSAGE);
    EXPECT_EQ(run->text(ID_TARGET), target);
    EXPECT_EQ(GetParent(run->focus()), run->item(ID_TARGET)) << "the keyboard isn't in the target's line";
}

std::vector<HWND> children(HWND window)
{
    std::vector<HWND> found;
    for (HWND child = GetWindow(window, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        found.push_back(child);
    }
    return found;
}

std::string caption(HWND window)
{
    char text[200] = "";
    SendMessageA(window, WM_GETTEXT, sizeof text, reinterpret_cast<LPARAM>(text));
    return text;
}
}

TEST_F(TargetDialog, ShowsThePresentTargetAndOptions)
{
    DialogRun run(disc.image + ":SUB", 0x1A);
    ASSERT_TRUE(run.open());
    EXPECT_EQ(run.text(ID_TARGET), disc.image + ":SUB");
    EXPECT_TRUE(run.checked(ID_TYPED_EXTENSIONS));
    EXPECT_FALSE(run.checked(ID_FILE_CONVERSION));
    EXPECT_TRUE(run.checked(ID_SHOW_PURGED));
    EXPECT_FALSE(run.checked(ID_HEADERS_NONE));
    EXPECT_TRUE(run.checked(ID_HEADERS_HPBASIC));
    EXPECT_FALSE(run.checked(ID_HEADERS_HPCALC));
}

TEST_F(TargetDialog, OkHandsOverTargetAndOptions)
{
    DialogRun run("0:", 0x80000041);
    run.type_target(disc.image);
    for (int control : {ID_TYPED_EXTENSIONS, ID_FILE_CONVERSION, ID_SHOW_PURGED, ID_HEADERS_HPCALC}) {
        SendMessageA(run.item(control), BM_CLICK, 0, 0);
    }
    const Ended ended = run.end(IDOK);
    EXPECT_EQ(ended.result, 1);
    EXPECT_EQ(ended.target, disc.image);
    EXPECT_EQ(ended.options, 0x8000006Fu);
}

TEST_F(TargetDialog, OkWithNothingChangedChangesNothing)
{
    for (uint32_t options : {0x03u, 0x25u, 0x1Fu}) {
        const Ended ended = DialogRun("70512:", options).end(IDOK);
        EXPECT_EQ(ended.result, 1);
        EXPECT_EQ(ended.target, "70512:");
        EXPECT_EQ(ended.options, options);
    }
}

TEST_F(TargetDialog, BlanksAndQuotesAroundATargetAreNotHandedOver)
{
    DialogRun run("", 3);
    run.type_target("  \"" + disc.image + "\" ");
    EXPECT_EQ(run.end(IDOK).target, disc.image);
}

TEST_F(TargetDialog, CancelAndClosingLeaveEverythingAsItWas)
{
    ASSERT_TRUE(save_targets({"1:", "2:"}));
    for (bool cross : {false, true}) {
        DialogRun run("0:", 0x43);
        run.press(ID_FLOPPY_3);
        SendMessageA(run.item(ID_SHOW_PURGED), BM_CLICK, 0, 0);
        SendMessageA(run.item(ID_HEADERS_HPBASIC), BM_CLICK, 0, 0);
        if (cross) run.close();
        expect_unchanged(cross ? run.end() : run.end(IDCANCEL), "0:", 0x43);
        EXPECT_EQ(load_targets(), (LastTargets{"1:", "2:"}));
    }
}

TEST_F(TargetDialog, UnusableTargetsAreRefusedInWords)
{
    DialogRun run("0:", 3);
    ASSERT_TRUE(run.open());
    expect_refused(&run, "", "empty");
    expect_refused(&run, "   ", "empty");
    expect_refused(&run, disc.image + ":" + std::string(260 - disc.image.size(), 'A'), "too long");
    expect_refused(&run, "70:", "7AAUV:");
    expect_refused(&run, "733:", "address");
    expect_refused(&run, "700X:", "unit");
    expect_refused(&run, "70008:", "volume");
    expect_refused(&run, disc.folder + "\\none.lif", "no such");
    expect_refused(&run, disc.folder, "folder");
    expect_refused(&run, ":FILE", "no file name");
    expect_unchanged(run.end(IDCANCEL), "0:", 3);
    EXPECT_EQ(load_targets(), LastTargets{});
}

TEST_F(TargetDialog, AfterARefusalAGoodTargetIsTaken)
{
    DialogRun run("", 3);
    const std::string hint = run.text(ID_MESSAGE);
    expect_refused(&run, "79900:", "address");
    run.type_target("70500:");
    EXPECT_EQ(run.text(ID_MESSAGE), hint) << "the words about the old target are still there";
    const Ended ended = run.end(IDOK);
    EXPECT_EQ(ended.result, 1);
    EXPECT_EQ(ended.target, "70500:");
}

TEST_F(TargetDialog, TheLongestTargetFitsTheBuffer)
{
    const std::string longest = disc.image + ":" + std::string(258 - disc.image.size(), 'A');
    DialogRun run(longest, 3);
    EXPECT_EQ(run.text(ID_TARGET), longest);
    const Ended ended = run.end(IDOK);
    EXPECT_EQ(ended.result, 1);
    EXPECT_EQ(ended.target, longest);
}

TEST_F(TargetDialog, EachFloppyButtonNamesItsDrive)
{
    DialogRun run("", 3);
    for (int drive = 0; drive < 4; drive++) {
        run.press(ID_FLOPPY_0 + drive);
        EXPECT_EQ(run.text(ID_TARGET), std::to_string(drive) + ":");
    }
    EXPECT_EQ(run.end(IDOK).target, "3:");
}

TEST_F(TargetDialog, TheGpibDriveGoesIntoTheLineWhenUsed)
{
    DialogRun run("", 3);
    run.choose_row(ID_ADDRESS, 5);
    run.choose_row(ID_UNIT, 1);
    run.choose_row(ID_VOLUME, 2);
    EXPECT_EQ(run.text(ID_TARGET), "");
    run.press(ID_USE_GPIB);
    EXPECT_EQ(run.text(ID_TARGET), "70512:");
    EXPECT_EQ(run.end(IDOK).target, "70512:");
}

TEST_F(TargetDialog, TheListsHoldAllAddressesUnitsAndVolumes)
{
    DialogRun run("", 3);
    EXPECT_EQ(run.row(ID_ADDRESS, 0), "0");
    EXPECT_EQ(run.row(ID_ADDRESS, 30), "30");
    EXPECT_EQ(run.row(ID_ADDRESS, 31), "31 (the bus)");
    EXPECT_EQ(run.row(ID_ADDRESS, 32), "no such row");
    EXPECT_EQ(run.row(ID_UNIT, 9), "9");
    EXPECT_EQ(run.row(ID_UNIT, 10), "no such row");
    EXPECT_EQ(run.row(ID_VOLUME, 7), "7");
    EXPECT_EQ(run.row(ID_VOLUME, 8), "no such row");
}

TEST_F(TargetDialog, TheBusItselfHasNoUnitAndVolume)
{
    DialogRun run("", 3);
    run.choose_row(ID_ADDRESS, 31);
    EXPECT_FALSE(IsWindowEnabled(run.item(ID_UNIT)));
    EXPECT_FALSE(IsWindowEnabled(run.item(ID_VOLUME)));
    run.press(ID_USE_GPIB);
    EXPECT_EQ(run.text(ID_TARGET), "7:");
    run.choose_row(ID_ADDRESS, 30);
    EXPECT_TRUE(IsWindowEnabled(run.item(ID_UNIT)));
    EXPECT_TRUE(IsWindowEnabled(run.item(ID_VOLUME)));
}

TEST_F(TargetDialog, AGpibTargetShowsInItsLists)
{
    DialogRun run("72163:FILE", 3);
    EXPECT_EQ(run.text(ID_ADDRESS), "21");
    EXPECT_EQ(run.text(ID_UNIT), "6");
    EXPECT_EQ(run.text(ID_VOLUME), "3");
    run.press(ID_USE_GPIB);
    EXPECT_EQ(run.text(ID_TARGET), "72163:");
    EXPECT_FALSE(IsWindowEnabled(DialogRun("7:", 3).item(ID_UNIT)));
    EXPECT_EQ(DialogRun("732:", 3).text(ID_ADDRESS), "0");
}

TEST_F(TargetDialog, ChosenTargetsStandInTheListNewestFirst)
{
    for (const char *target : {"0:", "1:", "70500:", "0:"}) {
        EXPECT_EQ(DialogRun(target, 3).end(IDOK).result, 1);
    }
    DialogRun run("", 3);
    EXPECT_EQ(run.row(ID_TARGET, 0), "0:");
    EXPECT_EQ(run.row(ID_TARGET, 1), "70500:");
    EXPECT_EQ(run.row(ID_TARGET, 2), "1:");
    EXPECT_EQ(run.row(ID_TARGET, 3), "no such row");
}

TEST_F(TargetDialog, ARowOfTheListIsATarget)
{
    ASSERT_TRUE(save_targets({"1:", disc.image}));
    DialogRun run("", 3);
    run.choose_row(ID_TARGET, 1);
    EXPECT_EQ(run.end(IDOK).target, disc.image);
    EXPECT_EQ(load_targets(), (LastTargets{disc.image, "1:"}));
}

TEST_F(TargetDialog, BrowseBringsAFileIntoTheLine)
{
    DialogRun run("0:", 3);
    run.press_later(ID_BROWSE);
    const HWND files = run.child_dialog();
    ASSERT_NE(files, nullptr);
    const HWND name = GetDlgItem(files, cmb13);
    ASSERT_NE(name, nullptr);
    SendMessageA(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(disc.image.c_str()));
    SendMessageA(files, WM_COMMAND, IDOK, 0);
    run.press_later(IDOK);
    const Ended ended = run.end();
    EXPECT_EQ(ended.result, 1);
    EXPECT_STRCASEEQ(ended.target.c_str(), disc.image.c_str());
}

TEST_F(TargetDialog, BrowseThatIsCancelledLeavesTheLine)
{
    DialogRun run(disc.folder, 3);
    run.press_later(ID_BROWSE);
    const HWND files = run.child_dialog();
    ASSERT_NE(files, nullptr) << "a target that is a folder keeps the system's dialog away";
    SendMessageA(files, WM_COMMAND, IDCANCEL, 0);
    EXPECT_EQ(run.text(ID_TARGET), disc.folder);
    expect_unchanged(run.end(IDCANCEL), disc.folder, 3);
}

TEST_F(TargetDialog, EnterIsOkAndEscapeIsCancel)
{
    DialogRun chosen("0:", 3);
    chosen.press(ID_FLOPPY_2);
    chosen.key(VK_RETURN);
    EXPECT_EQ(chosen.end().target, "2:");
    DialogRun left("0:", 3);
    left.press(ID_FLOPPY_2);
    left.key(VK_ESCAPE);
    expect_unchanged(left.end(), "0:", 3);
}

TEST_F(TargetDialog, LettersWithAltReachTheControls)
{
    DialogRun run("", 0);
    for (char letter : {'e', 'f', 'p', 'l', '1'}) run.mnemonic(letter);
    run.press_later(IDOK);
    const Ended ended = run.end();
    EXPECT_EQ(ended.target, "1:");
    EXPECT_EQ(ended.options, 0x2Eu);
}

TEST_F(TargetDialog, EachMnemonicStandsOnce)
{
    DialogRun run("", 3);
    std::multiset<char> letters;
    for (HWND child : children(run.window)) {
        const std::string text = caption(child);
        const size_t mark = text.find('&');
        const bool counts = GetDlgCtrlID(child) != ID_MESSAGE && mark != std::string::npos;
        if (counts) letters.insert(static_cast<char>(std::tolower(text[mark + 1])));
    }
    EXPECT_EQ(letters.size(), 16u) << "a control lacks its mnemonic";
    EXPECT_EQ(letters.size(), std::set<char>(letters.begin(), letters.end()).size());
}

TEST_F(TargetDialog, TabGoesThroughAllControlsInTheirOrder)
{
    DialogRun run("", 0x10);
    const std::vector<int> order = {
        ID_BROWSE, ID_FLOPPY_0, ID_FLOPPY_1,         ID_FLOPPY_2,        ID_FLOPPY_3,    ID_ADDRESS,         ID_UNIT,
        ID_VOLUME, ID_USE_GPIB, ID_TYPED_EXTENSIONS, ID_FILE_CONVERSION, ID_SHOW_PURGED, ID_HEADERS_HPBASIC, IDOK,
        IDCANCEL,  ID_TARGET};
    HWND control = run.item(ID_TARGET);
    for (int next : order) {
        control = GetNextDlgTabItem(run.window, control, FALSE);
        EXPECT_EQ(GetDlgCtrlID(control), next);
    }
}

TEST_F(TargetDialog, NoControlStandsOutsideOrOnAnother)
{
    DialogRun run("", 3);
    RECT inside = {};
    GetClientRect(run.window, &inside);
    MapWindowPoints(run.window, nullptr, reinterpret_cast<POINT *>(&inside), 2);
    std::vector<RECT> places;
    for (HWND child : children(run.window)) {
        RECT place = {};
        GetWindowRect(child, &place);
        RECT common = {};
        EXPECT_TRUE(IntersectRect(&common, &inside, &place) && EqualRect(&common, &place)) << caption(child);
        if ((GetWindowLongA(child, GWL_STYLE) & BS_TYPEMASK) == BS_GROUPBOX) continue;
        for (const RECT &other : places) EXPECT_FALSE(IntersectRect(&common, &other, &place)) << caption(child);
        places.push_back(place);
    }
    EXPECT_GE(places.size(), 20u);
}

TEST_F(TargetDialog, WordsOfAFaultFitTheirPlace)
{
    DialogRun run("", 3);
    run.type_target("70:"); // has the longest
    run.press(IDOK);
    const HWND message = run.item(ID_MESSAGE);
    RECT place = {};
    GetClientRect(message, &place);
    RECT needed = {0, 0, place.right, 0};
    const HDC context = GetDC(message);
    SelectObject(context, reinterpret_cast<HFONT>(SendMessageA(message, WM_GETFONT, 0, 0)));
    DrawTextA(context, run.text(ID_MESSAGE).c_str(), -1, &needed, DT_CALCRECT | DT_WORDBREAK | DT_NOPREFIX);
    ReleaseDC(message, context);
    EXPECT_GT(needed.bottom, 0);
    EXPECT_LE(needed.bottom, place.bottom);
}

TEST(TargetDialogCall, OtherKindsAndMissingPlacesShowNothing)
{
    ASSERT_NE(dialog_call(), nullptr);
    char target[260] = "0:";
    uint32_t options = 3;
    EXPECT_EQ(dialog_call()(0, target, &options), 0);
    EXPECT_EQ(dialog_call()(2, target, &options), 0);
    EXPECT_EQ(dialog_call()(1, nullptr, &options), 0);
    EXPECT_EQ(dialog_call()(1, target, nullptr), 0);
    EXPECT_STREQ(target, "0:");
    EXPECT_EQ(options, 3u);
}

TEST(TargetDialogCall, IsTheOnlyExport)
{
    ASSERT_NE(dialog_library(), nullptr);
    const auto *base = reinterpret_cast<const uint8_t *>(dialog_library());
    const auto *start = reinterpret_cast<const IMAGE_DOS_HEADER *>(base);
    const auto *header = reinterpret_cast<const IMAGE_NT_HEADERS64 *>(base + start->e_lfanew);
    const DWORD place = header->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress;
    const auto *exports = reinterpret_cast<const IMAGE_EXPORT_DIRECTORY *>(base + place);
    EXPECT_EQ(exports->NumberOfFunctions, 1u);
    EXPECT_EQ(exports->NumberOfNames, 1u);
}
