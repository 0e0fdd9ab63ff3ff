// Walking the list in memory: finding, changing directory, counting.
#include "volume/navigate.h"

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/medium.h"

using namespace tests;

namespace
{

// A tree made by hand. The entries live in the object.
class Tree
{
  public:
    MediaDescriptor md = usual_options();

    Tree()
    {
        md.format = FORMAT_SDF;
    }

    // Adds an entry at the end of a directory's list, or of the top level.
    FileInfo *add(FileInfo *parent, const std::string &name, const std::string &type = "ASCII")
    {
        FileInfo *info = &entries_.emplace_back(named(name, type));
        info->parent = parent;
        info->level = parent != nullptr ? parent->level + 1 : 1;
        FileInfo **head = parent != nullptr ? &parent->child : &md.root;
        while (*head != nullptr) {
            info->prev = *head;
            head = &(*head)->next;
        }
        *head = info;
        return info;
    }

    FileInfo *directory(FileInfo *parent, const std::string &name)
    {
        FileInfo *info = add(parent, name, "DIR");
        info->is_directory = 1;
        return info;
    }

  private:
    std::deque<FileInfo> entries_;
};

struct Change {
    int32_t result;
    FileInfo *info;
};

Change change(Tree &tree, const char *path, FileInfo *from = nullptr, const char *separator = nullptr)
{
    FileInfo *info = &tree.md.root[0]; // anything but what is expected
    const int32_t result = image_change_directory(&tree.md, from, path, separator, &info);
    return {result, info};
}

void expect_change(Tree &tree, const char *path, const FileInfo *list)
{
    const Change c = change(tree, path);
    EXPECT_EQ(c.result, 0) << path;
    EXPECT_EQ(c.info, list) << path;
}

void expect_not_found(Tree &tree, const char *path, const char *rest)
{
    forget_error();
    const Change c = change(tree, path);
    EXPECT_EQ(c.result, -1) << path;
    EXPECT_EQ(c.info, nullptr) << path;
    EXPECT_EQ(global_error, 218u) << path;
    EXPECT_STREQ(global_error_info, rest) << path;
}

std::string path_of(const FileInfo *info, const char *separator)
{
    char path[1024] = "left over";
    image_get_path(info, path, separator);
    return path;
}

}

TEST(FindInDirectory, ByNameAndCase)
{
    Tree tree;
    tree.add(nullptr, "A");
    FileInfo *b = tree.add(nullptr, "B");
    EXPECT_EQ(image_find_in_dir(&tree.md, tree.md.root, "B", nullptr, 0), b);
    EXPECT_EQ(image_find_in_dir(&tree.md, tree.md.root, "b", nullptr, 0), nullptr);
    EXPECT_EQ(image_find_in_dir(&tree.md, b, "A", nullptr, 0), nullptr);
}

TEST(FindInDirectory, NullPointersFindNothing)
{
    Tree tree;
    FileInfo *a = tree.add(nullptr, "A");
    forget_error();
    EXPECT_EQ(image_find_in_dir(nullptr, a, "A", nullptr, 0), nullptr);
    EXPECT_EQ(image_find_in_dir(&tree.md, nullptr, "A", nullptr, 0), nullptr);
    EXPECT_EQ(image_find_in_dir(&tree.md, a, nullptr, nullptr, 0), nullptr);
    EXPECT_EQ(global_error, 0u);
}

TEST(FindInDirectory, ByType)
{
    Tree tree;
    tree.add(nullptr, "A", "ASCII");
    FileInfo *prog = tree.add(nullptr, "A", "PROG");
    EXPECT_EQ(image_find_in_dir(&tree.md, tree.md.root, "A", "PROG", 0), prog);
    EXPECT_EQ(image_find_in_dir(&tree.md, tree.md.root, "A", "DATA", 0), nullptr);
    EXPECT_EQ(image_find_in_dir(&tree.md, tree.md.root, "A", nullptr, 0), tree.md.root);
}

