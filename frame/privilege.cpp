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
#include <exception>
#include <fstream>

namespace {

// The source name and the line numbers by which the log identifies messages.
constexpr char kSourceName[] = "privilege";
constexpr int kAccessLine = 61;
constexpr int kParseLine = 70;

/// Returns whether a file is regular and readable; sets errno if not. Other kinds of file are
/// refused: opening a FIFO would block, and reading a device might never end.
bool IsAccessible(char const* path)
{
    struct stat info {};
    if (::access(path, R_OK) != 0 || ::stat(path, &info) != 0) {
        return false;
    }
    errno = S_ISDIR(info.st_mode) ? EISDIR : EINVAL;
    return S_ISREG(info.st_mode);
}

/// Logs that the file cannot be accessed, with errno as the reason.
void LogAccessFailure(char const* path)
{
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat" // %m is not ISO C++, but every syslog() supports it
    ::syslog(LOG_ERR, "%s:%d failed to access config file [%s] %m", kSourceName, kAccessLine, path);
#pragma GCC diagnostic pop
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
    constexpr bool kCollectComments = true;
    try {
        return Json::Reader().parse(stream, document, kCollectComments);
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
    if (!IsAccessible(path)) {
        if (errno != ENOENT) {
            LogAccessFailure(path);
        }
        return;
    }
    std::ifstream file(path);
    if (!Parse(file, m_document)) {
        ::syslog(LOG_ERR, "%s:%d failed to parse json file[%s]", kSourceName, kParseLine, path);
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

std::string PrivilegeFile::UidKey(unsigned int uid)
{
    return std::to_string(uid);
}
