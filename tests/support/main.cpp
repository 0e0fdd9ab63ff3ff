// Runs the tests with the engine attached, as a program that holds it does.
#include <gtest/gtest.h>

#include "base/attach.h"
#include "base/log.h"

int main(int argc, char **argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (library_attach() != 0) return 2;
    logfile = file_void(); // with no log at all each line would overwrite the error that a test looks at
    const int result = RUN_ALL_TESTS();
    library_detach();
    return result;
}