TEST(FindInDirectory, ByATypeThatRunsOnIntoTheSystemText)
{
    LifVolume volume;
    volume.entries = {{.name = "ABC", .type = 0xE205}};
    const OpenVolume open(volume);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(image_find_in_dir(open.md, open.md->root, "ABC", "BIN71_98X6", 0), open.md->root);
    EXPECT_EQ(image_find_in_dir(open.md, open.md->root, "ABC", "BIN71_", 0), nullptr);
}

TEST(FindInDirectory, ALiveFileBehindAPurgedOneOfTheSameName)
{
    Tree tree;
    FileInfo *purged = tree.add(nullptr, "A");
    purged->deleted = 1;
    EXPECT_EQ(image_find_in_dir(&tree.md, tree.md.root, "A", nullptr, 0), nullptr);
    FileInfo *live = tree.add(nullptr, "A");
    EXPECT_EQ(image_find_in_dir(&tree.md, tree.md.root, "A", nullptr, 0), live);
    tree.md.show_purged = 1;
    EXPECT_EQ(image_find_in_dir(&tree.md, tree.md.root, "A", nullptr, 0), purged);
}

TEST(FindInDirectory, RecursiveDescendsInsteadOfComparingDirectories)
{
    Tree tree;
    FileInfo *sub = tree.directory(nullptr, "SUB");
    FileInfo *inner = tree.add(sub, "FILE");
    FileInfo *behind = tree.add(nullptr, "LAST");
    EXPECT_EQ(image_find_in_dir(&tree.md, tree.md.root, "FILE", nullptr, 1), inner);
    EXPECT_EQ(image_find_in_dir(&tree.md, tree.md.root, "FILE", nullptr, 0), nullptr);
    EXPECT_EQ(image_find_in_dir(&tree.md, tree.md.root, "LAST", nullptr, 1), behind);
    EXPECT_EQ(image_find_in_dir(&tree.md, tree.md.root, "SUB", nullptr, 1), nullptr);
    EXPECT_EQ(image_find_in_dir(&tree.md, tree.md.root, "SUB", nullptr, 0), sub);
}

TEST(FindFile, NullPointersAreErrors)
{
    Tree tree;
    FileInfo *a = tree.add(nullptr, "A");
    forget_error();
    EXPECT_EQ(image_find_file(nullptr, a, "A", 0), nullptr);
    EXPECT_EQ(error_text(), "Invalid parameter (Null pointer)");
    forget_error();
    EXPECT_EQ(image_find_file(&tree.md, a, nullptr, 0), nullptr);
    EXPECT_EQ(error_text(), "Invalid parameter (Null pointer)");
    forget_error();
    EXPECT_EQ(image_find_typed_file(nullptr, a, "A", 0, 0), nullptr);
    EXPECT_EQ(error_text(), "Invalid parameter (Null pointer)");
    forget_error();
    EXPECT_EQ(image_find_typed_file(&tree.md, a, nullptr, 0, 0), nullptr);
    EXPECT_EQ(error_text(), "Invalid parameter (Null pointer)");
}

TEST(FindFile, ByNameAlone)
{
    Tree tree;
    FileInfo *a = tree.add(nullptr, "A", "PROG");
    forget_error();
    EXPECT_EQ(image_find_file(&tree.md, tree.md.root, "A", 0), a);
    EXPECT_EQ(image_find_file(&tree.md, tree.md.root, "B", 0), nullptr);
    EXPECT_EQ(global_error, 0u);
}

TEST(FindTypedFile, TheExtensionSelectsTheType)
{
    Tree tree;
    tree.md.format = FORMAT_LIF;
    FileInfo *ascii = tree.add(nullptr, "A", "ASCII");
    FileInfo *prog = tree.add(nullptr, "A", "PROG");
    FileInfo *code = tree.add(nullptr, "BC________", "CODE");
    EXPECT_EQ(image_find_typed_file(&tree.md, tree.md.root, "A.PROG", 0, 0), prog);
    EXPECT_EQ(image_find_typed_file(&tree.md, tree.md.root, "A.ASCII", 0, 0), ascii);
    EXPECT_EQ(image_find_typed_file(&tree.md, tree.md.root, "A.DATA", 0, 0), nullptr);
    EXPECT_EQ(image_find_typed_file(&tree.md, tree.md.root, "B.CODE", 0, 0), code);
}

