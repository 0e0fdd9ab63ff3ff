// The places of spare tables, held against those of the main ones.
#include "volume/spare.h"

#include <algorithm>
#include <iterator>

#include "base/error.h"

bool spare_fits(const MediaDescriptor *md, uint32_t main_start, Region spare)
{
    if (spare.length == 0 || spare.start == main_start) return true;
    const Region tables[] = {{md->dir_start, md->dir_size}, {md->alloc_start, md->alloc_size}};
    auto meets = [spare](const Region &table) { return table.length != 0 && overlap(table, spare); };
    if (std::none_of(std::begin(tables), std::end(tables), meets)) return true;
    set_error(213, "spare table over a main one");
    return false;
}
