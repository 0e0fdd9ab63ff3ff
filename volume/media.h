/* The records of the volume engine: an open medium, an entry of a directory, a run of free records.
 * Every medium is an array of 256-byte records, numbered from 0, whatever its real sectors are. */
#ifndef TARVO_VOLUME_MEDIA_H
#define TARVO_VOLUME_MEDIA_H

#include <stdint.h>

#include "base/file.h"
#include "base/time_record.h"

struct FdcDrive;
struct GpibDevice;
struct MediaState;
struct TapeImage;

enum { /* MediaDescriptor.format */
       FORMAT_UNKNOWN = 0,
       FORMAT_DISK45 = 1, /* System 45 disk */
       FORMAT_TAPE45 = 2, /* System 45 DC100 tape */
       FORMAT_LIF = 3,
       FORMAT_SDF = 4,
       FORMAT_HFS = 5 /* recognised only */
};

enum { /* MediaDescriptor.access */
       ACCESS_IMAGE = 0,
       ACCESS_FLOPPY = 1,
       ACCESS_GPIB = 2
};

enum { /* FileInfo.attributes */
       ATTRIBUTE_HIDDEN = 1,
       ATTRIBUTE_READ_ONLY = 2,
       ATTRIBUTE_SYSTEM = 4
};

/* A run of free records of a System 45 disk. */
typedef struct AllocEntry {
    uint32_t location; /* first record */
    uint32_t size;     /* records */
    struct AllocEntry *next;
} AllocEntry;

/* One entry of a directory; zero-filled when made, owned by the list it stands in. */
typedef struct FileInfo {
    char name[17];         /* HP character set, terminated, trailing blanks trimmed */
    char type_string[6];   /* type text; six characters and more run on into system_string */
    char system_string[6]; /* text of the system word */
    uint8_t attributes;    /* bit 0 hidden, 1 read-only, 2 system */
    uint16_t type;         /* type word of the format */
    uint32_t location;     /* first record */
    uint32_t size;         /* bytes */
    uint32_t records;      /* logical records */
    uint32_t record_len;   /* length of a logical record in 16-bit words; 128 is 256 bytes */
    TimeRecord date;
    uint8_t lif_impl[6]; /* LIF: bytes 26 to 31 of the directory entry */
    uint32_t deleted;    /* not 0: purged */
    uint32_t is_directory;
    uint32_t inode; /* SDF */
    uint32_t level; /* nesting level, 1 at the top */
    struct FileInfo *prev;
    struct FileInfo *next;
    struct FileInfo *parent; /* the directory that holds the entry, null at the top */
    struct FileInfo *child;  /* first entry of the directory */
} FileInfo;

/* An open medium; made by image_open, released by image_close, which releases all that hangs from it. */
typedef struct MediaDescriptor {
    uint32_t format;           /* FORMAT_... */
    uint32_t size;             /* bytes, the low 32 bits */
    char msus[FILE_PATH_SIZE]; /* the medium part of the target */
    uint32_t access;           /* ACCESS_... */
    FileHandle file;           /* ACCESS_IMAGE */
    struct GpibDevice *gpib;   /* ACCESS_GPIB */
    struct FdcDrive *fdc;      /* ACCESS_FLOPPY */
    struct TapeImage *tape;    /* of an image file; null for a plain one */
    uint16_t magic;            /* word at byte 0 of record 0 */
    TimeRecord date;           /* of the volume's creation */
    char label[17];
    uint16_t dir_id;
    uint16_t version;
    uint16_t interleave;
    uint32_t cylinders; /* tracks a surface times surfaces */
    uint32_t heads;     /* surfaces */
    uint32_t sectors;   /* records a track */
    uint32_t records;   /* in all */
    uint32_t system_tracks;
    uint32_t data_tracks;
    uint32_t dir_start;        /* first record of the directory */
    uint32_t dir_size;         /* records */
    uint32_t dir_entry_size;   /* bytes */
    uint32_t alloc_start;      /* first record of the allocation table (FORMAT_DISK45) */
    uint32_t alloc_size;       /* records, 0: there is none */
    uint32_t alloc_entry_size; /* bytes, 4 or 8 */
    uint32_t spare_dir_start;
    uint32_t spare_alloc_start;
    uint32_t file_area_start; /* first record */
    uint32_t data_size;       /* capacity of the file area in bytes */
    uint32_t needs_check;     /* SDF, from here ... */
    TimeRecord backup_date;
    uint32_t block_size; /* bytes */
    uint32_t boot_start; /* blocks */
    uint32_t boot_size;  /* blocks */
    uint32_t fat_start;  /* blocks */
    uint32_t largest_block;
    char password[17];
    uint8_t *inode_table; /* 128 bytes an inode; owned */
    uint32_t inode_count; /* ... to here */
    uint32_t hfs_present; /* an HFS volume was detected */
    uint32_t hfs_record;  /* at this record */
    uint32_t used_bytes;
    uint32_t free_bytes;     /* data_size - used_bytes */
    FileInfo *root;          /* the top-level list; owned */
    FileInfo *cursor;        /* the entry that the next listing step hands out */
    AllocEntry *alloc_list;  /* free runs, sorted by location; owned */
    uint32_t use_type_names; /* options from here on */
    uint32_t use_typed_extensions;
    uint32_t use_file_conversion;
    uint32_t use_file_headers; /* 0 none, 1 HPBASIC, 2 HPCALC */
    uint32_t prefer_hfs;       /* a detected HFS volume makes the medium HFS */
    uint32_t show_purged;      /* purged entries stay visible to listing and search */
    struct MediaState *state;  /* what the engine keeps for itself; owned, may be null */
} MediaDescriptor;

#endif