TEST(FindTypedFile, TranslatesNamesOfTheHost)
{
    Tree tree;
    tree.md.format = FORMAT_LIF;
    FileInfo *umlaut = tree.add(nullptr, "\xCC_AB", "ASCII");
    EXPECT_EQ(image_find_typed_file(&tree.md, tree.md.root, "/home/x/\x84_A B.ASCII", 1, 0), umlaut);
    EXPECT_EQ(image_find_typed_file(&tree.md, tree.md.root, "\x84_AB.ASCII", 0, 0), nullptr);
    EXPECT_EQ(image_find_typed_file(&tree.md, tree.md.root, "\xCC_AB.ASCII", 0, 0), umlaut);
}

TEST(ChangeDirectory, TheRoot)
{
    Tree tree;
    FileInfo *sub = tree.directory(nullptr, "SUB");
    tree.add(sub, "X");
    expect_change(tree, "/", tree.md.root);
    forget_error();
    const Change elsewhere = change(tree, "/", sub->child);
    EXPECT_EQ(elsewhere.result, -1);
    EXPECT_EQ(elsewhere.info, nullptr);
    EXPECT_EQ(global_error, 0u);
    EXPECT_EQ(change(tree, "/", tree.md.root).info, tree.md.root);
}

TEST(ChangeDirectory, FollowsAPath)
{
    Tree tree;
    tree.add(nullptr, "A"); // no directory, though it has the name
    FileInfo *a = tree.directory(nullptr, "A");
    FileInfo *b = tree.directory(a, "B");
    FileInfo *file = tree.add(b, "FILE");
    for (const char *path : {"A/B", "/A/B", "A//B", "A/B/", "A/B///", "/A///B//"}) expect_change(tree, path, file);
    expect_change(tree, "A", b);
    EXPECT_EQ(change(tree, "B", a->child).info, file);
}

TEST(ChangeDirectory, AnEmptyDirectoryHasNoFirstEntry)
{
    Tree tree;
    tree.directory(nullptr, "EMPTY");
    expect_change(tree, "EMPTY", nullptr);
}

TEST(ChangeDirectory, OtherSeparators)
{
    Tree tree;
    FileInfo *a = tree.directory(nullptr, "A");
    FileInfo *b = tree.directory(a, "B");
    FileInfo *file = tree.add(b, "FILE");
    EXPECT_EQ(change(tree, "A\\B", nullptr, "\\").info, file);
    EXPECT_EQ(change(tree, "\\A\\B", nullptr, "\\/").info, file); // only the first character counts
    EXPECT_EQ(change(tree, "A/B", nullptr, "\\").result, -1);
}

TEST(ChangeDirectory, WhatIsNotThereIsNamed)
{
    Tree tree;
    FileInfo *a = tree.directory(nullptr, "A");
    tree.add(a, "FILE");
    expect_not_found(tree, "X", "X");
    expect_not_found(tree, "a", "a");
    expect_not_found(tree, "AB", "AB");
    expect_not_found(tree, "A/X", "X");
}

TEST(ChangeDirectory, InAListWithoutDirectoriesNothingIsFound)
{
    Tree tree;
    tree.add(nullptr, "FILE");
    expect_not_found(tree, ".", ".");
    expect_not_found(tree, "..", "..");
    expect_not_found(tree, "FILE", "FILE");
}

TEST(ChangeDirectory, KeepsPathAdvancedAfterFailedBranch)
{
    Tree tree;
    FileInfo *a = tree.directory(nullptr, "A");
    tree.directory(a, "X");
    FileInfo *b = tree.directory(nullptr, "B");
    FileInfo *file = tree.add(b, "FILE");
    expect_change(tree, "A/B", file); // B beside A, for there is none in A
}

