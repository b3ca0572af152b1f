/// @file The base of the package's Web API classes: authorisation and the login user's privileges.
#pragma once

#include "kald/web_api.h"

#include <string>

namespace Tremolane {

class VideoWebAPI : public KALD::WebAPI {
public:
    VideoWebAPI() : WebAPI("Tremolane.api", "Tremolane") {}

    /// Returns 1 if the request is authorised: by its login or by a valid shared link. Otherwise
    /// returns 0 and sets kErrorNoPrivilege, kErrorNoLogin or kErrorLocked.
    int CheckAuthorized() override;

    /// Returns whether this API serves shared links: false unless a derived class overrides it.
    virtual bool SupportsSharing() { return false; }

    /// Returns whether the shared link `id`, which is never empty, is valid. Called only if the
    /// class serves shared links.
    virtual bool IsSharingIdValid(std::string const& /*id*/) { return true; }

protected:
    /// Returns whether the request came through a valid shared link. Decides once and caches the
    /// result in the object.
    bool CheckSharing();

    /// Returns whether the request has a valid `sharing_id`.
    bool CheckSharingId();

    /// Writes a CGI answer (RFC 3875) with status 404 and no body to standard output.
    void SendNotFoundPage();

    /// Returns whether the login user may use the schedule methods, shared links or renderers.
    /// Administrators always may. The package's privilege file decides for all other users.
    bool IsAllowDtv() { return HasPrivilege("dtv"); }
    bool IsAllowSharing() { return HasPrivilege("sharing"); }
    bool IsAllowRenderer() { return HasPrivilege("renderer"); }

    /// Stores the uid of the login user in `*uid`. If there is no such user, returns false, sets
    /// kErrorFailed and leaves `*uid` untouched.
    bool GetLoginUid(unsigned int* uid);

    /// Returns the path in front of the Web API: REQUEST_URI up to its first "/webapi". Returns all
    /// of REQUEST_URI, including the query string, if it does not contain "/webapi".
    static std::string GetBasePath();

    /// Returns the URL of the base path as the client sees it; empty without HTTP_HOST. The scheme
    /// is https if the host ends with the relay domain or if HTTPS is set, even to "off".
    static std::string GetRequestUrl();

    /// Returns the URL of the base path for a client outside the local network. Behind the relay
    /// service the scheme is always https, there is no port, and the path starts with "/direct".
    static std::string GetExternalUrl();

    /// Returns a request parameter as a normalised decimal number, which is 0 if its text does not
    /// start with one. Returns empty text if the parameter is absent.
    std::string GetIntParamText(std::string const& name);

    /// The cached result of CheckSharing().
    enum SharingState : int { kSharingUnknown = 0, kSharingAllowed = 1, kSharingRefused = 2 };
    int m_sharingState = kSharingUnknown;

private:
    bool HasPrivilege(char const* key);
};

} // namespace Tremolane
