#include "tests/console/disks.h"

#include <stdexcept>

namespace tests
{

Outcome run_on(const std::string &verb, const TemporaryFile &volume, const Names &words)
{
    Names line = {verb, volume.path()};
    line.insert(line.end(), words.begin(), words.end());
    return run(line);
}

std::string file_content(const Bytes &image, const std::string &name)
{
    const StoredVolume volume = stored_disk(image);
    const StoredFile *file = file_named(volume, name);
    if (file == nullptr) throw std::runtime_error("no file " + name);
    const Bytes content = content_of(image, *file);
    return std::string(content.begin(), content.end());
}

Bytes with_byte(Bytes image, size_t position, uint8_t value)
{
    image.at(position) = value;
    return image;
}

}