TEST(ChangeDirectory, KeepsOneDotGoingDownIntoTheNextDirectory)
{
    Tree tree;
    FileInfo *d = tree.directory(nullptr, "D");
    FileInfo *x = tree.directory(d, "X");
    FileInfo *file = tree.add(x, "FILE");
    expect_change(tree, "./X", file);
    expect_change(tree, ".//X", file);
}

TEST(ChangeDirectory, KeepsTwoDotsInTheListOfTheParent)
{
    Tree tree;
    FileInfo *p = tree.directory(nullptr, "P");
    tree.directory(p, "D");
    FileInfo *e = tree.directory(p, "E");
    FileInfo *file = tree.add(e, "FILE");
    EXPECT_EQ(change(tree, "../E", p->child).info, file);
    expect_change(tree, "../E", file); // at the top there is no parent: down into P
}

TEST(ChangeDirectory, Hazard_G3_APathThatEndsInDots)
{
    Tree tree;
    FileInfo *d = tree.directory(nullptr, "D");
    tree.directory(d, "X");
    forget_error();
    EXPECT_EQ(change(tree, ".").result, -1);
    EXPECT_EQ(global_error, 218u);
    EXPECT_EQ(change(tree, "..").result, -1);
    EXPECT_EQ(change(tree, "../.").result, -1);
    EXPECT_EQ(change(tree, "...").result, -1);
    const std::vector<char> exact = {'.', '\0'}; // nothing behind the terminator may be read
    EXPECT_EQ(change(tree, exact.data()).result, -1);
    const std::vector<char> exact_two = {'.', '.', '\0'};
    EXPECT_EQ(change(tree, exact_two.data()).result, -1);
}

TEST(ChangeDirectory, Hazard_G4_ManyDotsOnManyDirectoriesEnd)
{
    Tree tree;
    FileInfo *p = tree.directory(nullptr, "P");
    for (int i = 0; i < 30; ++i) tree.directory(p, "D" + std::to_string(i));
    std::string path;
    for (int i = 0; i < 60; ++i) path += "../";
    EXPECT_EQ(change(tree, (path + "NONE").c_str(), p->child).result, -1);
    EXPECT_EQ(change(tree, (path + "NONE").c_str()).result, -1);
}

TEST(ChangeDirectory, Hazard_G5_APathInProgressStaysInsideItsText)
{
    Tree tree;
    FileInfo *a = tree.directory(nullptr, "A");
    FileInfo *b = tree.directory(a, "B");
    tree.directory(b, "X");
    tree.directory(a, "C");
    tree.directory(nullptr, "D");
    for (const std::string text : {"A/B/C", "A/B/D", "A/B/", "A/./..", "./A/B/C/D", "A//B//..", "/A/../.."}) {
        const std::vector<char> exact(text.c_str(), text.c_str() + text.size() + 1); // nothing behind it may be read
        const Change c = change(tree, exact.data());
        EXPECT_TRUE(c.result == 0 || c.info == nullptr) << text;
    }
    expect_change(tree, "A/B/C", nullptr);  // C beside B
    expect_not_found(tree, "A/B/D", "B/D"); // each list keeps its own place in the path
}

TEST(ChangeDirectory, AnEmptyPathFindsNothing)
{
    Tree tree;
    FileInfo *a = tree.directory(nullptr, "A");
    tree.add(a, "FILE");
    expect_not_found(tree, "", "");
}

TEST(ChangeDirectory, AVeryLongPath)
{
    Tree tree;
    tree.directory(nullptr, "A");
    const std::string path(100000, 'x');
    EXPECT_EQ(change(tree, path.c_str()).result, -1);
    EXPECT_EQ(change(tree, ("A/" + path).c_str()).result, -1);
    EXPECT_EQ(change(tree, ("A" + std::string(100000, '/')).c_str()).result, 0);
}

TEST(GetPath, NullPointersAreErrors)
{
    const FileInfo info = named("A");
    char path[1024] = "";
    forget_error();
    image_get_path(nullptr, path, "/");
    EXPECT_EQ(error_text(), "Invalid parameter (Null pointer)");
    forget_error();
    image_get_path(&info, nullptr, "/");
    EXPECT_EQ(error_text(), "Invalid parameter (Null pointer)");
}

