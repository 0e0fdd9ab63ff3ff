/* The public headers compile as C11, and their records have the sizes that other languages' bindings rely on. */
#include "tarvo.h"

_Static_assert(sizeof(TimeRecord) == 36, "nine 32-bit fields");
_Static_assert(sizeof(SystemTime) == 16, "eight 16-bit fields");
_Static_assert(sizeof(FindDataA) == 320, "the find record of the host");
_Static_assert(sizeof(LifType) == 36, "type, name and system");
_Static_assert(sizeof(MediaTableRow) == 2 * sizeof(char *) + (sizeof(char *) == 8 ? 48 : 44),
               "two texts, eleven numbers");
_Static_assert(sizeof(hp9825_boot) == 30720, "120 records");
_Static_assert(sizeof(GpibDriveInfo) == 2 * sizeof(char *) + 56, "two texts, and what is known of a drive");
_Static_assert(sizeof(AtomicInt) == 4, "a plain 32-bit cell");
_Static_assert(sizeof(TapeImage) == 64, "a file handle and fourteen 32-bit fields");
_Static_assert(sizeof(FileHandle) == 8, "a handle of any system");

int main(void)
{
    return 0;
}
