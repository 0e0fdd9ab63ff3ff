// Where a file goes on the host: names from the entry, given names, destinations.
#include <gtest/gtest.h>

#include <filesystem>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/volume/extract_support.h"
#include "volume/names.h"

using namespace tests;

namespace
{

const Bytes one_line = lif_ascii({"a line"});
const char *const one_line_text = "a line\r\n";

// The present folder of the process, until the object goes.
struct PresentFolder {
    explicit PresentFolder(const std::string &folder) : old(std::filesystem::current_path())
    {
        std::filesystem::current_path(folder);
    }
    ~PresentFolder()
    {
        std::filesystem::current_path(old);
    }
    PresentFolder(const PresentFolder &) = delete;
    PresentFolder &operator=(const PresentFolder &) = delete;

    std::filesystem::path old;
};

std::string with_separator(const std::string &folder)
{
    return folder + platform_separator();
}

}

TEST(ExtractNames, TheNameComesFromTheEntry)
{
    OneFile file(one_line, 1, "NOTES");
    char name[VISIBLE_NAME_SIZE] = "";
    ExtractOrder order;
    const std::string folder = file.host.folder();
    order.destination = folder.c_str();
    order.ret_filename = name;
    EXPECT_EQ(extraction_path(file.md, &file.info, order), file.path("NOTES.ASCII"));
    EXPECT_EQ(extract_file(file.md, &file.info, order).result, 256);
    EXPECT_STREQ(name, "NOTES.ASCII");
    EXPECT_EQ(read_file(file.path("NOTES.ASCII")), records_of(one_line));
}

TEST(ExtractNames, WithoutTypedExtensionsTheNameIsBare)
{
    OneFile file(one_line, 1, "NOTES");
    file.md->use_typed_extensions = 0;
    const std::string folder = file.host.folder();
    EXPECT_EQ(image_extract_file(file.md, &file.info, folder.c_str(), nullptr, nullptr, 0, nullptr), 256);
    EXPECT_TRUE(exists(file.path("NOTES")));
}

TEST(ExtractNames, TextsHaveTheirEndingBehindTheType)
{
    OneFile file(one_line, 1, "NOTES");
    char name[VISIBLE_NAME_SIZE] = "";
    const std::string folder = file.host.folder();
    const uint16_t flags = EXTRACT_CONVERT | EXTRACT_TXT;
    EXPECT_EQ(image_extract_file(file.md, &file.info, folder.c_str(), nullptr, name, flags, nullptr), 256);
    EXPECT_EQ(text_in(file.path("NOTES.ASCII.txt")), one_line_text);
    EXPECT_STREQ(name, "NOTES.ASCII") << "the name as it was composed";
}

TEST(ExtractNames, AMarkerOfThePascalSystemIsNoPartOfTheName)
{
    OneFile file(Bytes(256), 0xEA3E, "STORYT____");
    char name[VISIBLE_NAME_SIZE] = "";
    const std::string folder = file.host.folder();
    EXPECT_EQ(image_extract_file(file.md, &file.info, folder.c_str(), nullptr, name, 0, nullptr), 256);
    EXPECT_STREQ(name, "STORY.TEXT");
    EXPECT_TRUE(exists(file.path("STORY.TEXT")));
}

TEST(ExtractNames, TheComposedNameIsHandedBackInTheHpCharacterSet)
{
    OneFile file(one_line, 1, "A/B\xCC?");
    char name[VISIBLE_NAME_SIZE] = "";
    const std::string folder = file.host.folder();
    EXPECT_EQ(image_extract_file(file.md, &file.info, folder.c_str(), nullptr, name, 0, nullptr), 256);
    EXPECT_STREQ(name, "A/B\xCC?.ASCII");
    EXPECT_TRUE(exists(file.path("A_B__.ASCII")));
}

TEST(ExtractNames, AGivenNameStandsAsItIs)
{
    OneFile file(one_line, 1);
    const std::string folder = file.host.folder();
    ExtractOrder order;
    order.destination = folder.c_str();
    order.to_file = "other name.x";
    EXPECT_EQ(extraction_path(file.md, &file.info, order), file.path("other name.x"));
    EXPECT_EQ(extract_file(file.md, &file.info, order).result, 256);
    EXPECT_EQ(read_file(file.path("other name.x")), records_of(one_line));
    order.to_file = "text";
    order.flags = EXTRACT_CONVERT | EXTRACT_TXT;
    EXPECT_EQ(extraction_path(file.md, &file.info, order), file.path("text.txt"));
    EXPECT_EQ(extract_file(file.md, &file.info, order).result, 256);
    EXPECT_EQ(text_in(file.path("text.txt")), one_line_text);
}

