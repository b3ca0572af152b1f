/// @file The base of the package's Web API classes: who may pass, and what a login user may do.
#pragma once

#include "kald/web_api.h"

#include <string>

namespace Tremolane {

class VideoWebAPI : public KALD::WebAPI {
public:
    VideoWebAPI();
    ~VideoWebAPI() override;

    /// 1 if the request may go on: its login is good, or it came through a valid shared link. Else
    /// 0, with kErrorNoPrivilege, kErrorNoLogin or kErrorLocked set.
    int CheckAuthorized() override;

    /// Whether this API serves shared links; a class that does overrides it.
    virtual bool SupportsSharing();

    /// Whether a link of that id, never empty, is good; asked only of a class that serves them.
    virtual bool IsSharingIdValid(std::string const& id);

protected:
    /// The sharing decision, made at most once for an object.
    bool CheckSharing();

    /// Judges the request's `sharing_id`.
    bool CheckSharingId();

    /// Writes a bare CGI answer (RFC 3875) of status 404 to standard output.
    void SendNotFoundPage();

    /// Whether the login user may use the schedule methods, shared links or renderers: an
    /// administrator always, anybody else by the package's privilege file.
    bool IsAllowDtv();
    bool IsAllowSharing();
    bool IsAllowRenderer();

    /// The uid of the login user. False, kErrorFailed set and `*uid` untouched without such a user.
    bool GetLoginUid(unsigned int* uid);

    /// The path that leads to the Web API, without "/webapi" and what follows.
    static std::string GetBasePath();

    /// The URL of the request's own location as the client sees it; empty without a Host header.
    static std::string GetRequestUrl();

    /// The same location's URL for a client outside.
    static std::string GetExternalUrl();

    /// A request parameter as a decimal number in its normal form; empty if it is absent.
    std::string GetIntParamText(std::string const& name);

    /// What CheckSharing() found.
    enum SharingState : int { kSharingUnknown = 0, kSharingAllowed = 1, kSharingRefused = 2 };
    int m_sharingState = kSharingUnknown;

private:
    bool HasPrivilege(char const* key);
};

} // namespace Tremolane
