// Each field on a line of its own, in the order of the layout.
#include "tests/volume/sdf/literal.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace tests
{

Bytes from_hex(const std::string &digits)
{
    std::string plain;
    for (const char digit : digits) {
        if (std::isxdigit(static_cast<unsigned char>(digit)) != 0) plain += digit;
    }
    Bytes bytes;
    for (size_t i = 0; i + 1 < plain.size(); i += 2)
        bytes.push_back(static_cast<uint8_t>(std::strtoul(plain.substr(i, 2).c_str(), nullptr, 16)));
    return bytes;
}

void put_hex(Bytes &bytes, size_t position, const std::string &digits)
{
    const Bytes part = from_hex(digits);
    std::copy(part.begin(), part.end(), bytes.begin() + static_cast<ptrdiff_t>(position));
}

Bytes literal_sdf()
{
    Bytes image(12 * record_bytes);
    put_hex(image, 0, "0700");                                             // magic
    put_hex(image, 2, "0001");                                             // needs a check
    put_hex(image, 4, "4D 59 20 56 4F 4C 55 4D 45 20 20 00 20 00 20 20");  // label "MY VOLUME"
    put_hex(image, 20, "002551CF 0000803A");                               // created 15 March 1984, 9:07:06
    put_hex(image, 28, "00000100");                                        // bytes a block
    put_hex(image, 32, "00000001");                                        // boot area
    put_hex(image, 36, "00000001");                                        // its size
    put_hex(image, 40, "00000002");                                        // attributes table
    put_hex(image, 44, "12345678");                                        // version
    put_hex(image, 48, "0000000B");                                        // largest block
    put_hex(image, 52, "53 45 43 52 45 54 00 00 00 00 00 00 00 00 00 00"); // password "SECRET"
    put_hex(image, 68, "002551D0 0000E100");                               // last backup the day after, 16:00

    const size_t table = literal_table;              // inode 0: the table itself
    put_hex(image, table + 28, "00000003");          // blocks
    put_hex(image, table + 38, "0002");              // extents
    put_hex(image, table + 40, "00000002 00000002"); // blocks 2 and 3
    put_hex(image, table + 48, "00000005 00000001"); // block 5
    put_hex(image, table + 72, "FFFFFFFF");          // no extent map
    put_hex(image, table + 76, "00000300");          // size
    put_hex(image, table + 112, "00000080");         // record length

    const size_t root = literal_table + 128; // inode 1: the root directory
    put_hex(image, root + 6, "E9C3");
    put_hex(image, root + 28, "00000001");
    put_hex(image, root + 38, "0001");
    put_hex(image, root + 40, "00000006 00000001");
    put_hex(image, root + 72, "FFFFFFFF");
    put_hex(image, root + 76, "00000030"); // two entries
    put_hex(image, root + 112, "00000018");

    put_hex(image, literal_table + 384, "0830"); // free blocks 4, 10 and 11

    const size_t alpha = literal_tail; // inode 4: ALPHA
    put_hex(image, alpha + 6, "E9C9");
    put_hex(image, alpha + 28, "00000002");
    put_hex(image, alpha + 38, "0001");
    put_hex(image, alpha + 40, "00000008 00000002");
    put_hex(image, alpha + 72, "FFFFFFFF");
    put_hex(image, alpha + 76, "0000012C"); // 300 bytes
    put_hex(image, alpha + 104, "002551CF 0000803A");
    put_hex(image, alpha + 112, "00000100");

    const size_t dir = literal_tail + 128; // inode 5: DIR
    put_hex(image, dir + 6, "E9C3");
    put_hex(image, dir + 28, "00000001");
    put_hex(image, dir + 38, "0001");
    put_hex(image, dir + 40, "00000007 00000001");
    put_hex(image, dir + 72, "FFFFFFFF");
    put_hex(image, dir + 76, "00000000"); // empty
    put_hex(image, dir + 112, "00000018");

    put_hex(image, literal_root, "41 4C 50 48 41 20 20 20 20 20 20 20 20 20 20 20 00000000 00000004");      // ALPHA
    put_hex(image, literal_root + 24, "44 49 52 00 00 00 00 00 00 00 00 00 00 00 00 00 00000000 00000005"); // DIR
    std::fill_n(image.begin() + literal_alpha, 300, uint8_t{'a'});
    return image;
}

}
