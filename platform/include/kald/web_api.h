/// @file The classes of the Web API framework: a request, and the base of what answers it.
#pragma once

#include <json/value.h>

#include <map>
#include <string>

namespace KALD {

/// A request as the framework has read it: its parameters, method name and login.
class WebCGI {
public:
    WebCGI() = default;
    WebCGI(WebCGI const&) = delete;
    WebCGI& operator=(WebCGI const&) = delete;

    /// Returns the text of the parameter `name`, or `fallback` if the request does not have it. A
    /// null fallback thus distinguishes a missing parameter from empty text. The request owns the
    /// text; it is valid until the request ends.
    char const* In(char const* name, char const* fallback);

    /// Returns the name as which the web server authenticated the client; empty without a login.
    std::string GetLoginUserName() const;

    /// Returns non-zero if the login user is an administrator of the appliance.
    int IsAdmin() const;

    /// The method name as the client sent it, NUL-terminated, never null. Read-only.
    char const* m_methodName = "";

private:
    friend class WebAPI;

    /// Reads the request from the CGI environment. Returns false if it is malformed.
    bool Read();

    std::map<std::string, std::string> m_parameters; ///< whose names clients choose: no hashing
    std::string m_login;
};

/// Base of every Web API class. Runs one request and answers with what was recorded for it.
class WebAPI {
public:
    /// `apiFile` is the file that describes the API; `group` is the package to which it belongs.
    WebAPI(char const* apiFile, char const* group);
    virtual ~WebAPI();
    WebAPI(WebAPI const&) = delete;
    WebAPI& operator=(WebAPI const&) = delete;

    /// Handles the request.
    virtual void Process() = 0;

    /// Returns a positive value if the request is authorised, -1 if there is no login, -3 if the
    /// account is locked, and any other value if the request is refused for another reason.
    virtual int CheckAuthorized();

    // Not called here. They are declared because they have entries in the virtual function table.
    virtual int CheckSharingPermission() { return 0; }
    virtual int CheckSharingAppPermission() { return 0; }
    virtual int HandleUploadFile() { return 0; }

    /// Records the response data, which is moved out of `response`.
    virtual void SetResponse(Json::Value& response);

    /// Reads the request, calls CheckAuthorized() and, if that returns non-zero, Process(). Then
    /// answers with what was recorded. If nothing was recorded, the answer is a plain success.
    void Run();

    /// Records an error code. If several are recorded, the answer carries the first, which is the
    /// cause of the others.
    void SetError(int code);

protected:
    WebCGI m_request;
    Json::Value m_errors;   ///< every recorded code, in order; null if none
    Json::Value m_response; ///< the recorded response data; null if none

private:
    /// Calls Process(). A method that changes stored files runs in an exclusive transaction.
    void RunProcess();

    /// Reads, authorises, processes and answers the request. An exception that escapes from it is
    /// recorded as an error. Returns whether the answer was sent.
    bool RunGuarded();
};

} // namespace KALD
