/// @file Authorising requests and checking the login user's privileges.
#include "frame/video_web_api.h"

#include "frame/privilege.h"
#include "frame/web_api_error.h"
#include "kald/user.h"

#include <syslog.h>

#include <cstdio>

namespace Tremolane {

namespace {

/// The results of the framework's CheckAuthorized() that have their own error code.
constexpr int kHostNoLogin = -1;
constexpr int kHostLocked = -3;

/// The number by which the log identifies a login without an account.
constexpr int kAccountLine = 40;

} // namespace

int VideoWebAPI::CheckAuthorized()
{
    int const hostResult = WebAPI::CheckAuthorized();
    if (hostResult > 0 || CheckSharing()) {
        return 1;
    }
    SetError(hostResult == kHostLocked    ? kErrorLocked
             : hostResult == kHostNoLogin ? kErrorNoLogin
                                          : kErrorNoPrivilege);
    return 0;
}

bool VideoWebAPI::CheckSharing()
{
    if (m_sharingState == kSharingUnknown) {
        m_sharingState = SupportsSharing() && CheckSharingId() ? kSharingAllowed : kSharingRefused;
    }
    return m_sharingState == kSharingAllowed;
}

bool VideoWebAPI::CheckSharingId()
{
    std::string const id = m_request.In("sharing_id", "");
    return !id.empty() && IsSharingIdValid(id);
}

void VideoWebAPI::SendNotFoundPage()
{
    std::fputs("Cache-control: no-store\r\nStatus: 404 Not Found\r\n\r\n", stdout);
    std::fflush(stdout);
}

bool VideoWebAPI::HasPrivilege(char const* key)
{
    if (m_request.IsAdmin() != 0) {
        return true;
    }
    unsigned int uid = 0;
    PrivilegeFile privileges;
    if (!GetLoginUid(&uid)) { // an unknown user gets the privileges of uid 0
        ::syslog(LOG_ERR, "%s:%d no account for login [%s]", PrivilegeFile::kLogSource,
                 kAccountLine, m_request.GetLoginUserName().c_str());
    }
    return privileges.GetPrivilege(uid, key);
}

bool VideoWebAPI::GetLoginUid(unsigned int* uid)
{
    KALDUser* user = nullptr;
    bool const found = KALDUserGet(m_request.GetLoginUserName().c_str(), &user) != -1;
    if (found) {
        *uid = user->uid;
    } else {
        SetError(kErrorFailed);
    }
    if (user != nullptr) {
        KALDUserFree(user);
    }
    return found;
}

} // namespace Tremolane
