// What the sources of the System 45 family share: disks, DC100 tapes and the disks of the 9825.
#pragma once

#include <cstdint>

#include "volume/media.h"

constexpr uint16_t magic_9831 = 0x0200;
constexpr uint16_t magic_9845 = 0x0500; // of the 9835 too, and the start of a tape's directory
constexpr uint16_t magic_250 = 0x0600;  // of the 260 too
constexpr uint16_t magic_9825 = 0;

// ---- disks
int32_t claims_disk45(MediaDescriptor *md, const uint8_t *record);
int32_t read_disk45_header(MediaDescriptor *md, const uint8_t *record);
int32_t read_disk45_entry(MediaDescriptor *md, FileInfo *info, const uint8_t *entry, uint32_t *ret_size);
void write_disk45_entry(const MediaDescriptor *md, const FileInfo *info, uint8_t *entry);
void write_disk45_end_mark(uint8_t *slot);

// ---- disks of the 9825, read as the others are
bool is_disk9825(const MediaDescriptor *md, const uint8_t *record);
void announce_disk9825(const MediaDescriptor *md); // a line on the engine's output: which ROM it was made with

// ---- tapes
int32_t claims_tape45(MediaDescriptor *md, const uint8_t *record);
int32_t read_tape45_header(MediaDescriptor *md, const uint8_t *record);
int32_t read_tape45_entry(MediaDescriptor *md, FileInfo *info, const uint8_t *entry, uint32_t *ret_size);
void write_tape45_entry(const MediaDescriptor *md, const FileInfo *info, uint8_t *entry);
void write_tape45_end_mark(uint8_t *slot);

// ---- what the entries of both have in common
void take_name45(FileInfo *info, const uint8_t *entry); // the first six bytes; a zero in front is a purged file
void put_name45(const FileInfo *info, uint8_t *entry);
void complete_info45(FileInfo *info);
// Type text, system, record length and size of an entry whose fields have been read; the bytes that the file takes.
uint32_t complete_entry45(const MediaDescriptor *md, FileInfo *info);
