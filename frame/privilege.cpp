/// @file Loading, querying and saving the privilege file.
#include "frame/privilege.h"

#include "platform/appliance_paths.h"
#include "platform/records.h"

#include <json/reader.h>
#include <json/writer.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <fstream>

namespace {

// The line numbers by which the log identifies messages.
constexpr int kAccessLine = 61;
constexpr int kParseLine = 70;

/// Returns whether the name leads to a regular file. Nothing else is opened: opening a FIFO would
/// block, and reading a device might never end.
bool IsRegularFile(char const* path)
{
    struct stat info {};
    return ::stat(path, &info) == 0 && S_ISREG(info.st_mode);
}

/// Returns `value`, replaced by an empty object if it is no object.
Json::Value& ObjectAt(Json::Value& value)
{
    if (!value.isObject()) {
        value = Json::Value(Json::objectValue);
    }
    return value;
}

/// Parses a whole stream. Returns false if it is not JSON. The JSON library throws if the nesting
/// is too deep; the stream throws if the file cannot be read although it opens.
bool Parse(std::istream& stream, Json::Value& document)
{
    try {
        return Json::Reader().parse(stream, document);
    } catch (std::exception const&) {
        document = Json::Value(Json::objectValue); // half a document must not grant anything
        return false;
    }
}

} // namespace

PrivilegeFile::~PrivilegeFile()
{
    if (m_dirty) {
        Save();
    }
}

bool PrivilegeFile::GetPrivilege(unsigned int uid, std::string const& key)
{
    if (!m_loaded) {
        Load();
    }
    using appliance::MemberOf;
    std::string const user = UidKey(uid);
    Json::Value const& privilege = MemberOf(MemberOf(m_document, user.c_str()), key.c_str());
    return privilege.isBool() && privilege.asBool();
}

void PrivilegeFile::SetPrivilege(unsigned int uid, std::string const& key, bool value)
{
    m_dirty = true;
    if (!m_loaded) {
        Load();
    }
    Json::Value& user = ObjectAt(ObjectAt(m_document)[UidKey(uid)]);
    user[key] = value;
}

void PrivilegeFile::Load()
{
    m_loaded = true;
    char const* const path = appliance::kPrivilegeFile;
    if (::access(path, R_OK) != 0) {
        if (errno != ENOENT) {
            ::syslog(LOG_ERR, "%s:%d failed to access config file [%s] %s", kLogSource, kAccessLine,
                     path, std::strerror(errno));
        }
        return;
    }
    std::ifstream file;
    if (IsRegularFile(path)) {
        file.open(path);
    }
    if (!Parse(file, m_document)) { // what is not opened is empty
        ::syslog(LOG_ERR, "%s:%d failed to parse json file[%s]", kLogSource, kParseLine, path);
    }
}

void PrivilegeFile::Save()
{
    std::ofstream file(appliance::kPrivilegeFile, std::ios::trunc);
    if (file) {
        file << Json::FastWriter().write(m_document);
    }
    m_dirty = false;
}
