// Walks over the top-level list for all that a new file asks of it.
#include "volume/survey.h"

#include <algorithm>

#include "base/log.h"
#include "base/log_pointer.h"
#include "volume/allocation_inner.h"
#include "volume/navigate.h"

namespace
{
bool is_found(const MediaDescriptor *md, const FileInfo *info)
{
    return info->deleted == 0 || md->show_purged != 0;
}

void make(const MediaDescriptor *md, ListSurvey *survey)
{
    survey_list(md, survey);
    for (const FileInfo *info = md->root; info != nullptr; info = info->next) {
        if (is_found(md, info)) survey->names.insert(info->name);
    }
    survey->made = true;
}
}

void survey_list(const MediaDescriptor *md, ListSurvey *ret_survey)
{
    *ret_survey = {};
    for (FileInfo *info = md->root; info != nullptr; info = info->next) {
        ret_survey->last = info;
        ret_survey->entries++;
        ret_survey->end = std::max(ret_survey->end, end_of_file(info));
    }
}

FileInfo *find_listed(MediaDescriptor *md, ListSurvey *survey, const char *name)
{
    if (survey != nullptr) {
        if (!survey->made) make(md, survey);
        if (!survey->names.contains(name)) {
            log_file(3, "image_find file(md=%lu, filename=\"%s\")\n", log_pointer(md), log_text(name));
            return nullptr;
        }
    }
    return image_find_file(md, md->root, name, 0);
}

void add_to_survey(const MediaDescriptor *md, ListSurvey *survey, FileInfo *info)
{
    survey->last = info;
    survey->entries++;
    survey->end = std::max(survey->end, end_of_file(info));
    if (survey->made && is_found(md, info)) survey->names.insert(info->name);
}
