// Runs the tests with the engine attached, as a program that holds it does, and with a folder of their own for
// temporary files, since some tests count them.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <system_error>

#include "base/attach.h"
#include "base/log.h"

namespace
{

namespace fs = std::filesystem;

class TemporaryFiles
{
  public:
    TemporaryFiles() : folder_(fs::temp_directory_path() / ("tarvo_tests_" + std::to_string(std::random_device{}())))
    {
        fs::create_directory(folder_);
        // Some tests have another user write there.
        fs::permissions(folder_, fs::perms::all | fs::perms::sticky_bit);
#ifdef _WIN32
        _putenv_s("TMP", folder_.string().c_str());
#else
        setenv("TMPDIR", folder_.c_str(), 1);
#endif
    }
    ~TemporaryFiles()
    {
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }
    TemporaryFiles(const TemporaryFiles &) = delete;
    TemporaryFiles &operator=(const TemporaryFiles &) = delete;

  private:
    fs::path folder_;
};

}

int main(int argc, char **argv)
{
    testing::InitGoogleTest(&argc, argv);
    const TemporaryFiles files;
    if (library_attach() != 0) return 2;
    logfile = file_void(); // with no log at all each line would overwrite the error that a test looks at
    const int result = RUN_ALL_TESTS();
    library_detach();
    return result;
}