TEST(GetPath, KeepsPathOfSeparatorsOnly)
{
    Tree tree;
    FileInfo *a = tree.directory(nullptr, "A");
    FileInfo *b = tree.directory(a, "BB");
    FileInfo *file = tree.add(b, "FILE");
    EXPECT_EQ(path_of(file, "/"), "//");
    EXPECT_EQ(path_of(file, "\\"), "\\\\");
    EXPECT_EQ(path_of(file, nullptr), "//");
    EXPECT_EQ(path_of(b, "/"), "/");
}

TEST(GetPath, AtTheTopIsOneSeparator)
{
    Tree tree;
    const FileInfo *file = tree.add(nullptr, "FILE");
    EXPECT_EQ(path_of(file, "\\"), "\\");
    EXPECT_EQ(path_of(file, nullptr), "/");
}

TEST(GetPath, Hazard_G6_NamesThatDoNotFitAreLeftOut)
{
    Tree tree;
    FileInfo *info = nullptr;
    for (int i = 0; i < 20; ++i) info = tree.directory(info, "ABCDEFGHIJKLMNOP");
    const LogCapture log(3);
    EXPECT_EQ(path_of(tree.add(info, "FILE"), "/"), std::string(15, '/')); // 15 * 17 = 255
    EXPECT_TRUE(contains(log.text(), "Trace: Max path length 260 exceeded\n")) << log.text();
}

TEST(MatchCount, CountsTheTopLevelWithPurgedEntries)
{
    Tree tree;
    FileInfo *sub = tree.directory(nullptr, "ASUB");
    tree.add(sub, "AINNER");
    tree.add(nullptr, "A1")->deleted = 1;
    tree.add(nullptr, "B", "DATA");
    const char *pattern[] = {"A*", nullptr};
    const char *typed[] = {"*DATA", nullptr};
    const char *none[] = {nullptr};
    EXPECT_EQ(match_count(&tree.md, pattern), 2u);
    EXPECT_EQ(match_count(&tree.md, typed), 1u);
    EXPECT_EQ(match_count(&tree.md, none), 3u);
    EXPECT_EQ(match_count(&tree.md, nullptr), 3u);
}

TEST(Navigation, LogsItsCalls)
{
    Tree tree;
    FileInfo *a = tree.directory(nullptr, "A");
    tree.add(a, "FILE");
    const LogCapture log(3);
    change(tree, "A", nullptr, "/");
    image_find_file(&tree.md, tree.md.root, "X", 0);
    image_find_typed_file(&tree.md, tree.md.root, "X.ASCII", 1, 0);
    const char *pattern[] = {"A*", nullptr};
    match_count(&tree.md, pattern);
    const std::string text = log.text();
    EXPECT_TRUE(contains(text, "Trace: image_change_directory(md=")) << text;
    EXPECT_TRUE(contains(text, " path=\"A\", separator=\"/\", ret_info=")) << text;
    EXPECT_TRUE(contains(text, "Trace: image_find file(md=")) << text;
    EXPECT_TRUE(contains(text, ", filename=\"X\")\n")) << text;
    EXPECT_TRUE(contains(text, "Trace: image_find_typed_file(md=")) << text;
    EXPECT_TRUE(contains(text, ", filename=\"X.ASCII\", translate=1)\n")) << text;
    EXPECT_TRUE(contains(text, "Trace: match_count(md=")) << text;
    EXPECT_TRUE(contains(text, ", filespec=\"A*\")\n")) << text;
}

TEST(Navigation, Hazard_G9_NullPointersAreTraced)
{
    Tree tree;
    tree.directory(nullptr, "A");
    const LogCapture log(3);
    FileInfo *info = nullptr;
    image_change_directory(&tree.md, nullptr, "A", nullptr, &info);
    image_find_file(&tree.md, tree.md.root, nullptr, 0);
    image_find_typed_file(nullptr, nullptr, nullptr, 0, 0);
    match_count(&tree.md, nullptr);
    EXPECT_TRUE(contains(log.text(), "image_find_typed_file(md=0, ")) << log.text();
}
