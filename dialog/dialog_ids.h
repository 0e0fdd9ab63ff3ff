/* Numbers of the dialog's resources. They are macros because the resource compiler knows nothing else. */
#ifndef TARVO_DIALOG_IDS_H
#define TARVO_DIALOG_IDS_H

#define DIALOG_TARGET 100
#define MANIFEST_OF_LIBRARY 2 /* the number that the system gives to a library's manifest */

#define ID_LABEL (-1) /* texts and frames that nobody asks for */

#define ID_TARGET 1001
#define ID_BROWSE 1002
#define ID_MESSAGE 1003

#define ID_FLOPPY_0 1010
#define ID_FLOPPY_1 1011
#define ID_FLOPPY_2 1012
#define ID_FLOPPY_3 1013

#define ID_ADDRESS 1020
#define ID_UNIT 1021
#define ID_VOLUME 1022
#define ID_USE_GPIB 1023

#define ID_TYPED_EXTENSIONS 1030
#define ID_FILE_CONVERSION 1031
#define ID_SHOW_PURGED 1032

#define ID_HEADERS_NONE 1040
#define ID_HEADERS_HPBASIC 1041
#define ID_HEADERS_HPCALC 1042

#endif
