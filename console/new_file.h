// A file that is made beside another one, and takes that one's place in one step.
#pragma once

#include <string>

#include "base/file.h"

class NewFile
{
  public:
    explicit NewFile(const std::string &target); // the path that it is to have in the end
    ~NewFile();                                  // what hasn't taken its place goes away
    NewFile(const NewFile &) = delete;
    NewFile &operator=(const NewFile &) = delete;

    // TARGET.new, or the first free one of TARGET.new2, TARGET.new3 and so on, empty. Errors set: 210 when all are
    // taken, 300 for a name that is too long, 307.
    bool make();
    bool make_elsewhere(); // among the temporary files, from where it never takes its place

    // Where there is nothing of that name, or, replacing, where there is a file; its owner and its rights stay.
    // Errors set: 210, 307. All handles on both files must be closed.
    bool take_place(bool replacing);

    const std::string &path() const
    {
        return path_;
    }

  private:
    std::string target_;
    std::string path_; // empty: there is none
};

// The path of a file itself, where the name is that of a link.
std::string path_behind_links(const std::string &path);
