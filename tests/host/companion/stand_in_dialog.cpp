// Stands in for the companion library with the target dialog: prints what it is asked, and answers with what the file
// dialog_answer.txt in the present folder says: a target in the first line, the option word in the second. Without
// that file the choice is called off.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>

#ifdef _WIN32
#define STAND_IN_EXPORT __declspec(dllexport)
#else
#define STAND_IN_EXPORT __attribute__((visibility("default")))
#endif

extern "C" STAND_IN_EXPORT int32_t TarvoDialog(int32_t kind, char *target, uint32_t *options)
{
    printf("  dialog of kind %d, target \"%s\", options %u\n", kind, target, static_cast<unsigned>(*options));
    fflush(stdout);
    std::ifstream answer("dialog_answer.txt");
    std::string line;
    if (!std::getline(answer, line)) return 0;
    strcpy(target, line.c_str());
    std::getline(answer, line);
    *options = static_cast<uint32_t>(std::stoul(line));
    return 1;
}