TEST(ExtractNames, WithoutADestinationAGivenNameIsRelativeToThePresentFolder)
{
    OneFile file(one_line, 1);
    const PresentFolder present(file.host.folder());
    ExtractOrder order;
    order.to_file = "here";
    EXPECT_EQ(extraction_path(file.md, &file.info, order), "here");
    EXPECT_EQ(extract_file(file.md, &file.info, order).result, 256);
    EXPECT_EQ(read_file(file.path("here")), records_of(one_line));
    order.to_file = nullptr;
    EXPECT_EQ(extraction_path(file.md, &file.info, order), "FILE.ASCII");
    EXPECT_EQ(extract_file(file.md, &file.info, order).result, 256);
    EXPECT_EQ(read_file(file.path("FILE.ASCII")), records_of(one_line));
}

TEST(ExtractNames, ASeparatorIsAddedOnlyWhereThereIsNone)
{
    OneFile file(one_line, 1);
    const std::string folder = with_separator(file.host.folder());
    ExtractOrder order;
    order.destination = folder.c_str();
    order.to_file = "out";
    EXPECT_EQ(extraction_path(file.md, &file.info, order), file.path("out"));
    EXPECT_EQ(extract_file(file.md, &file.info, order).result, 256);
    EXPECT_TRUE(exists(file.path("out")));
}

TEST(ExtractNames, ExtractionPathTouchesNothing)
{
    OneFile file(one_line, 1);
    const std::string folder = file.path("new");
    ExtractOrder order;
    order.destination = folder.c_str();
    extraction_path(file.md, &file.info, order);
    EXPECT_FALSE(exists(folder));
}

TEST(ExtractNames, AMissingDestinationIsMade)
{
    OneFile file(one_line, 1);
    const std::string folder = file.path("new");
    EXPECT_EQ(image_extract_file(file.md, &file.info, folder.c_str(), "out", nullptr, 0, nullptr), 256);
    EXPECT_EQ(read_file(with_separator(folder) + "out"), records_of(one_line));
}

TEST(ExtractNames, ADestinationThatCannotBeMadeIsAnError)
{
    OneFile file(one_line, 1);
    const std::string below_nothing = with_separator(file.path("missing")) + "new";
    forget_error();
    EXPECT_EQ(image_extract_file(file.md, &file.info, below_nothing.c_str(), "out", nullptr, 0, nullptr), -1);
    EXPECT_TRUE(contains(error_text(), "Can't create directory")) << error_text();
    EXPECT_TRUE(contains(error_text(), below_nothing)) << error_text();
    EXPECT_FALSE(exists(file.path("missing")));
    const std::string a_file = file.host.file("file", "text");
    EXPECT_EQ(image_extract_file(file.md, &file.info, a_file.c_str(), "out", nullptr, 0, nullptr), -1);
    EXPECT_EQ(content(a_file), "text");
}

TEST(ExtractNames, SafeHostNames)
{
    const std::pair<const char *, const char *> rows[] = {{"NOTES", "NOTES"},
                                                          {"a b.c", "a b.c"},
                                                          {"", "_"},
                                                          {".", "__"},
                                                          {"..", "___"},
                                                          {".a", ".a"},
                                                          {"a/b\\c", "a_b_c"},
                                                          {"../x", ".._x"},
                                                          {"\"\\/:?*<>|", "_________"},
                                                          {"\x01\x1F\x7F", "___"},
                                                          {"\xCC\xB8", "__"},
                                                          {"~!@#$%^&()", "~!@#$%^&()"}};
    for (const auto &[name, wanted] : rows) EXPECT_EQ(safe_host_name(name), wanted) << name;
}

TEST(ExtractNames, Hazard_C10_DevicesAndTrailingDotsAreNoNamesOnWindows)
{
    const std::string mark = is_windows() ? "_" : "";
    for (const char *name : {"CON", "con", "Nul", "PRN", "AUX", "COM1", "COM9", "LPT1", "lpt9", "NUL.ASCII", "con.x.y"})
        EXPECT_EQ(safe_host_name(name), mark + name) << name;
    for (const auto &[name, wanted] : {std::pair("a.", "_a_"), std::pair("a. .", "_a___"), std::pair("...", "____")})
        EXPECT_EQ(safe_host_name(name), is_windows() ? wanted : name) << name;
    for (const char *name : {"CONS", "COM", "COM10", "XCON", "NULL", "LPT", "A.CON", "a.b"})
        EXPECT_EQ(safe_host_name(name), name) << name;
}

TEST(ExtractNames, Hazard_C10_NamesThatLeadElsewhereStayInTheDestination)
{
    for (const char *name : {".", "..", "../../x", "/etc/x", "C:\\x"}) {
        OneFile file(one_line, 1, name);
        file.md->use_typed_extensions = 0;
        const std::string folder = file.path("inner");
        EXPECT_EQ(image_extract_file(file.md, &file.info, folder.c_str(), nullptr, nullptr, 0, nullptr), 256) << name;
        size_t files = 0;
        for (const auto &entry : std::filesystem::recursive_directory_iterator(file.host.folder()))
            files += entry.is_regular_file() && entry.path().parent_path() == folder ? 1u : 0u;
        EXPECT_EQ(files, 1u) << name;
    }
}
