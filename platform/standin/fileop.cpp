/// @file File system queries.
#include "libtm/fileop.h"

#include <sys/stat.h>

bool libtm::critical::fileop::DoesDirExist(std::string const& path)
{
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}
