// Stands in for the companion library with the target dialog: prints what it is asked, and answers with what the file
// dialog_answer.txt in the present folder says: a target in the first line, the option word in the second; a third line
// "quiet" keeps it from printing. Without that file the choice is called off.
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
    std::ifstream answer("dialog_answer.txt");
    std::string chosen;
    std::string chosen_options;
    std::string manner;
    const bool agreed = static_cast<bool>(std::getline(answer, chosen));
    std::getline(answer, chosen_options);
    std::getline(answer, manner);
    if (manner != "quiet") {
        printf("  dialog of kind %d, target \"%s\", options %u\n", kind, target, static_cast<unsigned>(*options));
        fflush(stdout);
    }
    if (!agreed) return 0;
    strcpy(target, chosen.c_str());
    *options = static_cast<uint32_t>(std::stoul(chosen_options));
    return 1;
}
