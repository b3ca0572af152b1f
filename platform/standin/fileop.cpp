/// @file File system queries.
#include "libtm/fileop.h"

#include "platform/standin/files.h"

#include <sys/stat.h>

bool libtm::critical::fileop::DoesDirExist(std::string const& path)
{
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) {
        standin::NoteFailure();
        return false;
    }
    return S_ISDIR(info.st_mode);
}
