/// @file The privileges that the package grants to users other than administrators.
#pragma once

#include <json/value.h>

#include <string>

/// The privilege file: a JSON object with a member for each uid, which is an object with a boolean
/// for each privilege. Only the boolean true grants a privilege. The file is loaded on first use.
/// If a privilege was set, the destructor saves it.
class PrivilegeFile {
public:
    PrivilegeFile() = default;
    ~PrivilegeFile();
    PrivilegeFile(PrivilegeFile const&) = delete;
    PrivilegeFile& operator=(PrivilegeFile const&) = delete;

    /// Returns whether the file grants the privilege `key` to the user with that uid.
    bool GetPrivilege(unsigned int uid, std::string const& key);

    /// Grants or revokes a privilege.
    void SetPrivilege(unsigned int uid, std::string const& key, bool value);

    /// The first argument of log lines about privileges.
    static constexpr char kLogSource[] = "privilege";

private:
    void Load();
    void Save();
    static std::string UidKey(unsigned int uid) { return std::to_string(uid); }

    bool m_dirty = false;
    bool m_loaded = false; ///< a load was attempted, successfully or not
    Json::Value m_document{Json::objectValue};
};
