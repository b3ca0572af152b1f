/// @file The package's privileges of users who are no administrators.
#pragma once

#include <json/value.h>

#include <string>

/// The file of privileges: an object with a member for each uid, itself an object with a boolean
/// for each privilege. What is not the boolean true is not granted. The file is read when first
/// asked and written, if a privilege was set, when the object goes.
class PrivilegeFile {
public:
    PrivilegeFile() = default;
    ~PrivilegeFile();
    PrivilegeFile(PrivilegeFile const&) = delete;
    PrivilegeFile& operator=(PrivilegeFile const&) = delete;

    /// Whether the file grants the privilege `key` to the user of that uid.
    bool GetPrivilege(unsigned int uid, std::string const& key);

    /// Grants or takes away one privilege.
    void SetPrivilege(unsigned int uid, std::string const& key, bool value);

private:
    void Load();
    void Save();
    static std::string UidKey(unsigned int uid);

    bool m_dirty = false;
    bool m_loaded = false; ///< a load was tried, with whatever result
    Json::Value m_document{Json::objectValue};
};
