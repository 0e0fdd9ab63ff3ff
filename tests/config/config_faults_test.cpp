// Reads and allocations that fail, one after the other.
#include "base/error.h"
#include "tests/config/config_support.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"

using namespace tests;

namespace
{

class ConfigFaults : public ConfigTest
{
};

// More than one read takes, with a line that goes over the end of one.
std::string long_file()
{
    std::string text = "[defaults]\nboard = 1\n";
    for (int i = 0; i < 40; i++) text += "; " + std::string(50, '-') + "\n";
    text += "[fsinfo]\nNEW = \"" + std::string(250, 'n') + "\", N, " + std::string(280, ' ') + "1,2,3,4,5,6,7,8,9,10\n";
    return text + "[defaults]\nboard = 2\n";
}

ConfigReading reading_with(FileFault kind, uint32_t nth, bool onward, bool *ret_reached)
{
    FileFaults faults(kind, nth, onward);
    ConfigReading reading(long_file());
    *ret_reached = faults.reached;
    return reading;
}

// Each failing read ends the reading: a part of a file is never taken for the whole. Where only the look for more
// behind the last line fails, the second look tells that there is none.
uint32_t reads_that_fail(bool onward)
{
    uint32_t nth = 1;
    for (bool reached = true;; nth++) {
        const ConfigReading reading = reading_with(FileFault::read, nth, onward, &reached);
        if (!reached) {
            EXPECT_EQ(reading.result, 0);
            EXPECT_EQ(reading.board, 2);
            return nth - 1;
        }
        if (reading.result == 0) {
            EXPECT_FALSE(onward);
            EXPECT_EQ(reading.board, 2);
            continue;
        }
        EXPECT_EQ(reading.result, -1) << nth;
        EXPECT_EQ(reading.error, "File read error") << nth;
        EXPECT_EQ(reading.fault.line, 0) << nth;
        EXPECT_EQ(reading.printed, "") << nth;
    }
}

}

TEST_F(ConfigFaults, EachReadThatFailsIsAnError)
{
    EXPECT_GT(reads_that_fail(false), 40u);
    EXPECT_GT(reads_that_fail(true), 40u);
}

TEST_F(ConfigFaults, EachAllocationThatFailsIsAnError)
{
    const std::string text = "[fsinfo]\nDISC = \"a disc\", D, 1,2,3,4,5,6,7,8,9,10\n9895 = \"replaced\", Z, "
                             "1,2,3,4,5,6,7,8,9,10\n[driveinfo]\nDRIVE = \"a drive\", CS80, 1,2,3,4,5,6,7,8,9,10,11\n";
    const char *const failing[] = {"", "DISC = ", "DISC = ", "9895 = ", "DRIVE = ", "DRIVE = "};
    uint32_t nth = 1;
    for (;; nth++) {
        const HeapFaults faults(nth);
        const ConfigReading reading(text);
        if (!faults.reached) break;
        ASSERT_LT(nth, std::size(failing));
        EXPECT_EQ(reading.result, -1) << nth;
        EXPECT_EQ(reading.error, "Out of memory") << nth;
        EXPECT_EQ(std::string(reading.fault.text).rfind(failing[nth], 0), 0u) << reading.fault.text;
        EXPECT_EQ(media_count(), nth == 1 ? 28u : 29u);
        EXPECT_EQ(drive_count(), nth <= 4 ? 47u : 48u);
    }
    EXPECT_EQ(nth, std::size(failing));
    EXPECT_STREQ(custom_drive("DRIVE")->description, "a drive");
}

TEST_F(ConfigFaults, RowsOfAFailedReadingAreWhole)
{
    const HeapFaults faults(2);
    EXPECT_EQ(ConfigReading("[fsinfo]\nDISC = \"a disc\", D, 1,2,3,4,5,6,7,8,9,10\n").result, -1);
    ASSERT_NE(custom_media("DISC"), nullptr);
    EXPECT_STREQ(custom_media("DISC")->description, "") << "there is always one";
}

TEST_F(ConfigFaults, TextsGoWithTheirRows)
{
    const HeapFaults faults;
    for (int round = 0; round < 5; round++) {
        EXPECT_EQ(ConfigReading("[fsinfo]\nDISC = \"a disc\", D, 1,2,3,4,5,6,7,8,9,10\nDISC = \"b\", D, "
                                "1,2,3,4,5,6,7,8,9,10\n")
                      .result,
                  0);
    }
    EXPECT_EQ(faults.allocations, 15u);
    use_builtin_tables();
    EXPECT_EQ(faults.releases, 15u);
}
