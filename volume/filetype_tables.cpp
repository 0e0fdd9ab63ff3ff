// Type words and their texts, as the systems that write such volumes name them. The first row that matches wins, so the
// order is part of the tables.
#include "volume/filetypes.h"

const TypeName Sys45_system[] = {
    {0x00, "9825"}, {0x20, "9845A"}, {0x40, "9831"}, {0x60, "250"}, {0x80, "9835"}, {0xC0, "9845"}, {0, nullptr},
};

const TypeName Sys45_filetype[] = {
    {0x0000, "BKUP"}, {0x0200, "CHAR"}, {0x0400, "DATA"}, {0x0800, "PROG"}, {0x0C00, "KEYS"}, {0x0E00, "COMM"},
    {0x1000, "BDAT"}, {0x1200, "SYST"}, {0x1400, "ALL"},  {0x1600, "DROM"}, {0x1800, "BPRG"}, {0x1A00, "FORM"},
    {0x1C00, "OPRM"}, {0x1C00, "DSET"}, {0x1C80, "ROOT"}, {0x1D00, "DSET"}, {0x1D80, "WORK"}, {0x1E00, "ASMB"},
    {0x1E00, "ROOT"}, {0x1E80, "FORM"}, {0x1F00, "TEXT"}, {0x1F80, "TYP1"}, {0, nullptr},
};

const TypeName Sys250_filetype[] = {
    {0x0000, "BKUP"}, {0x0200, "CHAR"}, {0x0400, "DATA"}, {0x0800, "PROG"}, {0x0C00, "KEYS"},
    {0x0E00, "COMM"}, {0x1200, "SYST"}, {0x1600, "DROM"}, {0x1800, "BPRG"}, {0x1A00, "FORM"},
    {0x1C00, "DSET"}, {0x1E00, "ROOT"}, {0, nullptr},
};

const TypeName LIF_system[] = {
    {0xDC, "64K"}, {0xE0, "SE80"}, {0xE4, "TERM"}, {0xE8, "9845"}, {0xE9, "98X6"}, {0xEA, "PSCL"},
    {0xEC, "250"}, {0xF0, "1000"}, {0xF4, "3000"}, {0xF8, "S300"}, {0, nullptr},
};

const LifType default_liftype_table[] = {
    {0x0000, "PURGE", ""},     {0x0001, "ASCII", ""},     {0x0003, "DIR", ""},        {0xFFFF, "EOD", ""},
    {0x00FF, "D-LEX", ""},     {0xE008, "BIN8x", ""},     {0xE010, "DTA8x", ""},      {0xE020, "BAS8x", ""},
    {0xE040, "ALL41", ""},     {0xE050, "KEY41", ""},     {0xE052, "TXT75", ""},      {0xE053, "APP75", ""},
    {0xE058, "DAT75", ""},     {0xE060, "STA41", ""},     {0xE070, "X-M41", ""},      {0xE080, "PGM41", ""},
    {0xE088, "BAS75", ""},     {0xE089, "LEX75", ""},     {0xE08A, "WKS75", ""},      {0xE0D0, "SDATA", ""},
    {0xE0D5, "TEXT_S", ""},    {0xE0F0, "DAT71", ""},     {0xE0F1, "DAT71_S", ""},    {0xE204, "BIN71", ""},
    {0xE205, "BIN71_S", ""},   {0xE206, "BIN71_P", ""},   {0xE207, "BIN71_SP", ""},   {0xE208, "LEX71", ""},
    {0xE209, "LEX71_S", ""},   {0xE20A, "LEX71_P", ""},   {0xE20B, "LEX71_SP", ""},   {0xE20C, "KEY71", ""},
    {0xE20D, "KEY71_S", ""},   {0xE214, "BAS71", ""},     {0xE215, "BAS71_S", ""},    {0xE216, "BAS71_P", ""},
    {0xE217, "BAS71_SP", ""},  {0xE218, "FTH71", ""},     {0xE21C, "ROM71", ""},      {0xE848, "DATA", "9845"},
    {0xE990, "PROG", "9845"},  {0xE998, "KEYS", "9845"},  {0xE9B0, "BPRG", "9845"},   {0xE9B8, "ASMB", "9845"},
    {0xE942, "SYSTM", "98X6"}, {0xE946, "HP-UX", ""},     {0xE94B, "HP-UX", "98X6"},  {0xE950, "PROG", "98X6"},
    {0xE961, "BDAT", "98X6"},  {0xE971, "BIN", "98X6"},   {0xE9C3, "DIR", "500"},     {0xE9C9, "DATA", "500"},
    {0xE9D0, "PROG", "500"},   {0xE9F1, "BIN", "500"},    {0xEA0A, "PDATA", "PASCL"}, {0xEA32, "CODE", "PASCL"},
    {0xEA3E, "TEXT", "PASCL"}, {0xE008, "BIN", "SER80"},  {0xE00A, "BIN", "SER80"},   {0xE010, "BDAT", "SER80"},
    {0xE012, "BDAT", "SER80"}, {0xE020, "PROG", "SER80"}, {0xE022, "PROG", "SER80"},  {0, "", ""},
};
static_assert(sizeof default_liftype_table / sizeof default_liftype_table[0] == 63 + 1, "63 types and the end");

const LifType *liftype_table = default_liftype_table;
